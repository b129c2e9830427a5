// SPDX-License-Identifier: Apache-2.0
#include <nearcast/nearcast.h>

#include <gtest/gtest.h>

#include <string>

namespace nearcast {
namespace {

TEST(Version, OfTheLibraryIsThatOfItsHeaders) {
    EXPECT_EQ(version(), std::to_string(NEARCAST_VERSION_MAJOR) + "." + std::to_string(NEARCAST_VERSION_MINOR) + "." +
                             std::to_string(NEARCAST_VERSION_PATCH));
}

TEST(Version, CanBeComparedAsANumber) {
    static_assert(NEARCAST_VERSION ==
                  NEARCAST_MAKE_VERSION(NEARCAST_VERSION_MAJOR, NEARCAST_VERSION_MINOR, NEARCAST_VERSION_PATCH));
    EXPECT_LT(NEARCAST_MAKE_VERSION(0, 9, 12), NEARCAST_MAKE_VERSION(0, 10, 0));
    EXPECT_LT(NEARCAST_MAKE_VERSION(0, 10, 999), NEARCAST_MAKE_VERSION(1, 0, 0));
}

}  // namespace
}  // namespace nearcast
