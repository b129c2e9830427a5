// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciTarget.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <stdexcept>

namespace nearcast::hci {

namespace {

HciTarget read(const char* text) { return parseHciTarget(RadioString::parse(text)); }

TEST(ParseHciTarget, NameAController) {
    EXPECT_EQ(read("hci").index, 0);
    EXPECT_EQ(read("hci:0").index, 0);
    EXPECT_EQ(read("hci:12").index, 12);
    EXPECT_EQ(read("hci:hci2").index, 2);
    EXPECT_EQ(read("hci:65534").index, 65534);
}

TEST(ParseHciTarget, NameAControllerByItsAddress) {
    constexpr DeviceAddress address{0x00, 0x1A, 0x7D, 0xDA, 0x71, 0x0F};
    for (const char* text : {"hci:00:1A:7D:DA:71:0F", "hci:00:1a:7d:da:71:0f", "hci:00:1a:7D:DA:71:0F?beside"}) {
        EXPECT_EQ(read(text).address, address) << text;
        EXPECT_TRUE(read(text).byAddress) << text;
        EXPECT_EQ(read(text).index, HciTarget::notFound) << text;
    }
    EXPECT_EQ(read("hci:00:1A:7D:DA:71:0F?beside").access, HciAccess::beside);
    EXPECT_FALSE(read("hci:0").byAddress);
}

TEST(ParseHciTarget, SayWhyAnAddressOfZerosWillNotDo) {
    try {
        read("hci:00:00:00:00:00:00");
        FAIL() << "it is taken";
    } catch (const std::invalid_argument& error) {
        EXPECT_NE(std::string(error.what()).find("names no controller"), std::string::npos) << error.what();
    }
}

TEST(ParseHciTarget, SayWhetherToListenBesideOthers) {
    EXPECT_EQ(read("hci:0").access, HciAccess::alone);
    EXPECT_EQ(read("hci:0?beside").access, HciAccess::beside);
    EXPECT_EQ(read("hci?beside").access, HciAccess::beside);
}

TEST(ParseHciTarget, RefuseWhatIsNoController) {
    for (const char* text : {"hci:x", "hci:-1", "hci:1x", "hci: 1", "hci:hci", "hci:65535", "hci:99999999999",
                             "hci:00:1A:7D:DA:71", "hci:00:1A:7D:DA:71:0F:", "hci:00:1A:7D:DA:71:0G"}) {
        EXPECT_THROW(read(text), std::invalid_argument) << text;
    }
}

TEST(ParseHciTarget, RefuseOptionsThatAreNotKnown) {
    EXPECT_THROW(read("hci:0?beside=yes"), std::invalid_argument);
    EXPECT_THROW(read("hci:0?alone"), std::invalid_argument);
}

HciTarget target(HciAccess access = HciAccess::alone) {
    return {.index = 1, .access = access, .program = "/usr/bin/nearcast"};
}

HciAdapter adapter(bool up = false, HciBlock blocked = {}, std::optional<bool> lowEnergy = true) {
    HciAdapter adapter;
    adapter.index = 1;
    adapter.up = up;
    adapter.blocked = blocked;
    adapter.lowEnergy = lowEnergy;
    return adapter;
}

struct ObstacleCase {
    HciAccess access;
    HciPort::Asked asked;
    CBManagerState state;
    const char* words;  // the reason has these
};

TEST(HciObstacle, IsToldWithWhatToDoAboutIt) {
    const auto alone = HciAccess::alone;
    const auto beside = HciAccess::beside;
    const ObstacleCase cases[] = {
        {alone, {{}, ENODEV}, CBManagerStateUnsupported, "there is no hci1: plug"},
        {beside, {{}, ENODEV}, CBManagerStateUnsupported, "there is no hci1: plug"},
        {alone, {{}, EAFNOSUPPORT}, CBManagerStateUnsupported, "modprobe bluetooth"},
        {alone, {{}, EPERM}, CBManagerStateUnauthorized, "RestrictAddressFamilies"},
        {alone, {{}, EACCES}, CBManagerStateUnauthorized, "RestrictAddressFamilies"},
        {alone, {{}, EMFILE}, CBManagerStateResetting, "Too many open files"},
        {alone, {adapter(false, {.soft = true}), 0}, CBManagerStatePoweredOff, "`rfkill unblock bluetooth`"},
        {alone, {adapter(false, {.hard = true}), 0}, CBManagerStatePoweredOff, "a switch of this machine"},
        {alone, {adapter(false, {true, true}), 0}, CBManagerStatePoweredOff, "a switch of this machine"},
        {beside, {adapter(false, {.soft = true}), 0}, CBManagerStatePoweredOff, "`rfkill unblock bluetooth`"},
        {alone, {adapter(false, {}, false), 0}, CBManagerStateUnsupported, "without Bluetooth Low Energy"},
        {beside, {adapter(false), 0}, CBManagerStatePoweredOff, "`bluetoothctl power on`"},
    };
    for (const ObstacleCase& one : cases) {
        const auto found = obstacle(target(one.access), one.asked);
        ASSERT_TRUE(found) << one.words;
        EXPECT_EQ(found->state, one.state) << one.words;
        EXPECT_NE(found->why.find(one.words), std::string::npos) << found->why;
    }
}

TEST(HciObstacle, IsNoneWhereTheControllerMayBeTried) {
    EXPECT_FALSE(obstacle(target(), {adapter(), 0}));
    EXPECT_FALSE(obstacle(target(), {adapter(true), 0}));  // the kernel knows better whether that is in our way
    EXPECT_FALSE(obstacle(target(), {adapter(false, {}, std::nullopt), 0}));
    EXPECT_FALSE(obstacle(target(HciAccess::beside), {adapter(true), 0}));
}

struct RefusalCase {
    HciAccess access;
    bool up;
    Capabilities capabilities;
    int error;
    CBManagerState state;
    const char* words;
};

TEST(HciRefusal, IsToldWithWhatToDoAboutIt) {
    const auto alone = HciAccess::alone;
    const auto beside = HciAccess::beside;
    const Capabilities all{true, true};
    const char* const setcap = "`sudo setcap cap_net_raw,cap_net_admin+eip /usr/bin/nearcast`";
    const RefusalCase cases[] = {
        {alone, false, {}, EPERM, CBManagerStateUnauthorized, setcap},
        {beside, true, {}, EPERM, CBManagerStateUnauthorized, setcap},
        {alone, false, {false, true}, EPERM, CBManagerStateUnauthorized, "without CAP_NET_ADMIN"},
        {beside, true, {true, false}, EPERM, CBManagerStateUnauthorized, "without CAP_NET_RAW"},
        {alone, false, all, EPERM, CBManagerStateUnauthorized, "a container"},
        {beside, true, all, EPERM, CBManagerStateUnauthorized, "a container"},
        {alone, true, all, EBUSY, CBManagerStateUnauthorized, "`sudo systemctl disable --now bluetooth`"},
        {alone, true, all, EBUSY, CBManagerStateUnauthorized, "AutoEnable=false below [Policy]"},
        {alone, true, all, EBUSY, CBManagerStateUnauthorized, "hci:1?beside"},
        {alone, false, all, EBUSY, CBManagerStateResetting, "is being set up"},
        {alone, false, all, EUSERS, CBManagerStateUnauthorized, "another program has hci1 for itself"},
        {alone, false, all, ENODEV, CBManagerStateUnsupported, "there is no hci1"},
        {alone, false, all, ERFKILL, CBManagerStatePoweredOff, "`rfkill unblock bluetooth`"},
        {alone, false, all, EIO, CBManagerStateResetting, "Input/output error"},
    };
    for (const RefusalCase& one : cases) {
        const auto found = refusal(target(one.access), adapter(one.up), one.capabilities, one.error);
        EXPECT_EQ(found.state, one.state) << one.words;
        EXPECT_NE(found.why.find(one.words), std::string::npos) << found.why;
    }
}

}  // namespace

}  // namespace nearcast::hci
