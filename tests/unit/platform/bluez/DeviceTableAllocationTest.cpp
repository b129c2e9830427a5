// SPDX-License-Identifier: Apache-2.0
#include "allocation/Allocations.h"
#include "platform/bluez/DeviceTable.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <string>

namespace nearcast::bluez {
namespace {

std::string pathOf(int device) { return "/org/bluez/hci0/dev_00_11_22_33_44_0" + std::to_string(device); }

TEST(DeviceTableAllocation, ADeviceThatFindsNoMemoryTakesNoPlaceInTheTable) {
    allocation::failEachAllocation([](std::uint64_t n, allocation::Failing failing) {
        DeviceTable table(2);
        DeviceNews news;
        news.RSSI = -60;
        const std::string first = pathOf(1);
        bool failed = false;
        {
            const allocation::Failure failure(n, failing);
            try {
                table.changed(first, news);
            } catch (const std::bad_alloc&) {
                failed = true;
            }
        }
        EXPECT_EQ(table.size(), failed ? 0U : 1U) << n;
        for (int device = 1; device <= 5; ++device) {
            const auto heard = table.changed(pathOf(device), news);
            EXPECT_TRUE(heard.report != nullptr && heard.report->RSSI == -60) << n;
        }
        EXPECT_EQ(table.size(), 2U) << n;
        return failed;
    });
}

}  // namespace
}  // namespace nearcast::bluez
