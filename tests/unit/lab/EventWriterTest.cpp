// SPDX-License-Identifier: Apache-2.0
#include "lab/EventWriter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace nearcast::lab {
namespace {

using namespace std::chrono_literals;

class EventWriterTest : public testing::Test {
protected:
    std::string written() {
        writer_.flush();
        return std::exchange(out_, "");
    }

    std::string out_;
    EventWriter writer_{[this](std::string_view text) { out_ += text; }};
};

TEST_F(EventWriterTest, WritesEachKindOfEventAsOneLine) {
    writer_.returned(0s, "startScan", true);
    EXPECT_EQ(written(), "{\"at\": 0.0, \"event\": \"return\", \"of\": \"startScan\", \"value\": true}\n");
    writer_.returned(5s, "getRSSI", -60);
    EXPECT_EQ(written(), "{\"at\": 5.0, \"event\": \"return\", \"of\": \"getRSSI\", \"value\": -60}\n");
    writer_.raised(100ms, "x", "PortException", "no");
    EXPECT_EQ(written(),
              "{\"at\": 0.1, \"event\": \"raise\", \"of\": \"x\", \"name\": \"PortException\", "
              "\"reason\": \"no\"}\n");
    writer_.discovered(1us, "P", 1, "A", -60);
    EXPECT_EQ(written(),
              "{\"at\": 0.000001, \"event\": \"didDiscoverPort\", \"portName\": \"P\", \"deviceType\": 1, "
              "\"MACAddr\": \"A\", \"RSSI\": -60}\n");
    writer_.fellSilent(5s, "", "A");
    EXPECT_EQ(written(), "{\"at\": 5.0, \"event\": \"didUpdateState\", \"portName\": \"\", \"MACAddr\": \"A\"}\n");
    writer_.console(5s, "text");
    EXPECT_EQ(written(), "{\"at\": 5.0, \"event\": \"console\", \"text\": \"text\"}\n");
    writer_.trace(5s, 6, "-[A b]", "text");
    EXPECT_EQ(written(),
              "{\"at\": 5.0, \"event\": \"trace\", \"type\": 6, \"method\": \"-[A b]\", \"text\": \"text\"}\n");
    writer_.lock(5s, "_lock", false);
    EXPECT_EQ(written(), "{\"at\": 5.0, \"event\": \"lock\", \"name\": \"_lock\", \"held\": false}\n");
}

TEST_F(EventWriterTest, WritesHowTheRadioIs) {
    RadioHealth health;
    health.state = CBManagerStatePoweredOff;
    health.why = "blocked";
    health.restarts = 2;
    writer_.radioHealth(5s, health);
    EXPECT_EQ(written(),
              "{\"at\": 5.0, \"event\": \"radioHealth\", \"state\": 4, \"why\": \"blocked\", \"restarts\": 2, "
              "\"reportsPerSecond\": 0.0, \"lastReportAge\": null}\n");
    health.reportsPerSecond = 31.2;
    health.lastReportAge = 0.25;
    writer_.radioHealth(5s, health);
    EXPECT_NE(written().find("\"reportsPerSecond\": 31.2, \"lastReportAge\": 0.25}"), std::string::npos);
}

TEST_F(EventWriterTest, WritesWhatTheRadioIsAsked) {
    writer_.centralStopped(0s);
    EXPECT_EQ(written(), "{\"at\": 0.0, \"event\": \"central\", \"call\": \"stopScan\"}\n");
    writer_.centralScans(0s, std::nullopt, true);
    EXPECT_EQ(written(),
              "{\"at\": 0.0, \"event\": \"central\", \"call\": \"scanForPeripherals\", \"services\": null, "
              "\"allowDuplicates\": true}\n");
    writer_.centralScans(0s, std::vector<std::string>{"a", "b"}, false);
    EXPECT_EQ(written(),
              "{\"at\": 0.0, \"event\": \"central\", \"call\": \"scanForPeripherals\", \"services\": [\"a\", "
              "\"b\"], \"allowDuplicates\": false}\n");
}

TEST_F(EventWriterTest, WritesTheRegistryAndTheAbsentBlobAsJSON) {
    writer_.returned(0s, "settings", SettingValue::Dictionary{{"P", SettingValue::Dictionary{{"n", 1}}}});
    EXPECT_NE(written().find("\"value\": {\"P\":{\"n\":1}}}\n"), std::string::npos);
    writer_.returned(0s, "serializedSettings", SettingValue());
    EXPECT_NE(written().find("\"value\": null}\n"), std::string::npos);
}

TEST_F(EventWriterTest, EscapesWhatAStringMayNotHold) {
    const std::pair<std::string, std::string> cases[] = {
        {"a\"b\\", "a\\\"b\\\\"},          {"\n\r\t\b\f", "\\n\\r\\t\\b\\f"},
        {"\x01\x1f", "\\u0001\\u001f"},    {"é😀", "é😀"},
        {std::string("\0", 1), "\\u0000"}, {"\xFF\xC3(", "\xEF\xBF\xBD\xEF\xBF\xBD("},
    };
    for (const auto& [text, expected] : cases) {
        writer_.console(0s, text);
        EXPECT_EQ(written(), "{\"at\": 0.0, \"event\": \"console\", \"text\": \"" + expected + "\"}\n");
    }
}

TEST_F(EventWriterTest, EscapesWhatWouldSteerATerminalInAValueToo) {
    writer_.returned(0s, "settings", SettingValue("\x7f\xC2\x9B\u202E"));
    EXPECT_NE(written().find(R"("value": "\u007f\u009b\u202e")"), std::string::npos);
}

TEST(EventWriterAttempt, KeepsTheFirstFailureAndWritesNothingMore) {
    int handedOver = 0;
    EventWriter writer([&](std::string_view) { ++handedOver; });
    EXPECT_NO_THROW(writer.requireWritten());
    writer.attempt([] { throw std::runtime_error("first"); });
    writer.attempt([] { throw std::runtime_error("second"); });
    writer.attempt([&] { writer.console(0s, "after"); });
    writer.flush();
    EXPECT_EQ(handedOver, 0);
    try {
        writer.requireWritten();
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "first");
    }
}

TEST_F(EventWriterTest, WritesNothingMoreOnceItIsMuted) {
    writer_.console(0s, "before");
    writer_.flush();
    writer_.mute();
    writer_.console(0s, "after");
    EXPECT_EQ(written().find("after"), std::string::npos);
}

TEST_F(EventWriterTest, HandsManyEventsOverInPartsOfWholeLines) {
    for (int count = 0; count < 10000; ++count) writer_.returned(0s, "getRSSI", count);
    EXPECT_FALSE(out_.empty());
    EXPECT_EQ(out_.back(), '\n');
}

}  // namespace
}  // namespace nearcast::lab
