// SPDX-License-Identifier: Apache-2.0
// Every operation of the manager with every allocation of it failing in turn: it is done, or it throws and nothing has
// changed, and whatever comes after it works.
#include "allocation/Allocations.h"
#include "core/Manager.h"
#include "platform/json/JSONSerialization.h"
#include "platform/virtual/VirtualPlatform.h"
#include "support/Dongle.h"

#include <nearcast/LogWriter.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace nearcast {
namespace {

using namespace std::chrono_literals;

/// Lines are only counted: there may be no memory to keep them.
class CountedLines : public Console {
public:
    void NSLog(std::string_view /*line*/) noexcept override { ++count; }
    int count = 0;
};

class CountedScans : public VirtualRadioObserver {
public:
    void scanAsked(const std::optional<std::vector<CBUUID>>& /*services*/, ScanOptions /*options*/) override {
        ++count;
    }
    void stopAsked() override {}
    int count = 0;
};

/// What a dongle sends, and the address that the manager makes of it.
struct Sender {
    std::string name;
    std::vector<std::uint8_t> payload;
    std::string address;
};

/// Of three kinds: an address in octets; a name that is one itself; a name whose pieces are one, in other letters than
/// ours. The last two are texts that tables have to give numbers to.
Sender sender(int number) {
    const std::string digits = std::to_string(1'000'000 + number);
    if (number % 3 == 1) return {"shelf " + digits.substr(1), {0x4C, 0x00}, "shelf " + digits.substr(1)};
    if (number % 3 == 2) {
        const std::string name = "QXabcde" + digits;
        return {name, {0x4C, 0x00}, *dongle::addressInName(name)};
    }
    const AddressText address(0x001122000000U + static_cast<PackedAddress>(number));
    std::vector<std::uint8_t> payload{0xFF, 0xFF, 0x00, 0x11, 0x22};
    for (const int shift : {16, 8, 0}) payload.push_back(static_cast<std::uint8_t>(number >> shift));
    return {{}, payload, std::string(address.view())};
}

std::string portOf(int number) {
    return number % 2 == 0 ? "BT:" + std::to_string(number)
                           : "a port whose name is longer than what is held in place " + std::to_string(number);
}

SettingRecordPointer recordOf(const std::string& address) {
    return std::make_shared<const SettingRecord>(SettingRecord{
        {"MAC Address", address}, {"Device Type", 1}, {"Nick Name", "as long as a name of a shop may be"}});
}

bool same(const Settings& left, const Settings& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(), [](const auto& one, const auto& other) {
        return one.first == other.first && *one.second == *other.second;
    });
}

constexpr int heardOfNobody = 700;  ///< dongles from this number on have not been heard before
constexpr int calibrated = 3;
const std::string twins = "02:TW:IN";  ///< the address that two records hold

/// A manager, and all that is needed to try it.
class Shop {
public:
    explicit Shop(int devices) : devices_(devices) {
        manager.init();
        for (int number = 0; number < devices; ++number) add(number);
        Settings settings = *manager.getSettings();
        settings.emplace("the first of two records that hold one address", recordOf(twins));
        settings.emplace("the second of two records that hold one address", recordOf(twins));
        manager.setSettings(std::move(settings));
        for (const int number : all()) silences_.emplace(sender(number).address, 0);
        listener = std::make_shared<QXNearcastManagerDelegate>();
        listener->didDiscoverPort = [](std::string_view, QXDeviceType, std::string_view, std::int32_t) {};
        listener->didUpdateState = [this](std::string_view, std::string_view address) {
            ++silences_.find(address)->second;
        };
        manager.setDelegate(listener);
    }
    ~Shop() { manager.stopScan(); }
    Shop(const Shop&) = delete;
    Shop& operator=(const Shop&) = delete;

    void scan() {
        ASSERT_TRUE(manager.startScan(9));
        for (int number = 0; number < devices_; ++number) hear(sender(number), -60);
    }
    void hear(const Sender& from, std::int32_t RSSI) {
        CBPeripheral peripheral;
        if (!from.name.empty()) peripheral.name = from.name;
        manager.centralManagerDidDiscoverPeripheral(*platform.radio(), peripheral, AdvertisementData{from.payload},
                                                    RSSI);
    }
    void pass(std::chrono::seconds time) { platform.timeline().sleep(time); }

    /// Everything that has to hold, whatever has failed before.
    void check() {
        checkIndex();
        checkScan();
        checkCalibration();
    }
    void checkIndex() {
        const auto settings = manager.getSettings();
        std::map<std::string, std::string> first;
        for (const auto& [portName, record] : *settings) {
            first.emplace(*record->at("MAC Address").as<std::string>(), portName);
        }
        for (const auto& [address, portName] : first) EXPECT_EQ(manager.getPortNameFromMACAddr(address), portName);
        for (const int number : all()) {
            const std::string address = sender(number).address;
            EXPECT_EQ(manager.getPortNameFromMACAddr(address).has_value(), first.count(address) == 1) << address;
        }
    }

    JSONSerialization JSON;
    CountedLines console;
    CountedScans scans;
    VirtualPlatform platform{console, JSON, &scans};
    Manager manager{this, platform};
    std::shared_ptr<QXNearcastManagerDelegate> listener;

private:
    void add(int number) {
        manager.addSettingForPrinterPortName(portOf(number), {}, false, sender(number).address, {}, {});
    }
    /// Those registered, and the ones that operations bring.
    [[nodiscard]] std::vector<int> all() const {
        std::vector<int> numbers;
        for (int number = 0; number < std::max(devices_, calibrated + 1); ++number) numbers.push_back(number);
        for (int number = heardOfNobody; number < heardOfNobody + 6; ++number) numbers.push_back(number);
        return numbers;
    }
    /// A scan starts, its timers fire, and every dongle is told silent once.
    void checkScan() {
        manager.stopScan();
        manager.setDelegate(listener);
        ASSERT_TRUE(manager.startScan(9));
        const int lines = console.count;
        const int scanned = scans.count;
        for (auto& [address, times] : silences_) times = 0;
        for (const int number : all()) hear(sender(number), -60);
        pass(120s);
        // A start that failed on its way leaves its own restart timer behind.
        EXPECT_GE(scans.count, scanned + 1) << "the restart";
        EXPECT_EQ(console.count, lines) << "no handler fails";
        for (const auto& [address, times] : silences_) {
            EXPECT_EQ(times, 1) << address;
            EXPECT_EQ(manager.getRSSI(address), 127) << address;
        }
        manager.stopScan();
    }
    void checkCalibration() {
        const Sender close = sender(calibrated);
        const auto timer = platform.scheduledTimer(100ms, [&](NSTimer& self) {
            self.invalidate();
            for (int times = 0; times < 15; ++times) hear(close, -44);
        });
        EXPECT_EQ(manager.calibrateActionArea(close.address), -44);
    }

    const int devices_;
    std::map<std::string, int, std::less<>> silences_;
};

struct Operation {
    const char* name;
    std::function<void(Shop& shop)> run;
};

const std::string someName = "a port name that is much longer than thirty-one octets, so that it is shared";
const Sender someoneInOctets = sender(heardOfNobody + 2);
const Sender someoneInALongText = sender(heardOfNobody + 1);
const Sender someoneInAShortText = sender(heardOfNobody);
const Sender known[] = {sender(0), sender(1), sender(2)};
const Settings others{{"BT:Other", recordOf(someoneInOctets.address)},
                      {someName, recordOf(someoneInALongText.address)}};

const std::vector<Operation>& operations() {
    static const std::vector<Operation> list{
        {"AddPrinter",
         [](Shop& shop) {
             shop.manager.addSettingForPrinterPortName(someName, "9600 baud, and what else a port may want", true,
                                                       someoneInOctets.address, -60, "the bar's");
         }},
        {"AddPrinterOfAnOddAddress",
         [](Shop& shop) {
             shop.manager.addSettingForPrinterPortName("BT:Odd", {}, false, someoneInALongText.address, {}, {});
         }},
        {"AddDrawer",
         [](Shop& shop) {
             shop.manager.addSettingForTFTillfoxPortName(someName, {}, someoneInAShortText.address, {}, {});
         }},
        {"Remove", [](Shop& shop) { shop.manager.removeSettingWithPortName(portOf(1)); }},
        {"RemoveTheFirstOfTwo",
         [](Shop& shop) { shop.manager.removeSettingWithPortName("the first of two records that hold one address"); }},
        {"RemoveTheSecondOfTwo",
         [](Shop& shop) { shop.manager.removeSettingWithPortName("the second of two records that hold one address"); }},
        {"GetSettings", [](Shop& shop) { shop.manager.getSettings(); }},
        {"SetSettings", [](Shop& shop) { shop.manager.setSettings(others); }},
        {"SetNoSettings", [](Shop& shop) { shop.manager.setSettings(std::nullopt); }},
        {"SerializedSettings", [](Shop& shop) { shop.manager.serializedSettings(); }},
        {"DeserializeSettings",
         [](Shop& shop) {
             shop.manager.deserializeSettings(R"({"BT:A":{"MAC Address":"a text, and no address of ours"},
                "another port name that is longer than what is held in place":{"Device Type":"Printer",
                "MAC Address":"00:11:22:00:00:00"}})");
         }},
        {"StartScan", [](Shop& shop) { shop.manager.startScan(); }},
        {"StartScanWithANumber", [](Shop& shop) { shop.manager.startScan(3); }},
        {"StopScan", [](Shop& shop) { shop.manager.stopScan(); }},
        {"GetRSSI", [](Shop& shop) { shop.manager.getRSSI(known[0].address); }},
        {"SetDelegate", [](Shop& shop) { shop.manager.setDelegate(shop.listener); }},
        {"Calibrate", [](Shop& shop) { shop.manager.calibrateActionArea(known[1].address); }},
        {"HearAKnownDongle", [](Shop& shop) { shop.hear(known[0], -70); }},
        {"HearAKnownName", [](Shop& shop) { shop.hear(known[2], -70); }},
        {"HearNewOctets", [](Shop& shop) { shop.hear(someoneInOctets, -70); }},
        {"HearANewShortName", [](Shop& shop) { shop.hear(someoneInAShortText, -70); }},
        {"HearANewLongName", [](Shop& shop) { shop.hear(someoneInALongText, -70); }},
        {"StateChange", [](Shop& shop) { shop.manager.centralManagerDidUpdateState(*shop.platform.radio()); }},
        {"TimePasses", [](Shop& shop) { shop.pass(125s); }},
        {"Sweep", [](Shop& shop) { shop.manager.eventRepeatTimer(); }},
    };
    return list;
}

/// Listens to the trace on the thread that writes it, for a scope.
class SynchronousTrace {
public:
    explicit SynchronousTrace(bool on) {
        if (!on) return;
        LogWriter::Options options;
        options.sink = [](const LogRecord& /*record*/) {};
        options.synchronous = true;
        LogWriter::sharedInstance().start(std::move(options));
    }
    ~SynchronousTrace() { LogWriter::sharedInstance().stop(); }
    SynchronousTrace(const SynchronousTrace&) = delete;
    SynchronousTrace& operator=(const SynchronousTrace&) = delete;
};

struct Attempt {
    bool failed = false;  ///< an allocation
    bool threw = false;
};

class ManagerAllocation : public testing::TestWithParam<std::tuple<std::size_t, bool>> {
protected:
    [[nodiscard]] const Operation& operation() const { return operations().at(std::get<0>(GetParam())); }

    [[nodiscard]] Attempt attempt(Shop& shop, std::uint64_t n, allocation::Failing failing) const {
        Attempt attempt;
        const SynchronousTrace trace(std::get<1>(GetParam()));
        const allocation::Failure failure(n, failing);
        try {
            operation().run(shop);
        } catch (const std::bad_alloc&) {
            attempt.threw = true;
        }
        attempt.failed = allocation::Failure::end();
        return attempt;
    }

    /// Fails the n-th allocation of the operation.
    /// @return whether there was one
    bool failOne(Shop& shop, std::uint64_t n, allocation::Failing failing, const Settings& wanted) {
        const auto before = shop.manager.getSettings();
        const Attempt first = attempt(shop, n, failing);
        EXPECT_TRUE(same(*shop.manager.getSettings(), first.threw ? *before : wanted)) << "done, or nothing of it";
        shop.checkIndex();
        if (first.threw) {
            EXPECT_FALSE(attempt(shop, 0, failing).threw) << "there is memory again";
            EXPECT_TRUE(same(*shop.manager.getSettings(), wanted));
        }
        EXPECT_TRUE(first.failed || !first.threw);
        return first.failed;
    }

    /// The registry that the operation leaves of that of a shop.
    [[nodiscard]] Settings wantedOf(int devices) const {
        Shop shop(devices);
        shop.scan();
        operation().run(shop);
        return *shop.manager.getSettings();
    }
};

TEST_P(ManagerAllocation, LeavesAManagerThatHasHeardNothingAsItWas) {
    const Settings wanted = wantedOf(0);
    allocation::failEachAllocation([&](std::uint64_t n, allocation::Failing failing) {
        SCOPED_TRACE(n);
        Shop shop(0);
        const bool failed = failOne(shop, n, failing, wanted);
        shop.check();
        return failed && !HasFailure();
    });
}

TEST_P(ManagerAllocation, LeavesAScanOfAHundredDevicesAsItWas) {
    const Settings wanted = wantedOf(100);
    allocation::failEachAllocation([&](std::uint64_t n, allocation::Failing failing) {
        SCOPED_TRACE(n);
        Shop shop(100);
        shop.scan();
        const bool failed = failOne(shop, n, failing, wanted);
        shop.check();
        return failed && !HasFailure();
    });
}

TEST_P(ManagerAllocation, LeavesACalibrationThatIsUnderWayAsItWas) {
    const Settings wanted = wantedOf(5);
    allocation::failEachAllocation([&](std::uint64_t n, allocation::Failing failing) {
        SCOPED_TRACE(n);
        Shop shop(5);
        bool failed = false;
        const auto timer = shop.platform.scheduledTimer(600ms, [&](NSTimer& self) {
            self.invalidate();
            failed = failOne(shop, n, failing, wanted);
        });
        EXPECT_NO_THROW(shop.manager.calibrateActionArea(sender(calibrated).address));
        shop.check();
        return failed && !HasFailure();
    });
}

INSTANTIATE_TEST_SUITE_P(Each, ManagerAllocation,
                         testing::Combine(testing::Range(std::size_t{0}, operations().size()), testing::Bool()),
                         [](const auto& one) {
                             return std::string(operations().at(std::get<0>(one.param)).name) +
                                    (std::get<1>(one.param) ? "Traced" : "");
                         });

}  // namespace
}  // namespace nearcast
