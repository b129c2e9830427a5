// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciPacket.h"

#include "unit/platform/hciformat/HciBytes.h"

#include <gtest/gtest.h>

namespace nearcast::hci {

namespace {

TEST(HciCommand, IsSentWithItsOpcodeAndTheLengthOfItsParameters) {
    EXPECT_EQ((Command{reset, {}}.packet()), hex("01 03 0C 00"));
    EXPECT_EQ((Command{leSetScanEnable, {1, 0}}.packet()), hex("01 0C 20 02 01 00"));
}

TEST(HciAnswer, IsReadFromACommandComplete) {
    const Octets event = hex("0E 06 02 0B 20 0C AA BB");
    Answer answer;
    ASSERT_TRUE(readAnswer(event, answer));
    EXPECT_EQ(answer.opcode, leSetScanParameters);
    EXPECT_EQ(answer.status, commandDisallowed);
    EXPECT_EQ(Octets(answer.returned.begin(), answer.returned.end()), hex("AA BB"));
    EXPECT_EQ(answer.room, 2);
    EXPECT_TRUE(answer.complete);
}

TEST(HciAnswer, IsReadFromACommandStatus) {
    Answer answer;
    ASSERT_TRUE(readAnswer(hex("0F 04 00 01 0B 20"), answer));
    EXPECT_EQ(answer.opcode, leSetScanParameters);
    EXPECT_FALSE(answer.complete);
    ASSERT_TRUE(readAnswer(hex("0F 04 0C 01 0B 20"), answer));
    EXPECT_EQ(answer.status, commandDisallowed);
    EXPECT_TRUE(answer.complete);
}

TEST(HciAnswer, MayBeToNoCommand) {
    Answer answer;
    ASSERT_TRUE(readAnswer(hex("0E 03 01 00 00"), answer));
    EXPECT_EQ(answer.opcode, 0);
    EXPECT_EQ(answer.status, success);
}

TEST(HciAnswer, IsNoneWhereTheEventIsAnotherOrCut) {
    for (const char* event : {"", "0E", "0E 00", "0E 02 01 03", "0F 03 00 01 03", "0E 04 01 03", "3E 04 01 03 0C 00"}) {
        Answer answer;
        EXPECT_FALSE(readAnswer(hex(event), answer)) << event;
    }
}

TEST(HciAnswer, DoesNotReachBeyondItsEvent) {
    Answer answer;
    ASSERT_TRUE(readAnswer(hex("0E 04 01 03 0C 00 AA BB"), answer));
    EXPECT_TRUE(answer.returned.empty());
    ASSERT_TRUE(readAnswer(hex("0E FF 01 03 0C 00 AA"), answer));
    EXPECT_EQ(answer.returned.size(), 1U);
}

}  // namespace

}  // namespace nearcast::hci
