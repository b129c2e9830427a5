// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Expect.h"
#include "platform/hci/HciPacket.h"
#include "platform/hci/HciSession.h"
#include "platform/hciformat/ByteReader.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace nearcast::fuzz {

using Octets = std::vector<std::uint8_t>;

/// A machine whose controller says what the input says.
struct ScriptedMachine {
    std::deque<Octets> packets;
    std::uint16_t lastCommand = 0;
    int lost = 0;
    int openError = 0;
    bool present = true;
    bool up = false;
};

class ScriptedSocket : public hci::HciSocket {
public:
    explicit ScriptedSocket(ScriptedMachine& machine) : machine_(machine) { machine_.packets.clear(); }
    Received read() override {
        if (machine_.packets.empty()) return {{}, std::exchange(machine_.lost, 0)};
        packet_ = std::move(machine_.packets.front());
        machine_.packets.pop_front();
        return {packet_, 0};
    }
    int write(std::span<const std::uint8_t> packet) override {
        expect(packet.size() >= 4 && packet[0] == hci::commandPacket, "what is sent is a command");
        expect(packet.size() == 4U + packet[3], "a command is as long as it says");
        machine_.lastCommand = static_cast<std::uint16_t>(packet[1] | packet[2] << 8);
        return 0;
    }
    [[nodiscard]] int descriptor() const override { return 0; }

private:
    ScriptedMachine& machine_;
    Octets packet_;
};

class ScriptedPort : public hci::HciPort {
public:
    explicit ScriptedPort(ScriptedMachine& machine) : machine_(machine) {}
    Opened open(int /*index*/, hci::HciAccess /*access*/) override {
        if (const int error = std::exchange(machine_.openError, 0)) return {nullptr, error};
        return {std::make_unique<ScriptedSocket>(machine_), 0};
    }
    Asked adapter(int /*index*/) override {
        if (!machine_.present) return {std::nullopt, ENODEV};
        hci::HciAdapter adapter;
        adapter.up = machine_.up;
        return {adapter, 0};
    }
    hci::HciAdapterList adapters() override {
        const Asked asked = adapter(0);
        return asked.adapter ? hci::HciAdapterList{{*asked.adapter}, 0} : hci::HciAdapterList{};
    }
    bool hasLinks(int /*index*/) override { return false; }
    [[nodiscard]] hci::Capabilities capabilities() const override { return {}; }

private:
    ScriptedMachine& machine_;
};

class CountedReports : public SessionListener {
public:
    void conditionChanged(const RadioCondition& condition) override {
        expect(condition.state == CBManagerStatePoweredOn || !condition.why.empty(), "what does not work has a reason");
    }
    void scanRestarted() override {}
    void deliver(const AdvertisingReport& /*report*/) override { ++reports; }
    std::size_t reports = 0;
};

/// Plays the input to a session: what the controller says, what happens to it, and how much time passes.
class SessionPlay {
public:
    SessionPlay(std::span<const std::uint8_t> bytes, hci::HciAccess access)
        : input_(bytes), port_(machine_), session_(port_, hci::HciTarget{.access = access}, listener_) {}

    void play() {
        run();
        while (input_.left() > 0) {
            step(input_.u8());
            run();
        }
        wanted_ = false;
        run();
        now_ += hci::HciSession::linger;
        run();
        listener_.reports = 0;
        machine_.packets.push_back({hci::eventPacket, hci::leMetaEvent, 14, 2, 1, 0, 0, 1, 2, 3, 4, 5, 6, 1, 0, 0, 0});
        run();
        expect(listener_.reports == 0, "nothing is told without a scan");
    }

private:
    void step(std::uint8_t what) {
        switch (what) {
            case 0: return answerWell();
            case 1: return say(input_.take(std::min<std::size_t>(input_.u8(), input_.left())));
            case 2: now_ += std::chrono::milliseconds(100) * input_.u8(); return;
            case 3: wanted_ = !wanted_; return;
            case 4: machine_.lost = 1 + input_.u8() % 100; return;
            case 5: machine_.openError = 1 + input_.u8() % 100; return;
            case 6: machine_.present = !machine_.present; return;
            case 7: machine_.up = !machine_.up; return;
            default: return;
        }
    }
    /// Answers the last command with success and what is next in the input.
    void answerWell() {
        const auto returned = input_.take(std::min<std::size_t>(input_.u8(), input_.left()));
        Octets packet = {hci::eventPacket,
                         hci::commandCompleteEvent,
                         static_cast<std::uint8_t>(returned.size() + 4),
                         1,
                         static_cast<std::uint8_t>(machine_.lastCommand & 0xFF),
                         static_cast<std::uint8_t>(machine_.lastCommand >> 8),
                         hci::success};
        packet.insert(packet.end(), returned.begin(), returned.end());
        machine_.packets.push_back(std::move(packet));
    }
    void say(std::span<const std::uint8_t> octets) {
        if (!octets.empty()) machine_.packets.emplace_back(octets.begin(), octets.end());
    }
    void run() {
        constexpr int most = 100;
        for (int runs = 0; runs < most; ++runs) {
            session_.want(wanted_);
            session_.pass(now_);
            if (session_.due() > now_ && (session_.descriptor() < 0 || machine_.packets.empty())) return checkRest();
        }
        expect(false, "the session comes to rest");
    }
    void checkRest() const {
        const bool open = session_.descriptor() >= 0;
        expect(session_.due() <= now_ + (open ? hci::HciSession::askInterval : hci::HciSession::longestPause),
               "the controller is asked for again and again");
        expect(open || session_.state() != CBManagerStatePoweredOn,
               "without a way to the controller the radio is not on");
    }

    ByteReader input_;
    ScriptedMachine machine_;
    ScriptedPort port_;
    CountedReports listener_;
    hci::HciSession session_;
    Time now_{0};
    bool wanted_ = true;
};

inline void checkHciSession(std::span<const std::uint8_t> bytes) {
    SessionPlay(bytes, hci::HciAccess::alone).play();
    SessionPlay(bytes, hci::HciAccess::beside).play();
}

}  // namespace nearcast::fuzz
