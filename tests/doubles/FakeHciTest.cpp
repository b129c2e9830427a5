// SPDX-License-Identifier: Apache-2.0
#include "doubles/hci/FakeHci.h"

#include "platform/hci/HciPacket.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <cerrno>

namespace nearcast::hci {

namespace {

using hci::Command;

class FakeControllerTest : public testing::Test {
protected:
    /// Sends a command. @return the status of its answer
    int status(const Command& command) {
        const auto answers = controller.take(command.packet());
        hci::Answer answer;
        if (answers.size() != 1 || !hci::readAnswer(std::span(answers[0]).subspan(1), answer)) return -1;
        return answer.status;
    }
    void prepare() {
        status({hci::setEventMask, hex("FFFFFFFFFF1F0020")});
        status({hci::leSetEventMask, hex("0210000000000000")});
    }
    int scanParameters() { return status({hci::leSetScanParameters, hex("00 6000 6000 00 00")}); }
    int scanEnable(const char* enable) { return status({hci::leSetScanEnable, hex(enable)}); }

    FakeController controller;
};

TEST_F(FakeControllerTest, ReportsWhileItScans) {
    prepare();
    EXPECT_FALSE(controller.hear({}));
    EXPECT_EQ(scanParameters(), 0);
    EXPECT_EQ(scanEnable("01 00"), 0);
    EXPECT_TRUE(controller.hear({}));
    EXPECT_TRUE(controller.hear({}));
    EXPECT_EQ(scanEnable("00 00"), 0);
    EXPECT_FALSE(controller.hear({}));
}

TEST_F(FakeControllerTest, ReportsNothingThatItsMasksKeepBack) {
    scanParameters();
    scanEnable("01 00");
    EXPECT_FALSE(controller.hear({}));
    prepare();
    EXPECT_TRUE(controller.hear({}));
    status({hci::leSetEventMask, hex("0010000000000000")});
    EXPECT_FALSE(controller.hear({}));
}

TEST_F(FakeControllerTest, FiltersDuplicatesWhereItIsToldTo) {
    prepare();
    scanParameters();
    scanEnable("01 01");
    EXPECT_TRUE(controller.hear({.address = alice}));
    EXPECT_FALSE(controller.hear({.address = alice}));
    EXPECT_TRUE(controller.hear({.address = bob}));
}

TEST_F(FakeControllerTest, HearsNobodyWhereItIsToHearThoseOfItsList) {
    prepare();
    status({hci::leSetScanParameters, hex("00 6000 6000 00 01")});
    scanEnable("01 00");
    EXPECT_FALSE(controller.hear({}));
}

TEST_F(FakeControllerTest, KnowsAScanWithPauses) {
    status({hci::leSetScanParameters, hex("01 6000 3000 00 00")});
    EXPECT_FALSE(controller.continuous());
    EXPECT_FALSE(controller.passive());
}

TEST_F(FakeControllerTest, RefusesParametersWhileItScans) {
    scanParameters();
    scanEnable("01 00");
    EXPECT_EQ(scanParameters(), hci::commandDisallowed);
}

TEST_F(FakeControllerTest, RefusesToMixTheFamiliesOfCommands) {
    controller.extended = true;
    EXPECT_EQ(status({hci::leSetExtendedScanParameters, hex("00 00 01 00 6000 6000")}), 0);
    EXPECT_EQ(scanParameters(), hci::commandDisallowed);
    EXPECT_EQ(scanEnable("01 00"), hci::commandDisallowed);
}

TEST_F(FakeControllerTest, KnowsExtendedCommandsOnlyWhereItHasThem) {
    EXPECT_EQ(status({hci::leSetExtendedScanEnable, hex("01 00 0000 0000")}), 1);
    EXPECT_EQ(status({0xFC00, {}}), 1);
}

TEST_F(FakeControllerTest, FailsOnceWhereItIsAskedTo) {
    controller.failNext(hci::reset, 0x1F);
    EXPECT_EQ(status({hci::reset, {}}), 0x1F);
    EXPECT_EQ(status({hci::reset, {}}), 0);
}

TEST_F(FakeControllerTest, SaysNothingWhenItIsDead) {
    controller.mute = true;
    EXPECT_EQ(status({hci::reset, {}}), -1);
}

bool readable(const HciSocket& socket) {
    pollfd waiting{socket.descriptor(), POLLIN, 0};
    return poll(&waiting, 1, 0) == 1;
}

TEST(FakeHci, IsReadableAsLongAsSomethingWaits) {
    FakeHci machine;
    const auto port = machine.port();
    const auto socket = port->open(0, HciAccess::alone).socket;
    EXPECT_FALSE(readable(*socket));
    socket->write(Command{hci::reset, {}}.packet());
    EXPECT_TRUE(readable(*socket));
    EXPECT_EQ(socket->read().packet.size(), 7U);
    EXPECT_TRUE(socket->read().packet.empty());
    EXPECT_FALSE(readable(*socket));
}

TEST(FakeHci, TellsTheLossOnceAllHasBeenRead) {
    FakeHci machine;
    const auto socket = machine.port()->open(0, HciAccess::alone).socket;
    socket->write(Command{hci::reset, {}}.packet());
    machine.unplug();
    EXPECT_FALSE(socket->read().packet.empty());
    EXPECT_EQ(socket->read().error, EPIPE);
}

TEST(FakeHci, RefusesAsTheKernelDoes) {
    FakeHci machine;
    const auto port = machine.port();
    EXPECT_EQ(port->open(1, HciAccess::alone).error, ENODEV);
    machine.block({.soft = true});
    EXPECT_EQ(port->open(0, HciAccess::alone).error, ERFKILL);
    machine.block({});
    machine.use(true);
    EXPECT_EQ(port->open(0, HciAccess::alone).error, EBUSY);
    EXPECT_EQ(port->open(0, HciAccess::beside).error, 0);
    machine.allow({});
    EXPECT_EQ(port->open(0, HciAccess::alone).error, EPERM);
    EXPECT_EQ(port->open(0, HciAccess::beside).error, EPERM);
}

}  // namespace

}  // namespace nearcast::hci
