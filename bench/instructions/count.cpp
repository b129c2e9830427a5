// SPDX-License-Identifier: Apache-2.0
// One kind of work, so many times: what valgrind counts the instructions of. The difference between two numbers of
// times is the work alone, without what comes before it.
#include "SilentRadio.h"
#include "core/Manager.h"
#include "proximity/Smoothing.h"
#include "support/AddressText.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace nearcast {
namespace {

/// The least that a manager stands on. Its clock stands still.
class StillPlatform : public PlatformServices {
public:
    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& /*delegate*/) override {
        return std::make_unique<bench::SilentRadio>();
    }
    [[nodiscard]] NSDate date() const override { return NSDate(std::chrono::seconds(1)); }
    void usleep(std::chrono::microseconds /*duration*/) override {}
    [[nodiscard]] const NSJSONSerialization& JSON() const override { throw std::logic_error("nobody saves"); }
    std::shared_ptr<NSTimer> scheduledTimer(std::chrono::nanoseconds /*interval*/, NSTimer::Handler) override {
        throw std::logic_error("nobody scans");
    }
    void NSLog(std::string_view /*line*/) noexcept override {}
};

/// Dongles that are all registered and have all been heard often enough.
class Dongles {
public:
    explicit Dongles(std::uint64_t count) : count_(count) {
        constexpr std::uint64_t enough = 14;
        manager_.init();
        auto delegate = std::make_shared<QXNearcastManagerDelegate>();
        delegate->didDiscoverPort = [](std::string_view, QXDeviceType, std::string_view, std::int32_t) {};
        delegate->didUpdateState = [](std::string_view, std::string_view) {};
        manager_.setDelegate(std::move(delegate));
        for (std::uint64_t dongle = 0; dongle < count; ++dongle) {
            manager_.addSettingForPrinterPortName("BT:Printer " + std::to_string(dongle), {}, false,
                                                  AddressText(addressOf(dongle)).view(), {}, {});
        }
        hear(count * enough);
    }

    void hear(std::uint64_t times) {
        for (std::uint64_t time = 0; time < times; ++time) {
            // 7919 is prime: every dongle has its turn, and none follows its neighbour.
            const PackedAddress address = addressOf(time * 7919 % count_);
            std::array<std::uint8_t, 8> payload{0xFF, 0xFF};
            for (std::size_t octet = 0; octet < 6; ++octet) {
                payload[2 + octet] = static_cast<std::uint8_t>(address >> (8 * (5 - octet)));
            }
            manager_.centralManagerDidDiscoverPeripheral(radio_, CBPeripheral{}, AdvertisementData{payload},
                                                         -90 + static_cast<std::int32_t>(time * 31 % 50));
        }
    }
    void sweep(std::uint64_t times) {
        for (std::uint64_t time = 0; time < times; ++time) manager_.eventRepeatTimer();
    }

private:
    static PackedAddress addressOf(std::uint64_t dongle) { return 0x001122000000 + dongle * 5; }

    std::uint64_t count_;
    bench::SilentRadio radio_;
    StillPlatform platform_;
    Manager manager_{this, platform_};
};

/// As many names as one likes that an ordinary hash tells apart, or that it sends to one place of an ordinary table.
std::vector<std::string> someNames(std::size_t count, bool crowded) {
    std::unordered_set<std::string> table;
    for (std::size_t number = 0; number < count; ++number) table.insert(std::to_string(number));
    const std::size_t places = table.bucket_count();
    std::vector<std::string> names;
    for (std::uint64_t number = 100'000'000; names.size() < count; ++number) {
        const std::string name = "shelf" + std::to_string(number * 7919 % 100'000'000);
        if (!crowded || std::hash<std::string_view>{}(name) % places == 0) names.push_back(name);
    }
    return names;
}

/// Senders whose addresses are their names, all heard often enough.
class Names {
public:
    Names(std::size_t count, bool crowded) : names_(someNames(count, crowded)) {
        constexpr std::uint64_t enough = 14;
        manager_.init();
        auto delegate = std::make_shared<QXNearcastManagerDelegate>();
        delegate->didDiscoverPort = [](std::string_view, QXDeviceType, std::string_view, std::int32_t) {};
        manager_.setDelegate(std::move(delegate));
        hear(count * enough);
    }

    void hear(std::uint64_t times) {
        constexpr std::array<std::uint8_t, 2> foreign{0x4C, 0x00};
        for (std::uint64_t time = 0; time < times; ++time) {
            manager_.centralManagerDidDiscoverPeripheral(radio_, CBPeripheral{names_[time * 7919 % names_.size()]},
                                                         AdvertisementData{foreign},
                                                         -90 + static_cast<std::int32_t>(time * 31 % 50));
        }
    }

private:
    std::vector<std::string> names_;
    bench::SilentRadio radio_;
    StillPlatform platform_;
    Manager manager_{this, platform_};
};

void smooth(std::uint64_t window, std::uint64_t times) {
    Smoothing smoothing(window, -60);
    for (std::uint64_t time = 0; time < times; ++time) {
        smoothing.add(-90 + static_cast<std::int32_t>(time * 31 % 50), window);
    }
}

void run(std::string_view what, std::uint64_t times) {
    if (what == "handler-100") {
        Dongles(100).hear(times);
    } else if (what == "handler-10000") {
        Dongles(10'000).hear(times);
    } else if (what == "names-1000") {
        Names(1000, false).hear(times);
    } else if (what == "names-1000-crowded") {
        Names(1000, true).hear(times);
    } else if (what == "smoothing-7") {
        smooth(7, times);
    } else if (what == "smoothing-4096") {
        smooth(4096, 10'000 + times);
    } else if (what == "sweep-1000") {
        Dongles(1000).sweep(times / 1000);
    } else {
        throw std::invalid_argument(
            "usage: instruction_count handler-100|handler-10000|names-1000|names-1000-crowded|smoothing-7|"
            "smoothing-4096|sweep-1000 TIMES");
    }
}

}  // namespace
}  // namespace nearcast

int main(int argc, char** argv) {
    try {
        // Where addresses lie in the tables is otherwise left to chance, and with it how far a look-up walks.
        nearcast::hashFactor(0xC2B2AE3D27D4EB4F);
        nearcast::run(argc == 3 ? argv[1] : "", argc == 3 ? std::stoull(argv[2]) : 0);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        return 2;
    }
    return 0;
}
