// SPDX-License-Identifier: Apache-2.0
#include "nearest/DongleAddress.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace nearcast::nearest {

namespace {

struct Case {
    const char* what;
    std::optional<std::vector<std::uint8_t>> manufacturerData;
    std::optional<std::string> name;
    std::optional<std::string> address;  ///< nothing: dropped
};

const std::vector<Case>& cases() {
    static const std::vector<Case> all = {
        {"the dongle's payload", {{0xFF, 0xFF, 0x00, 0x11, 0x22, 0xAA, 0xBB, 0xCC}}, {}, "00:11:22:AA:BB:CC"},
        {"more behind it", {{0xFF, 0xFF, 0x00, 0x11, 0x22, 0xAA, 0xBB, 0xCC, 0x01}}, {}, "00:11:22:AA:BB:CC"},
        {"an octet too few", {{0xFF, 0xFF, 0x00, 0x11, 0x22, 0xAA, 0xBB}}, "QX001122AABBCC", {}},
        {"no manufacturer data", {}, "QX001122AABBCC", {}},
        {"another company, and a name", {{0x4C, 0x00}}, "QX001122aabbcc", "00:11:22:aa:bb:cc"},
        {"no company, and a longer name", {{}}, "QX001122AABBCCDD", "00:11:22:AA:BB:CC"},
        {"one octet, and a name", {{0xFF}}, "QX001122AABBCC", "00:11:22:AA:BB:CC"},
        {"a name too short", {{0x4C, 0x00}}, "QX001122AABBC", {}},
        {"a short name without the marker", {{0x4C, 0x00}}, "Bar", "Bar"},
        {"neither", {{0x4C, 0x00}}, {}, {}},
        {"characters of several octets", {{0x4C, 0x00}}, "QXäöü123456789", "äö:ü1:23:45:67:89"},
    };
    return all;
}

TEST(NearestDongleAddressTest, ReadsWhatTheManagerReads) {
    for (const Case& each : cases()) {
        SCOPED_TRACE(each.what);
        HeardAdvertisement heard;
        if (each.manufacturerData) heard.manufacturerData = *each.manufacturerData;
        if (each.name) heard.name = *each.name;
        DongleAddress address;
        ASSERT_EQ(address.read(heard), each.address.has_value());
        if (!each.address) continue;
        EXPECT_EQ(address.text(), *each.address);
    }
}

}  // namespace

}  // namespace nearcast::nearest
