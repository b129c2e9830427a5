// SPDX-License-Identifier: Apache-2.0
#include "allocation/Allocations.h"
#include "core/Manager.h"
#include "doubles/KeptLines.h"
#include "platform/json/JSONSerialization.h"
#include "platform/virtual/VirtualPlatform.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>

namespace nearcast {
namespace {

/// A manager with dongles in the steady state: one registered under a short name, one under a long one, one not.
class Allocation : public testing::Test {
protected:
    static constexpr int dongles = 3;

    Allocation() {
        manager_.init();
        auto delegate = std::make_shared<QXNearcastManagerDelegate>();
        delegate->didDiscoverPort = [this](std::string_view portName, QXDeviceType, std::string_view, std::int32_t) {
            ++reports_;
            letters_ += portName.size();
        };
        manager_.setDelegate(std::move(delegate));
        manager_.addSettingForPrinterPortName("BT:Printer", {}, false, "00:11:22:AA:BB:00", {}, {});
        manager_.addSettingForPrinterPortName(longName_, {}, false, "00:11:22:AA:BB:01", {}, {});
    }

    void hear(int times) {
        for (int count = 0; count < times; ++count) {
            const std::array<std::uint8_t, 8> payload{0xFF, 0xFF, 0x00, 0x11,
                                                      0x22, 0xAA, 0xBB, static_cast<std::uint8_t>(count % dongles)};
            manager_.centralManagerDidDiscoverPeripheral(*platform_.radio(), CBPeripheral{}, AdvertisementData{payload},
                                                         -100 + (count * 37) % 60);
        }
    }
    /// Allocations of the library while `times` advertisements come.
    std::uint64_t allocationsOf(int times) {
        const std::uint64_t before = allocation::count();
        hear(times);
        return allocation::count() - before;
    }

    const std::string longName_ = std::string(SharedText::nearSize + 100, 'L');
    KeptLines console_;
    JSONSerialization JSON_;
    VirtualPlatform platform_{console_, JSON_, nullptr};
    Manager manager_{this, platform_};
    std::uint64_t reports_ = 0;
    std::size_t letters_ = 0;
};

TEST_F(Allocation, AnAdvertisementInTheSteadyStateTakesNoHeap) {
    hear(7 * dongles);
    reports_ = letters_ = 0;
    EXPECT_EQ(allocationsOf(1000 * dongles), 0U);
    EXPECT_EQ(reports_, 1000U * dongles);
    EXPECT_EQ(letters_, 1000 * (longName_.size() + 10));
}

TEST_F(Allocation, TheCountingSeesAnAllocation) {
    const std::uint64_t before = allocation::count();
    manager_.addSettingForPrinterPortName("BT:Other", {}, false, "00:11:22:AA:BB:02", {}, {});
    EXPECT_GE(allocation::count() - before, 4U) << "a record has four entries";
}

TEST_F(Allocation, AWindowOf2To63TakesMemoryForTheReadingsItHolds) {
    manager_.startScan(std::uint64_t{1} << 63);
    const std::uint64_t before = allocation::bytes();
    constexpr int times = 1000 * dongles;
    hear(times);
    EXPECT_LE(allocation::bytes() - before, times * 2 * sizeof(std::int64_t) + 10'000U);
    EXPECT_EQ(reports_, 0U);
}

}  // namespace
}  // namespace nearcast
