// SPDX-License-Identifier: Apache-2.0
// A session with bluetoothd, and anything that may happen to both of them: each octet is a happening, some take more.
#include "Expect.h"
#include "doubles/BluezBench.h"
#include "platform/hciformat/ByteReader.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <string_view>

namespace nearcast::fuzz {

namespace {

using namespace bluez;
using namespace std::chrono_literals;

constexpr std::array<const char*, 7> methods = {"GetManagedObjects", "GetAll",        "SetDiscoveryFilter",
                                                "StartDiscovery",    "StopDiscovery", "RegisterMonitor",
                                                "UnregisterMonitor"};
/// The first ones leave it open what bluetoothd has done.
constexpr std::array<std::string_view, 8> errors = {error::inProgress,   error::noReply,       error::timeout,
                                                    error::accessDenied, error::notAuthorized, error::notReady,
                                                    error::failed,       error::alreadyExists};
constexpr std::size_t undecided = 3;
constexpr Time interval = 2s;  ///< of the dongles

class BluezPlay {
public:
    explicit BluezPlay(std::span<const std::uint8_t> bytes) : input_(bytes), bench_(adapterIn(input_)) {}

    void play() {
        constexpr int most = 200;  // happenings, for each may be a minute
        bench_.session.want(true);
        for (int happenings = 0; input_.left() > 0 && happenings < most; ++happenings) {
            step(input_.u8());
            check();
        }
        recover();
    }

private:
    static std::string adapterIn(ByteReader& input) { return input.u8() % 4 == 3 ? "hci0" : ""; }
    template <class List>
    const auto& pick(const List& list) {
        return list[input_.u8() % list.size()];
    }
    std::string anyAdapter() { return input_.u8() % 4 == 3 ? "hci1" : "hci0"; }
    bool toggle(bool& value) { return value = !value; }

    void step(std::uint8_t what) {
        switch (what % 4) {
            case 0: return pass(what / 4);
            case 1: return happenToAdapter(what / 4);
            case 2: return happenToDaemon(what / 4);
            default: return happenToAir(what / 4);
        }
    }
    void pass(unsigned what) {
        if (what >= 60) return bench_.session.want(toggle(wanted_));
        bench_.pass(what < 30 ? 10ms * (1 << what / 3) : 1s * (what - 29));
    }
    void happenToAdapter(unsigned what) {
        const std::string name = anyAdapter();
        if (what % 8 == 0 && !plugged_.contains(name)) {
            plugged_.insert(name);
            return bench_.bluez.plug(name, input_.u8() % 2 == 0, input_.u8() % 2 == 0);
        }
        if (!plugged_.contains(name)) return;
        switch (what % 8) {
            case 1: plugged_.erase(name); return bench_.bluez.unplug(name);
            case 2: return bench_.bluez.power(name, input_.u8() % 2 == 0, static_cast<PowerState>(input_.u8() % 6));
            case 3: return bench_.bluez.loseDiscovery(name);
            case 4: return bench_.bluez.blink(name, 10ms * input_.u8());
            case 5: return bench_.bluez.discoverForAnother(name);
            case 6: bench_.rfkill.block = static_cast<Block>(input_.u8() % 3); return;
            default: return;
        }
    }
    void happenToDaemon(unsigned what) {
        FakeBluez& bluez = bench_.bluez;
        switch (what % 16) {
            case 0: return setDaemon(!daemon_);
            case 1: return bluez.breakBus({std::string(pick(errors)), "asked"});
            case 2: return bluez.mendBus();
            case 3: return bluez.hang(toggle(hanging_));
            case 4: return bluez.answerAfter(10ms * input_.u8());
            case 5: return bluez.holdAnswers(pick(methods));
            case 6: return bluez.releaseOldestAnswer();
            case 7: return bluez.releaseAnswers();
            case 8: return fail(&FakeBluez::failNext);
            case 9: return fail(&FakeBluez::failAlways);
            case 10: return bluez.failAlways(pick(methods), "");
            case 11: return bluez.releaseMonitor();
            default: return;
        }
    }
    void fail(void (FakeBluez::*how)(const std::string&, std::string_view)) {
        const std::string method = pick(methods);
        // Any other answer to a stop means that nothing ran.
        const std::size_t most = method == "StopDiscovery" ? undecided : errors.size();
        (bench_.bluez.*how)(method, errors.at(input_.u8() % most));
    }
    void happenToAir(unsigned what) {
        FakeBluez& bluez = bench_.bluez;
        switch (what % 16) {
            case 0: return place(anyAdapter());
            case 1: return bluez.stall();
            case 2: return bluez.deafen(toggle(deaf_));
            case 3: return bluez.beStrict();
            case 4: return bluez.forgetToTell(toggle(forgetful_));
            case 7: return starve(anyAdapter());
            case 8: return static_cast<void>(toggle(bench_.mgmt.privileged));
            case 9: return static_cast<void>(toggle(bench_.mgmt.mute));
            case 10: return bluez.leaveRounds(1s * (input_.u8() % 11));
            case 5:
                if (dongles_ > 0) bluez.showUnheard(input_.u8() % dongles_);
                return;
            case 6:
                if (dongles_ > 0) toggle(bluez.dongle(input_.u8() % dongles_).silent);
                return;
            default: return;
        }
    }
    void starve(const std::string& adapter) {
        if (!plugged_.contains(adapter)) return;
        starved_ = true;
        bench_.bluez.starve(adapter);
    }
    void setDaemon(bool there) {
        if (there == daemon_) return;
        daemon_ = there;
        hanging_ = false;
        there ? bench_.bluez.startDaemon() : bench_.bluez.killDaemon();
    }
    void place(const std::string& adapter) {
        constexpr unsigned most = 4;
        if (dongles_ == most) return;
        FakeDongle dongle;
        dongle.adapter = adapter;
        dongle.address.back() = static_cast<char>('1' + dongles_++);
        dongle.interval = interval;
        bench_.bluez.place(dongle);
    }

    void check() {
        for (; checked_ < bench_.conditions.size(); ++checked_) {
            const RadioCondition& told = bench_.conditions[checked_];
            expect(told.state == CBManagerStatePoweredOn || !told.why.empty(), "what does not work has a reason");
            expect(checked_ == 0 || told != bench_.conditions[checked_ - 1], "what is told has changed");
        }
        expect(bench_.conditions.empty() || bench_.conditions.back().state == bench_.session.state(),
               "what was told last is how it is");
    }

    bool works() {
        return bench_.session.state() == CBManagerStatePoweredOn && bench_.session.why().empty() &&
               bench_.reportsIn(10s) > 0;
    }
    /// Once nothing stands in its way any more, the session scans again, and ends its scan when that is not wanted.
    void recover() {
        FakeBluez& bluez = bench_.bluez;
        for (const char* const method : methods) bluez.failAlways(method, "");
        bluez.mendBus();
        if (starved_) setDaemon(false);  // nothing else helps without CAP_NET_ADMIN
        setDaemon(true);
        bluez.hang(false);
        bluez.answerAfter(FakeBluez::latency);
        bluez.releaseAnswers();
        bluez.deafen(false);
        bluez.forgetToTell(false);
        bench_.rfkill.block = Block::none;
        if (plugged_.insert("hci0").second) bluez.plug("hci0");
        if (plugged_.erase("hci1") != 0) bluez.unplug("hci1");
        bluez.power("hci0", true, PowerState::on);
        bench_.session.want(true);
        FakeDongle last;
        last.address = "02:00:00:00:00:FF";
        last.interval = interval;
        bluez.place(last);
        constexpr int most = 10;  // minutes: a little more than the longest that the watchdog waits
        for (int minute = 0; minute < most && (minute == 0 || !works()); ++minute) bench_.pass(1min);
        check();
        expect(bench_.session.state() == CBManagerStatePoweredOn, "the radio is on again");
        expect(bench_.session.why().empty(), "and nothing is wrong with it");
        expect(bench_.reportsIn(1min) > 0, "and it hears");
        bench_.session.want(false);
        bench_.pass(10s);
        expect(!bluez.discovers("hci0"), "a scan that is not wanted ends");
    }

    ByteReader input_;
    BluezBench bench_;
    std::set<std::string> plugged_ = {"hci0"};
    unsigned dongles_ = 0;
    std::size_t checked_ = 0;
    bool wanted_ = true;
    bool daemon_ = true;
    bool hanging_ = false;
    bool deaf_ = false;
    bool forgetful_ = false;
    bool starved_ = false;
};

}  // namespace

}  // namespace nearcast::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    nearcast::fuzz::BluezPlay({data, size}).play();
    return 0;
}
