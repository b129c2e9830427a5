// SPDX-License-Identifier: Apache-2.0
#include "platform/hciformat/HciEvents.h"

#include "unit/platform/hciformat/HciBytes.h"

#include <gtest/gtest.h>

namespace nearcast {

namespace {

ReportFragments::Key key(std::size_t number) {
    return {static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(number >> 8)};
}

TEST(ReportFragments, JoinsThePiecesInOrder) {
    ReportFragments fragments;
    fragments.add(key(1), hex("01 02"));
    fragments.add(key(1), hex("03"));
    EXPECT_EQ(fragments.finish(key(1), hex("04")), hex("01 02 03 04"));
}

TEST(ReportFragments, HaveNothingToJoinAfterwards) {
    ReportFragments fragments;
    EXPECT_FALSE(fragments.finish(key(1), hex("01")));
    fragments.add(key(1), hex("01"));
    fragments.finish(key(1), {});
    EXPECT_FALSE(fragments.finish(key(1), hex("02")));
}

TEST(ReportFragments, KeepsAdvertisementsApart) {
    ReportFragments fragments;
    fragments.add(key(1), hex("01"));
    fragments.add(key(2), hex("02"));
    EXPECT_EQ(fragments.finish(key(1), hex("11")), hex("01 11"));
    EXPECT_EQ(fragments.finish(key(2), hex("12")), hex("02 12"));
}

TEST(ReportFragments, CutsWhatIsLongerThanCanBeAdvertised) {
    ReportFragments fragments;
    for (int i = 0; i < 7; ++i) fragments.add(key(1), Octets(229, 1));
    EXPECT_EQ(fragments.finish(key(1), Octets(47, 2))->size(), ReportFragments::longestData);
    for (int i = 0; i < 100; ++i) fragments.add(key(1), Octets(229, 1));
    EXPECT_EQ(fragments.finish(key(1), Octets(229, 2))->size(), ReportFragments::longestData);
}

TEST(ReportFragments, ForgetsTheOldestOfTooManyUnfinishedOnes) {
    ReportFragments fragments;
    for (std::size_t i = 0; i < ReportFragments::mostUnfinished; ++i) fragments.add(key(i), hex("01"));
    fragments.add(key(0), hex("02"));  // one that is known takes no place
    fragments.add(key(1000), hex("03"));
    EXPECT_FALSE(fragments.finish(key(0), {}));
    EXPECT_EQ(fragments.finish(key(1), {}), hex("01"));
    EXPECT_EQ(fragments.finish(key(1000), {}), hex("03"));
}

}  // namespace

}  // namespace nearcast
