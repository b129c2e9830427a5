// SPDX-License-Identifier: Apache-2.0
#include "platform/hciformat/ByteReader.h"

#include "unit/platform/hciformat/HciBytes.h"

#include <gtest/gtest.h>

namespace nearcast {

namespace {

using Order = ByteReader::Order;

TEST(ByteReader, ReadsNumbersInLittleEndianOrder) {
    const Octets bytes = hex("01 0302 07060504 0F0E0D0C0B0A0908");
    ByteReader reader(bytes);
    EXPECT_EQ(reader.u8(), 0x01);
    EXPECT_EQ(reader.u16(), 0x0203);
    EXPECT_EQ(reader.u32(), 0x04050607U);
    EXPECT_EQ(reader.u64(), 0x08090A0B0C0D0E0FU);
    EXPECT_FALSE(reader.failed());
}

TEST(ByteReader, ReadsNumbersInBigEndianOrder) {
    const Octets bytes = hex("01 0203 04050607 08090A0B0C0D0E0F");
    ByteReader reader(bytes, Order::big);
    EXPECT_EQ(reader.u8(), 0x01);
    EXPECT_EQ(reader.u16(), 0x0203);
    EXPECT_EQ(reader.u32(), 0x04050607U);
    EXPECT_EQ(reader.u64(), 0x08090A0B0C0D0E0FU);
    EXPECT_FALSE(reader.failed());
}

TEST(ByteReader, ReadsSignedOctets) {
    const Octets bytes = hex("80 FF 7F");
    ByteReader reader(bytes);
    EXPECT_EQ(reader.i8(), -128);
    EXPECT_EQ(reader.i8(), -1);
    EXPECT_EQ(reader.i8(), 127);
}

TEST(ByteReader, ReadsUpToTheVeryEnd) {
    const Octets bytes = hex("01 02");
    ByteReader reader(bytes);
    EXPECT_EQ(reader.u16(), 0x0201);
    EXPECT_EQ(reader.left(), 0U);
    EXPECT_FALSE(reader.failed());
}

TEST(ByteReader, FailsOneByteBeyondTheEndAndGivesZero) {
    const Octets bytes = hex("01 02 03");
    ByteReader reader(bytes);
    EXPECT_EQ(reader.u32(), 0U);
    EXPECT_TRUE(reader.failed());
    EXPECT_EQ(reader.left(), 0U);
}

TEST(ByteReader, StaysFailedAndEmptyAfterAFailure) {
    const Octets bytes = hex("01 02 03");
    ByteReader reader(bytes);
    reader.skip(4);
    EXPECT_EQ(reader.u8(), 0);
    EXPECT_TRUE(reader.take(1).empty());
    EXPECT_TRUE(reader.rest().empty());
    EXPECT_TRUE(reader.failed());
}

TEST(ByteReader, TakesSpansAndTellsItsPosition) {
    const Octets bytes = hex("01 02 03 04");
    ByteReader reader(bytes);
    reader.skip(1);
    const auto taken = reader.take(2);
    EXPECT_EQ(Octets(taken.begin(), taken.end()), hex("02 03"));
    EXPECT_EQ(reader.position(), 3U);
    EXPECT_EQ(reader.rest().front(), 0x04);
    EXPECT_EQ(reader.left(), 0U);
}

TEST(ByteReader, TakingNothingOfNothingIsNoFailure) {
    ByteReader reader({});
    EXPECT_TRUE(reader.take(0).empty());
    EXPECT_TRUE(reader.rest().empty());
    EXPECT_FALSE(reader.failed());
}

}  // namespace

}  // namespace nearcast
