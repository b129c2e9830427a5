// SPDX-License-Identifier: Apache-2.0
#include "lab/controller/Controller.h"

#include <gtest/gtest.h>

namespace nearcast::lab {

namespace {

const Bytes reset{0x03, 0x0c, 0};
const Bytes scanOn{0x0c, 0x20, 2, 1, 0};
const Bytes scanOff{0x0c, 0x20, 2, 0, 0};
const Bytes activeScan{0x0b, 0x20, 7, 1, 0x12, 0, 0x12, 0, 0, 0};
const Bytes extendedScanOn{0x42, 0x20, 6, 1, 1, 0, 0, 0, 0};
const Bytes extendedActiveScan{0x41, 0x20, 8, 0, 0, 1, 1, 0x12, 0, 0x12, 0};

Bytes complete(std::uint8_t low, std::uint8_t high, std::uint8_t status) { return {0x0e, 4, 1, low, high, status}; }

ControllerKind extendedKind() {
    ControllerKind kind;
    kind.extended = true;
    return kind;
}

TEST(Controller, AnswersAResetWithCommandComplete) {
    Controller controller{ControllerKind()};
    EXPECT_EQ(controller.answer(reset), complete(0x03, 0x0c, 0));
}

TEST(Controller, TellsItsAddressLeastSignificantOctetFirst) {
    Controller controller({.address = {1, 2, 3, 4, 5, 6}});
    const Bytes readAddress{0x09, 0x10, 0};
    EXPECT_EQ(controller.answer(readAddress), (Bytes{0x0e, 10, 1, 0x09, 0x10, 0, 6, 5, 4, 3, 2, 1}));
}

TEST(Controller, RefusesACommandThatItDoesNotKnow) {
    Controller controller{ControllerKind()};
    const Bytes createConnection{0x0d, 0x20, 0};
    EXPECT_EQ(controller.answer(createConnection), (Bytes{0x0f, 4, 0x01, 1, 0x0d, 0x20}));
    EXPECT_EQ(controller.unknown().at(0x200d), 1U);
}

TEST(Controller, TakesNothingWhoseLengthIsALie) {
    Controller controller{ControllerKind()};
    EXPECT_FALSE(controller.answer(Bytes{0x03, 0x0c}));
    EXPECT_FALSE(controller.answer(Bytes{0x03, 0x0c, 1}));
    EXPECT_FALSE(controller.answer(Bytes{0x03, 0x0c, 0, 0}));
}

TEST(Controller, ScansAsItIsTold) {
    Controller controller{ControllerKind()};
    controller.answer(activeScan);
    EXPECT_FALSE(controller.scan().enabled);
    EXPECT_TRUE(controller.scan().active);
    EXPECT_EQ(controller.answer(scanOn), complete(0x0c, 0x20, 0));
    EXPECT_TRUE(controller.scan().enabled);
    EXPECT_EQ(controller.scan().enables, 1U);
    controller.answer(scanOff);
    EXPECT_FALSE(controller.scan().enabled);
    EXPECT_EQ(controller.scan().enables, 1U);
}

TEST(Controller, DisallowsOtherParametersWhileItScans) {
    Controller controller{ControllerKind()};
    controller.answer(scanOn);
    EXPECT_EQ(controller.answer(activeScan), complete(0x0b, 0x20, 0x0c));
    EXPECT_FALSE(controller.scan().active);
}

TEST(Controller, RefusesAnEnablingThatIsNeitherOnNorOff) {
    Controller controller{ControllerKind()};
    EXPECT_EQ(controller.answer(Bytes{0x0c, 0x20, 2, 2, 0}), complete(0x0c, 0x20, 0x12));
    EXPECT_EQ(controller.answer(Bytes{0x0c, 0x20, 1, 1}), complete(0x0c, 0x20, 0x12));
}

TEST(Controller, StopsItsScanAtAReset) {
    Controller controller{ControllerKind()};
    controller.answer(scanOn);
    controller.answer(reset);
    EXPECT_FALSE(controller.scan().enabled);
}

TEST(Controller, KnowsExtendedScansOnlyAsAnExtendedOne) {
    Controller legacy{ControllerKind()};
    EXPECT_EQ(legacy.answer(extendedScanOn), (Bytes{0x0f, 4, 0x01, 1, 0x42, 0x20}));
    Controller extended(extendedKind());
    EXPECT_EQ(extended.answer(extendedActiveScan), complete(0x41, 0x20, 0));
    EXPECT_EQ(extended.answer(extendedScanOn), complete(0x42, 0x20, 0));
    EXPECT_TRUE(extended.scan().enabled);
    EXPECT_TRUE(extended.scan().active);
    EXPECT_TRUE(extended.scan().extended);
    EXPECT_TRUE(extended.scan().filterDuplicates);
}

TEST(Controller, HasNoLowEnergyAsAClassicOne) {
    Controller classic({.classic = true});
    const Bytes readFeatures{0x03, 0x10, 0};
    constexpr std::size_t octet4 = 6 + 4;
    EXPECT_EQ(classic.answer(readFeatures).value().at(octet4) & 0x60, 0x00);
    EXPECT_EQ(classic.answer(scanOn), (Bytes{0x0f, 4, 0x01, 1, 0x0c, 0x20}));
    EXPECT_FALSE(classic.scan().enabled);
    Controller other{ControllerKind()};
    EXPECT_EQ(other.answer(readFeatures).value().at(octet4) & 0x60, 0x60);
}

TEST(Controller, LetsItselfBeSetUpAsAClassicOne) {
    Controller classic({.classic = true});
    EXPECT_EQ(classic.answer(reset), complete(0x03, 0x0c, 0));
    EXPECT_EQ(classic.answer(Bytes{0x1a, 0x0c, 1, 2}), complete(0x1a, 0x0c, 0)) << "whatever the host sets";
    EXPECT_EQ(classic.answer(Bytes{0x05, 0x10, 0}), (Bytes{0x0e, 11, 1, 0x05, 0x10, 0, 0xfd, 0x03, 64, 8, 0, 0, 0}));
    EXPECT_EQ(classic.answer(Bytes{0x14, 0x0c, 0}).value().size(), 2 + 252U) << "a name";
    const Bytes inquiry{0x01, 0x04, 5, 0x33, 0x8b, 0x9e, 8, 0};
    EXPECT_EQ(classic.answer(inquiry), (Bytes{0x0f, 4, 0x01, 1, 0x01, 0x04}));
}

TEST(Controller, TakesTheCommandsOfExtendedAdvertisingWhereItSaysThatItAdvertisesSo) {
    const Bytes readFeatures{0x03, 0x20, 0};
    const Bytes setData{0x37, 0x20, 4, 0, 3, 1, 0};
    constexpr std::size_t secondOctet = 6 + 1;
    Controller legacy{ControllerKind()};
    EXPECT_EQ(legacy.answer(readFeatures).value().at(secondOctet), 0x00);
    EXPECT_EQ(legacy.answer(setData), (Bytes{0x0f, 4, 0x01, 1, 0x37, 0x20}));
    Controller extended(extendedKind());
    EXPECT_EQ(extended.answer(readFeatures).value().at(secondOctet), 0x10);
    EXPECT_EQ(extended.answer(setData), complete(0x37, 0x20, 0));
}

TEST(Controller, SaysWhetherItKnowsExtendedScans) {
    const Bytes readCommands{0x02, 0x10, 0};
    constexpr std::size_t octet37 = 6 + 37;
    Controller legacy{ControllerKind()};
    EXPECT_EQ(legacy.answer(readCommands).value().at(octet37) & 0x60, 0x00);
    Controller extended(extendedKind());
    EXPECT_EQ(extended.answer(readCommands).value().at(octet37) & 0x60, 0x60);
}

}  // namespace

}  // namespace nearcast::lab
