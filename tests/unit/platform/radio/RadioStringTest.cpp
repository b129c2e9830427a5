// SPDX-License-Identifier: Apache-2.0
#include "platform/radio/RadioString.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace nearcast {
namespace {

std::string problemOf(std::string_view text) {
    try {
        RadioString::parse(text);
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "";
}

TEST(RadioString, IsAKindAlone) {
    for (const char* text : {"auto", "none", "simulator"}) {
        const auto radio = RadioString::parse(text);
        EXPECT_EQ(radio.kind, text);
        EXPECT_EQ(radio.argument, "");
        EXPECT_TRUE(radio.options.empty());
    }
}

TEST(RadioString, HasAnArgumentAfterTheFirstColonWhichMayHoldColons) {
    const auto radio = RadioString::parse("replay:/tmp/a:b.jsonl");
    EXPECT_EQ(radio.kind, "replay");
    EXPECT_EQ(radio.argument, "/tmp/a:b.jsonl");
    EXPECT_EQ(RadioString::parse("simulator:shop.json").argument, "shop.json");
}

TEST(RadioString, HasOptionsAfterTheLastQuestionMark) {
    const auto radio = RadioString::parse("replay:what?.jsonl?speed=max&as=dongles&services");
    EXPECT_EQ(radio.argument, "what?.jsonl");
    EXPECT_EQ(radio.option("speed", "1"), "max");
    EXPECT_EQ(radio.option("as", ""), "dongles");
    EXPECT_EQ(radio.option("services", "otherwise"), "") << "an option without a value has the empty one";
    EXPECT_EQ(radio.option("seed", "otherwise"), "otherwise");
    EXPECT_EQ(radio.text, "replay:what?.jsonl?speed=max&as=dongles&services");
}

TEST(RadioString, AnEscapedQuestionMarkBelongsToTheArgument) {
    struct Case {
        const char* text;
        const char* argument;
        const char* speed;
    };
    const Case cases[] = {
        {R"(replay:what\?.jsonl)", "what?.jsonl", ""},
        {R"(replay:what\?.jsonl?speed=max)", "what?.jsonl", "max"},
        {R"(replay:\??speed=2)", "?", "2"},
        {R"(replay:a\?speed=2)", "a?speed=2", ""},
        {R"(replay:a\\?speed=2)", R"(a\)", "2"},
        {R"(replay:a\\\?speed=2)", R"(a\?speed=2)", ""},
        {R"(replay:\a\b\)", R"(\a\b\)", ""},
        {R"(replay:a?b\?c?speed=max)", "a?b?c", "max"},
    };
    for (const Case& one : cases) {
        const auto radio = RadioString::parse(one.text);
        EXPECT_EQ(radio.argument, one.argument) << one.text;
        EXPECT_EQ(radio.option("speed", ""), one.speed) << one.text;
        EXPECT_EQ(radio.text, one.text);
    }
}

TEST(RadioString, TellsHowAQuestionMarkIsWrittenWhereOneBeginsNoOptions) {
    const std::string hint = R"((a question mark in a file's name is written \?))";
    EXPECT_NE(problemOf("replay:what?.jsonl").find(hint), std::string::npos);
    EXPECT_NE(problemOf("simulator:what?.json").find(hint), std::string::npos);
    EXPECT_EQ(problemOf("hci:0?x").find(hint), std::string::npos);
    EXPECT_EQ(problemOf("none?x").find(hint), std::string::npos);
}

TEST(RadioString, AnOptionsValueMayHoldEqualsSigns) {
    EXPECT_EQ(RadioString::parse("simulator?seed=a=b").option("seed", ""), "a=b");
}

TEST(RadioString, AnUnknownKindIsRefusedWithTheKnownOnes) {
    for (const char* text : {"", "Replay:x", "radio", ":x", "none ", "?speed=1"}) {
        const auto problem = problemOf(text);
        EXPECT_NE(problem.find("there is no radio"), std::string::npos) << text;
        EXPECT_NE(problem.find("simulator"), std::string::npos) << problem;
    }
}

TEST(RadioString, ThereAreNoKindsButThoseThatItNames) {
    const auto kinds = RadioString::kinds();
    EXPECT_EQ(kinds.size(), 6U);
    for (const std::string& kind : kinds)
        EXPECT_EQ(problemOf(kind).find("there is no radio"), std::string::npos) << kind;
}

TEST(RadioString, AMissingOrNeedlessArgumentIsRefused) {
    EXPECT_NE(problemOf("replay"), "");
    EXPECT_NE(problemOf("replay:"), "");
    EXPECT_NE(problemOf("replay?speed=max"), "");
    EXPECT_NE(problemOf("none:x"), "");
    EXPECT_NE(problemOf("auto:x"), "");
    EXPECT_EQ(problemOf("simulator"), "");
    for (const char* text : {"simulator:", "simulator:?seed=1", "bluez:", "hci:", "none:", "auto:"}) {
        EXPECT_NE(problemOf(text).find("nothing follows the colon"), std::string::npos) << text;
    }
}

TEST(RadioString, AnUnknownOrRepeatedOptionIsRefusedByName) {
    EXPECT_NE(problemOf("replay:x?seed=1").find("'seed'"), std::string::npos);
    EXPECT_NE(problemOf("simulator?as=dongles").find("'as'"), std::string::npos);
    EXPECT_NE(problemOf("none?speed=1").find("'speed'"), std::string::npos);
    EXPECT_NE(problemOf("replay:x?speed=1&speed=2").find("twice"), std::string::npos);
    EXPECT_NE(problemOf("replay:x?"), "");
    EXPECT_NE(problemOf("replay:x?speed=1&"), "");
}

TEST(RadioString, TakesBluezWithAndWithoutAnAdapter) {
    EXPECT_EQ(RadioString::parse("bluez").kind, "bluez");
    EXPECT_EQ(RadioString::parse("bluez").argument, "");
    EXPECT_EQ(RadioString::parse("bluez:hci1").argument, "hci1");
    EXPECT_EQ(RadioString::parse("bluez:hci12").argument, "hci12");
}

TEST(RadioString, TakesAnAdapterOfBluezByItsAddressInAnyCase) {
    for (const char* address : {"00:1A:7D:DA:71:13", "00:1a:7d:da:71:13", "00:1a:7D:Da:71:13"}) {
        EXPECT_EQ(RadioString::parse(std::string("bluez:") + address).argument, address);
    }
}

TEST(RadioString, RefusesWhatIsNoAdapter) {
    for (const char* wrong :
         {"bluez:1", "bluez:hci", "bluez:hci1x", "bluez:HCI1", "bluez:hci-1", "bluez:hci123456",
          "bluez:/org/bluez/hci0", "bluez:hci0/..", "bluez:00:00:00:00:00:00", "bluez:00:1A:7D:DA:71",
          "bluez:00:1A:7D:DA:71:13:", "bluez:00-1A-7D-DA-71-13", "bluez:00:1A:7D:DA:71:1G"}) {
        EXPECT_THROW(RadioString::parse(wrong), std::invalid_argument) << wrong;
    }
}

TEST(RadioString, RefusesOptionsThatBluezDoesNotHave) {
    EXPECT_THROW(RadioString::parse("bluez?speed=1"), std::invalid_argument);
}

}  // namespace
}  // namespace nearcast
