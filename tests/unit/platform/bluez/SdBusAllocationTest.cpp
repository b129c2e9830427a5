// SPDX-License-Identifier: Apache-2.0
#include "SdBusFixture.h"
#include "allocation/Allocations.h"

#include <cstdint>

namespace nearcast::bluez {

namespace {

/// Counts what comes instead of writing it down.
class Counting : public WrittenDown {
public:
    void deviceChanged(std::string_view /*path*/, const DeviceNews& /*news*/) override { ++reports; }
    void forged() override { ++forgeries; }

    int reports = 0;
    int forgeries = 0;
};

class SdBusAllocation : public SdBusTest {
protected:
    SdBusAllocation() {
        system.setOwner(FakeSystemBus::bluetoothd);
        EXPECT_FALSE(bus.connect(counting));
        settle();
    }
    void reportFrom(const char* sender) {
        system.signal(sender, device, interface::properties, "PropertiesChanged", "sa{sv}as", interface::device, 2,
                      "RSSI", "n", -60, "UUIDs", "as", 1, "4f37d906-3f43-440c-98e0-9e709971cadf", 0);
    }
    /// Allocations while so many messages of a sender are taken, the first one aside.
    std::uint64_t allocationsOf(const char* sender) {
        constexpr int messages = 50;
        reportFrom(sender);
        settle();
        for (int i = 0; i < messages; ++i) reportFrom(sender);
        const std::uint64_t before = allocation::count();
        int taken = 0;
        while (taken < messages) taken += bus.process(true).messages;
        return allocation::count() - before;
    }

    Counting counting;
};

TEST_F(SdBusAllocation, AReportIsKnownForBluetoothdsAndReadWithoutAny) {
    EXPECT_EQ(allocationsOf(FakeSystemBus::bluetoothd), 0U);
    EXPECT_EQ(counting.reports, 51);
}

TEST_F(SdBusAllocation, AForgedReportIsPassedOverWithoutAny) {
    EXPECT_EQ(allocationsOf(stranger), 0U);
    EXPECT_EQ(counting.forgeries, 51);
}

}  // namespace

}  // namespace nearcast::bluez
