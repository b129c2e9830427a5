// SPDX-License-Identifier: Apache-2.0
#include "allocation/Allocations.h"
#include "platform/hciformat/SenderMemory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace nearcast {
namespace {

AdvertisingReport response(std::uint8_t sender) {
    AdvertisingReport report;
    report.address = DeviceAddress{0, 0, 0, 0, 0, sender};
    report.name = "a name that is long enough to lie on the heap " + std::to_string(sender);
    report.services = {CBUUID::UUIDWithShort(0x180F)};
    report.scanResponse = true;
    return report;
}

bool remembers(SenderMemory& memory, std::uint8_t sender) {
    AdvertisingReport report;
    report.address = DeviceAddress{0, 0, 0, 0, 0, sender};
    memory.complete(report);
    return report.name.has_value();
}

TEST(SenderMemoryAllocation, ASenderThatFindsNoMemoryIsForgottenInItsTurnAsAnyOther) {
    allocation::failEachAllocation([](std::uint64_t n, allocation::Failing failing) {
        SenderMemory memory(2);
        AdvertisingReport first = response(1);
        bool failed = false;
        {
            const allocation::Failure failure(n, failing);
            try {
                memory.complete(first);
            } catch (const std::bad_alloc&) {
                failed = true;
            }
        }
        for (const auto& [older, newer] : {std::pair<std::uint8_t, std::uint8_t>{1, 2}, {3, 4}}) {
            for (const std::uint8_t sender : {older, newer}) {
                AdvertisingReport report = response(sender);
                memory.complete(report);
            }
            EXPECT_TRUE(remembers(memory, older)) << n;
            EXPECT_TRUE(remembers(memory, newer)) << n;
        }
        EXPECT_FALSE(remembers(memory, 1)) << n;
        EXPECT_FALSE(remembers(memory, 2)) << n;
        return failed;
    });
}

}  // namespace
}  // namespace nearcast
