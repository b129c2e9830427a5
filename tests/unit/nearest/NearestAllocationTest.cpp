// SPDX-License-Identifier: Apache-2.0
// `Nearest` with every allocation of an operation failing in turn: asked again, it decides and tells what it would
// have.
#include "DecisionBench.h"
#include "allocation/Allocations.h"

#include <nearcast/Nearest.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace nearcast {
namespace {

using nearest::barMAC;
using nearest::recordOf;
using nearest::tillMAC;

constexpr std::array<std::uint8_t, 8> tillPayload = {0xFF, 0xFF, 0x02, 0, 0, 0, 0, 0x0B};
const std::string bar = "Bar, whose port has a name that lies on the heap";
const std::string till = "Till, whose port has a name that lies on the heap";
const std::string cellar = "Cellar, whose port has a name that lies on the heap";

std::shared_ptr<const Settings> withTheCellar() {
    return std::make_shared<const Settings>(Settings{
        {bar, recordOf(barMAC, -60)}, {cellar, recordOf("02:00:00:00:00:0C", -60)}, {till, recordOf(tillMAC, -60)}});
}

/// A shop with two devices, the bar chosen.
struct Shop {
    Shop() {
        report(0, bar, barMAC, -55);
        report(0.5, bar, barMAC, -55);
        clock = 2;
        nearest.update();
    }
    void report(double at, const std::string& portName, const char* MACAddr, std::int32_t RSSI) {
        clock = at;
        nearest.didDiscoverPort(portName, QXDeviceTypeDesktopPrinter, MACAddr, RSSI);
    }
    void note(const NearestChange& change) { told[count++] = change.now.device ? change.now.device->portName[0] : '-'; }
    [[nodiscard]] std::string toldText() const { return {told.data(), count}; }

    std::shared_ptr<const Settings> registry =
        std::make_shared<const Settings>(Settings{{bar, recordOf(barMAC, -60)}, {till, recordOf(tillMAC, -60)}});
    double clock = 0;
    std::array<char, 32> told{};  ///< the first letters of those chosen: keeping them takes no memory
    std::size_t count = 0;
    const std::shared_ptr<QXNearcastManagerDelegate> next = std::make_shared<QXNearcastManagerDelegate>();
    const std::shared_ptr<const Settings> emptied = std::make_shared<const Settings>();
    const std::shared_ptr<const Settings> grown = withTheCellar();
    Nearest nearest{
        {[this] { return registry; }, [this] { return clock; },
         [] { return RadioHealth{.state = CBManagerStatePoweredOn, .since = 0, .why = {}, .lastReportAge = {}}; }},
        [this](const NearestChange& change) { note(change); },
        nearest::plainSettings()};
    const std::function<void(const HeardAdvertisement&)> tap = nearest.tap();
};

struct Operation {
    const char* name;
    std::function<void(Shop& shop)> run;
};

const std::vector<Operation>& operations() {
    static const std::vector<Operation> list{
        {"RefreshOfMore",
         [](Shop& shop) {
             shop.registry = shop.grown;
             shop.nearest.refresh();
         }},
        {"RefreshOfNothing",
         [](Shop& shop) {
             shop.registry = shop.emptied;
             shop.nearest.refresh();
         }},
        {"Report", [](Shop& shop) { shop.report(3, bar, barMAC, -54); }},
        {"ReportOfAPortThatIsNew",
         [](Shop& shop) {
             shop.registry = shop.grown;
             shop.report(3, cellar, "02:00:00:00:00:0C", -40);
         }},
        {"Heard",
         [](Shop& shop) {
             shop.clock = 3;
             shop.tap({{}, tillPayload, -40, true, 3});
         }},
        {"Silence",
         [](Shop& shop) {
             shop.clock = 9;
             shop.nearest.didUpdateState(bar, barMAC);
         }},
        {"Update",
         [](Shop& shop) {
             shop.clock = 9;
             shop.nearest.update();
         }},
        {"Choice",
         [](Shop& shop) {
             shop.clock = 9;
             EXPECT_TRUE(shop.nearest.choice().rule == NearestRule::silent);
         }},
        {"Explain", [](Shop& shop) { EXPECT_EQ(shop.nearest.explain().size(), 2U); }},
        {"SetNext", [](Shop& shop) { shop.nearest.setNext(shop.next); }},
    };
    return list;
}

/// What is told and said of a shop from then on.
std::string afterwards(Shop& shop) {
    for (double at = 10; at < 20; at += 0.25) {
        shop.report(at, till, tillMAC, -45);
        shop.report(at, bar, barMAC, -70);
    }
    std::string text = shop.toldText() + " " + shop.nearest.choice().text();
    for (const auto& one : shop.nearest.explain()) text += "; " + one.portName + ": " + one.met + one.missing;
    return text;
}

class NearestAllocation : public testing::TestWithParam<Operation> {};

TEST_P(NearestAllocation, DecidesAndTellsTheSameOnceThereIsMemoryAgain) {
    const auto& run = GetParam().run;
    Shop plain;
    run(plain);
    const std::string wanted = afterwards(plain);
    allocation::failEachAllocation([&](std::uint64_t n, allocation::Failing failing) {
        SCOPED_TRACE(n);
        Shop shop;
        bool threw = false;
        {
            const allocation::Failure failure(n, failing);
            try {
                run(shop);
            } catch (const std::bad_alloc&) {
                threw = true;
            }
        }
        if (threw) run(shop);
        EXPECT_EQ(afterwards(shop), wanted);
        return threw && !HasFailure();
    });
}

INSTANTIATE_TEST_SUITE_P(Each, NearestAllocation, testing::ValuesIn(operations()),
                         [](const auto& one) { return std::string(one.param.name); });

}  // namespace
}  // namespace nearcast
