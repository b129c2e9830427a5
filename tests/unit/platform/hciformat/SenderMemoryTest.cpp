// SPDX-License-Identifier: Apache-2.0
#include "platform/hciformat/SenderMemory.h"

#include "unit/platform/hciformat/HciBytes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nearcast {

namespace {

const CBUUID battery = CBUUID::UUIDWithShort(0x180F);
const CBUUID heart = CBUUID::UUIDWithShort(0x180D);

AdvertisingReport heard(const DeviceAddress& address, std::optional<std::string> name = {},
                        std::vector<CBUUID> services = {}) {
    AdvertisingReport report;
    report.address = address;
    report.name = std::move(name);
    report.services = std::move(services);
    return report;
}

AdvertisingReport response(const DeviceAddress& address, std::optional<std::string> name = {},
                           std::vector<CBUUID> services = {}) {
    AdvertisingReport report = heard(address, std::move(name), std::move(services));
    report.scanResponse = true;
    return report;
}

AdvertisingReport completed(SenderMemory& memory, AdvertisingReport report) {
    memory.complete(report);
    return report;
}

DeviceAddress numbered(std::size_t number) {
    return {0, 0, 0, 0, static_cast<std::uint8_t>(number >> 8), static_cast<std::uint8_t>(number)};
}

TEST(SenderMemory, GivesLaterReportsTheNameAndTheServicesOfTheScanResponse) {
    SenderMemory memory;
    EXPECT_FALSE(completed(memory, heard(alice)).name);
    completed(memory, response(alice, "QX001122AABBCC", {battery}));
    const AdvertisingReport later = completed(memory, heard(alice));
    EXPECT_EQ(later.name, "QX001122AABBCC");
    EXPECT_EQ(later.services, std::vector{battery});
}

TEST(SenderMemory, LeavesAReportWhatItHasOfItsOwn) {
    SenderMemory memory;
    completed(memory, response(alice, "remembered", {battery}));
    const AdvertisingReport named = completed(memory, heard(alice, "own"));
    EXPECT_EQ(named.name, "own");
    EXPECT_EQ(named.services, std::vector{battery});
    const AdvertisingReport serving = completed(memory, heard(alice, {}, {heart}));
    EXPECT_EQ(serving.name, "remembered");
    EXPECT_EQ(serving.services, std::vector{heart});
}

TEST(SenderMemory, LearnsFromScanResponsesAlone) {
    SenderMemory memory;
    completed(memory, heard(alice, "advertised", {battery}));
    EXPECT_FALSE(completed(memory, heard(alice)).name);
    EXPECT_TRUE(completed(memory, heard(alice)).services.empty());
}

TEST(SenderMemory, KeepsWhatALaterScanResponseDoesNotRepeat) {
    SenderMemory memory;
    completed(memory, response(alice, "first", {battery}));
    EXPECT_EQ(completed(memory, response(alice)).name, "first");
    completed(memory, response(alice, "second"));
    EXPECT_EQ(completed(memory, heard(alice)).name, "second");
    completed(memory, response(alice, {}, {heart}));
    EXPECT_EQ(completed(memory, heard(alice)).name, "second");
    EXPECT_EQ(completed(memory, heard(alice)).services, std::vector{heart});
}

TEST(SenderMemory, KeepsSendersApartByAddressAndItsType) {
    SenderMemory memory;
    completed(memory, response(alice, "alice"));
    EXPECT_FALSE(completed(memory, heard(bob)).name);
    AdvertisingReport random = heard(alice);
    random.addressType = 1;
    EXPECT_FALSE(completed(memory, random).name);
}

TEST(SenderMemory, LeavesAnonymousSendersAlone) {
    SenderMemory memory;
    AdvertisingReport anonymous = response(alice, "nobody");
    anonymous.address.reset();
    completed(memory, anonymous);
    anonymous.name.reset();
    EXPECT_FALSE(completed(memory, anonymous).name);
}

TEST(SenderMemory, ForgetsTheSenderThatWasSilentForLongest) {
    SenderMemory memory(3);
    for (std::size_t i = 0; i < 3; ++i) completed(memory, response(numbered(i), "name"));
    completed(memory, heard(numbered(0)));
    completed(memory, response(numbered(3), "name"));
    EXPECT_FALSE(completed(memory, heard(numbered(1))).name);
    for (const std::size_t known : {0U, 2U, 3U}) EXPECT_TRUE(completed(memory, heard(numbered(known))).name) << known;
}

TEST(SenderMemory, TakesNoMoreMemoryThanItMay) {
    constexpr std::size_t room = 20'000;
    SenderMemory memory(1'000, room);
    const std::string longName(2'000, 'x');
    for (std::size_t i = 0; i < 100; ++i) completed(memory, response(numbered(i), longName));
    std::size_t remembered = 0;
    for (std::size_t i = 0; i < 100; ++i) remembered += completed(memory, heard(numbered(i))).name ? 1U : 0U;
    EXPECT_GT(remembered, 5U);
    EXPECT_LE(remembered * longName.size(), room);
    completed(memory, response(alice, std::string(room, 'x')));  // more than all room: forgotten at once
    EXPECT_FALSE(completed(memory, heard(alice)).name);
}

TEST(SenderMemory, CountsAChangedNameInPlaceOfTheOldOne) {
    SenderMemory memory(10, 5'000);
    for (int i = 0; i < 100; ++i) completed(memory, response(alice, std::string(1'000, 'x')));
    EXPECT_TRUE(completed(memory, heard(alice)).name);
}

}  // namespace

}  // namespace nearcast
