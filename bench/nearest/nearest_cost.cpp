// SPDX-License-Identifier: Apache-2.0
// What a report costs in `Nearest` with 1,000 devices that are all heard, on a clock of the measurement's own. Prints a
// JSON object a line.
#include <nearcast/Nearest.h>

#include "core/Runs.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace nearcast::bench {

namespace {

constexpr std::size_t devices = 1000;
constexpr double budget = 1000;  // ns

struct Shop {
    struct Dongle {
        std::string portName;
        std::string MACAddr;
        std::array<std::uint8_t, 8> payload;
    };

    Shop() {
        for (std::size_t i = 0; i < devices; ++i) {
            std::array<char, 18> text{};
            const auto high = static_cast<unsigned>(i >> 8);
            const auto low = static_cast<unsigned>(i & 0xFF);
            std::snprintf(text.data(), text.size(), "02:00:00:00:%02X:%02X", high, low);
            dongles.push_back(
                {"Port " + std::to_string(i),
                 text.data(),
                 {0xFF, 0xFF, 2, 0, 0, 0, static_cast<std::uint8_t>(high), static_cast<std::uint8_t>(low)}});
            registry->emplace(
                dongles.back().portName,
                std::make_shared<SettingRecord>(SettingRecord{{std::string(kQXDongleMACAddr), text.data()}}));
        }
    }

    std::vector<Dongle> dongles;
    std::shared_ptr<Settings> registry = std::make_shared<Settings>();
};

using Tap = std::function<void(const HeardAdvertisement& heard)>;
using Feed =
    std::function<void(Nearest& nearest, const Tap& tap, const Shop::Dongle& dongle, std::int32_t RSSI, double at)>;

/// Nanoseconds that a report takes when each device sends `rate` times a second.
double nanoseconds(const Shop& shop, double rate, std::size_t reports, const Feed& feed) {
    double now = 0;
    std::uint64_t changes = 0;
    Nearest nearest(
        {[&] { return shop.registry; }, [&] { return now; },
         [] { return RadioHealth{.state = CBManagerStatePoweredOn, .since = 0, .why = {}, .lastReportAge = {}}; }},
        [&](const NearestChange&) { ++changes; });
    const Tap tap = nearest.tap();
    std::mt19937 random(7);
    std::vector<std::int32_t> signals(4096);
    for (auto& signal : signals) signal = -90 + static_cast<std::int32_t>(random() % 40);
    const double interval = 1 / (rate * devices);
    const auto run = [&](std::size_t count, std::size_t from) {
        for (std::size_t i = from; i < from + count; ++i) {
            now = static_cast<double>(i) * interval;
            feed(nearest, tap, shop.dongles[(i * 617) % devices], signals[i % signals.size()], now);
        }
    };
    run(2 * devices, 0);
    const double took = bench::nanoseconds(CLOCK_THREAD_CPUTIME_ID, [&] { run(reports, 2 * devices); });
    if (changes == 0) throw std::logic_error("nothing was ever chosen: this measures nothing");
    return took / static_cast<double>(reports);
}

void tell(const Request& request, const char* what, const Shop& shop, double rate, const Feed& feed) {
    const std::size_t reports = request.quick ? 5'000 : 500'000;
    Line line("Nearest, 1,000 devices, " + std::string(what), "ns", budget, "value");
    for (int i = 0; i < request.runs; ++i) line.add(nanoseconds(shop, rate, reports, feed));
    line.print();
}

void measure(const Request& request) {
    const Shop shop;
    const Feed raw = [](Nearest&, const Tap& tap, const Shop::Dongle& dongle, std::int32_t RSSI, double at) {
        tap({{}, dongle.payload, RSSI, true, at});
    };
    const Feed smoothed = [](Nearest& nearest, const Tap&, const Shop::Dongle& dongle, std::int32_t RSSI, double) {
        nearest.didDiscoverPort(dongle.portName, QXDeviceTypeDesktopPrinter, dongle.MACAddr, RSSI);
    };
    tell(request, "raw readings, each heard 4/s", shop, 4, raw);
    tell(request, "smoothed reports, each heard 4/s", shop, 4, smoothed);
    // The fewest at which all are still heard: the comparisons weigh most here.
    tell(request, "raw readings, each heard every 4 s", shop, 0.25, raw);
}

}  // namespace

}  // namespace nearcast::bench

int main(int argc, char** argv) { return nearcast::bench::run("nearest_cost", argc, argv, nearcast::bench::measure); }
