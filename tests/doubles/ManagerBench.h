// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/Manager.h"
#include "doubles/Journal.h"
#include "platform/json/JSONSerialization.h"
#include "platform/virtual/VirtualPlatform.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::doubles {

/// A virtual platform that can be looked into while somebody sleeps on it.
class SleepyPlatform : public VirtualPlatform {
public:
    using VirtualPlatform::VirtualPlatform;

    void usleep(std::chrono::microseconds duration) override {
        ++sleeps;
        if (onSleep) onSleep();
        VirtualPlatform::usleep(duration);
    }

    std::function<void()> onSleep;  ///< called when a sleep begins
    int sleeps = 0;
};

/// A manager whose answers that are always the same can be others.
class SeamManager : public Manager {
public:
    using Manager::Manager;
    bool acceptsAddresses = true;
    bool hasSettings = true;

protected:
    bool acceptsAddress(Text MACAddr) const override { return acceptsAddresses && Manager::acceptsAddress(MACAddr); }
    // Asked for with the registry's lock held, which only the manager itself can name.
    std::shared_ptr<const Settings> snapshot() override NEARCAST_NO_THREAD_SAFETY_ANALYSIS {
        return hasSettings ? Manager::snapshot() : nullptr;
    }
};

/// A manager on a virtual platform, with a journal of all it shows.
struct ManagerBench {
    static constexpr std::string_view dongle = "00:11:22:AA:BB:CC";
    static constexpr std::string_view secondDongle = "00:11:22:AA:BB:DD";
    static constexpr std::string_view thirdDongle = "00:11:22:AA:BB:EE";

    Journal journal;
    JSONSerialization JSON;
    SleepyPlatform platform{journal, JSON, &journal};
    SeamManager manager{this, platform};

    ManagerBench() { manager.init(); }

    VirtualRadio& radio() { return *platform.radio(); }
    /// Sets a delegate with both operations, which writes into the journal: "discover PORT TYPE ADDRESS RSSI" and
    /// "silent PORT ADDRESS".
    void listen() { manager.setDelegate(listener()); }
    std::shared_ptr<QXNearcastManagerDelegate> listener();
    /// The dongle service is heard with the address in the payload.
    void hear(std::string_view address, std::int32_t RSSI) { hear(payloadOf(address), std::nullopt, RSSI); }
    void hear(std::optional<std::vector<std::uint8_t>> payload, std::optional<std::string> name, std::int32_t RSSI);
    void hearTimes(int times, std::string_view address, std::int32_t RSSI);
    /// Passes time, through the timers that are due.
    void pass(std::chrono::microseconds duration) { platform.timeline().sleep(duration); }
    void addPrinter(std::string_view portName, std::string_view address) {
        manager.addSettingForPrinterPortName(portName, {}, false, address, {}, {});
    }
    /// "discover" and "silent" lines.
    [[nodiscard]] std::vector<std::string> reports() const;
    [[nodiscard]] std::vector<std::string> console() const { return journal.lines("console "); }

    static std::vector<std::uint8_t> payloadOf(std::string_view address);
};

}  // namespace nearcast::doubles
