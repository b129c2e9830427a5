// SPDX-License-Identifier: Apache-2.0
#include "lines/Line.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace nearcast::lines {
namespace {

using namespace std::chrono_literals;

template <class What>
What read(std::string_view text) {
    return std::get<What>(parseLine(text, 0us).action);
}

std::string problemOf(std::string_view text) {
    try {
        parseLine(text, 0us);
        return "";
    } catch (const LineError& error) {
        return error.what();
    }
}

TEST(Line, HasTheTimeOfTheLineBeforeWhereItHasNone) {
    EXPECT_EQ(parseLine(R"({"do": "end"})", 5s).at, 5s);
    EXPECT_EQ(parseLine(R"({"do": "end", "at": null})", 5s).at, 5s);
    EXPECT_EQ(parseLine(R"({"do": "end", "at": 3})", 5s).at, 3s);
}

TEST(Line, TimeIsCountedInWholeMicroseconds) {
    const std::pair<const char*, std::chrono::microseconds> cases[] = {
        {"0", 0us},
        {"5", 5s},
        {"5.0", 5s},
        {"0.1", 100ms},
        {"0.000001", 1us},
        {"0.0000014", 1us},
        {"0.0000016", 2us},
        {"1.3", 1300ms},
        {"4.999999", 4999999us},
        {"1e-6", 1us},
        {"-0.5", -500ms},
        {"9e9", std::chrono::seconds(9'000'000'000)},
        {"86400.123456", 86400s + 123456us},
    };
    for (const auto& [text, at] : cases) {
        EXPECT_EQ(parseLine(R"({"do": "end", "at": )" + std::string(text) + "}", 0us).at, at) << text;
    }
}

TEST(Line, ReadsEachKind) {
    EXPECT_EQ(nameOf(parseLine(R"({"do": "sharedManager"})", 0us).action), "sharedManager");
    EXPECT_EQ(read<SetDelegate>(R"({"do": "setDelegate", "implements": ["a", "b"]})").implements,
              (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(read<RemoveSetting>(R"({"do": "removeSettingWithPortName", "portName": "P"})").portName, "P");
    EXPECT_NO_THROW(read<ReadSettings>(R"({"do": "settings"})"));
    EXPECT_NO_THROW(read<SerializeSettings>(R"({"do": "serializedSettings"})"));
    EXPECT_NO_THROW(read<StopScan>(R"({"do": "stopScan"})"));
    EXPECT_EQ(read<CalibrateActionArea>(R"({"do": "calibrateActionArea", "MACAddr": "A"})").MACAddr, "A");
    EXPECT_EQ(read<GetRSSI>(R"({"do": "getRSSI", "MACAddr": "A"})").MACAddr, "A");
    EXPECT_EQ(read<RadioState>(R"({"do": "radio", "state": -9223372036854775808})").state, INT64_MIN);
    EXPECT_NO_THROW(read<End>(R"({"do": "end"})"));
}

TEST(Line, ReadsARegistrationOfEitherKind) {
    const auto printer = read<AddSetting>(
        R"({"do": "addSettingForPrinterPortName", "portName": "P", "portSettings": "s", "withDrawer": true,)"
        R"( "dongleMACAddr": "A", "RSSIthreshould": -65.9, "nickName": "n"})");
    EXPECT_TRUE(printer.drawerGiven && printer.withDrawer);
    EXPECT_EQ(printer.portName, "P");
    EXPECT_EQ(printer.portSettings, "s");
    EXPECT_EQ(printer.dongleMACAddr, "A");
    EXPECT_EQ(printer.RSSIthreshould, -65.9);
    EXPECT_EQ(printer.nickName, "n");
    const auto drawer = read<AddSetting>(R"({"do": "addSettingForTFTillfoxPortName", "RSSIthreshould": -65})");
    EXPECT_FALSE(drawer.drawerGiven || drawer.withDrawer || drawer.portName || drawer.dongleMACAddr);
    EXPECT_EQ(drawer.RSSIthreshould, -65);
}

TEST(Line, AFieldThatIsNullIsAbsent) {
    EXPECT_EQ(read<SetDelegate>(R"({"do": "setDelegate", "implements": null})").implements, std::nullopt);
    EXPECT_EQ(read<StartScan>(R"({"do": "startScan", "samplingNumber": null})").samplingNumber, std::nullopt);
    EXPECT_EQ(read<SetSettings>(R"({"do": "setSettings", "settings": null})").settings, std::nullopt);
    const auto heard =
        read<Advertise>(R"({"do": "advertise", "name": null, "manufacturerData": null, "services": null, "RSSI": 1})");
    EXPECT_FALSE(heard.name || heard.manufacturerData || heard.services);
}

TEST(Line, ReadsASamplingNumberOf64Bits) {
    EXPECT_EQ(read<StartScan>(R"({"do": "startScan", "samplingNumber": 18446744073709551615})").samplingNumber,
              std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(read<StartScan>(R"({"do": "startScan", "samplingNumber": 0})").samplingNumber, 0U);
}

TEST(Line, ReadsAnAdvertisement) {
    const auto heard = read<Advertise>(
        R"({"do": "advertise", "name": "é", "manufacturerData": "FFfF00", "RSSI": -2147483648, "services": []})");
    EXPECT_EQ(heard.name, "é");
    EXPECT_EQ(heard.manufacturerData, (std::vector<std::uint8_t>{0xFF, 0xFF, 0x00}));
    EXPECT_EQ(heard.RSSI, INT32_MIN);
    EXPECT_TRUE(heard.services.has_value() && heard.services->empty());
    EXPECT_EQ(read<Advertise>(R"({"do": "advertise", "manufacturerData": "", "RSSI": 0})").manufacturerData->size(),
              0U);
}

TEST(Line, ReadsABlobAsTextOrAsOctets) {
    EXPECT_EQ(read<DeserializeSettings>(R"({"do": "deserializeSettings", "data": "{\"a\":1}"})").data, "{\"a\":1}");
    EXPECT_EQ(read<DeserializeSettings>(R"({"do": "deserializeSettings", "dataHex": "7b00FF"})").data,
              std::string("{\0\xFF", 3));
    EXPECT_EQ(read<DeserializeSettings>(R"({"do": "deserializeSettings", "dataHex": ""})").data, "");
    EXPECT_EQ(read<DeserializeSettings>(R"({"do": "deserializeSettings", "data": ""})").data, "");
}

TEST(Line, ReadsARegistry) {
    const auto settings = read<SetSettings>(R"({"do": "setSettings", "settings": {"P": {"Device Type": 2}, "Q": {}}})");
    ASSERT_EQ(settings.settings->size(), 2U);
    EXPECT_EQ(*settings.settings->at("P"), (SettingRecord{{"Device Type", 2}}));
}

struct Wrong {
    const char* text;
    const char* message;  ///< a part of it
};

const Wrong wrongLines[] = {
    {"[]", "not a JSON object"},
    {"7", "not a JSON object"},
    {"\"end\"", "not a JSON object"},
    {"null", "not a JSON object"},
    {"{}", "field \"do\" is missing"},
    {R"({"do": null})", "field \"do\" is missing"},
    {R"({"do": 7})", "field \"do\": expected a text"},
    {R"({"do": "dance"})", "unknown \"do\": \"dance\""},
    {R"({"do": "End"})", "unknown \"do\": \"End\""},
    {R"({"do": "end", "more": 1})", "unknown field \"more\""},
    {R"({"do": "end", "more": null})", "unknown field \"more\""},
    {R"({"do": "addSettingForTFTillfoxPortName", "withDrawer": true})", "unknown field \"withDrawer\""},
    {R"({"do": "end", "at": "5"})", "field \"at\": expected a number"},
    {R"({"do": "end", "at": true})", "field \"at\": expected a number"},
    {R"({"do": "end", "at": 1e10})", "field \"at\""},
    {R"({"do": "setDelegate", "implements": "x"})", "field \"implements\": expected a list of texts"},
    {R"({"do": "setDelegate", "implements": [1]})", "field \"implements\": expected a list of texts"},
    {R"({"do": "addSettingForPrinterPortName", "portName": 1})", "field \"portName\": expected a text"},
    {R"({"do": "addSettingForPrinterPortName", "withDrawer": 1})", "field \"withDrawer\": expected true or false"},
    {R"({"do": "addSettingForPrinterPortName", "RSSIthreshould": "-65"})",
     "field \"RSSIthreshould\": expected a number"},
    {R"({"do": "setSettings", "settings": []})", "field \"settings\": expected an object"},
    {R"({"do": "setSettings", "settings": {"P": 1}})", "the record of \"P\" is not an object"},
    {R"({"do": "deserializeSettings"})", "field \"data\" is missing"},
    {R"({"do": "deserializeSettings", "data": null})", "field \"data\" is missing"},
    {R"({"do": "deserializeSettings", "data": 1})", "field \"data\": expected a text"},
    {R"({"do": "deserializeSettings", "data": "", "dataHex": ""})", "exclude each other"},
    {R"({"do": "deserializeSettings", "dataHex": "7"})", "field \"dataHex\": expected hexadecimal text"},
    {R"({"do": "deserializeSettings", "dataHex": "7x"})", "field \"dataHex\": expected hexadecimal text"},
    {R"({"do": "startScan", "samplingNumber": -1})", "field \"samplingNumber\": expected an unsigned integer"},
    {R"({"do": "startScan", "samplingNumber": 1.5})", "field \"samplingNumber\": expected an unsigned integer"},
    {R"({"do": "startScan", "samplingNumber": 18446744073709551616})", "field \"samplingNumber\""},
    {R"({"do": "radio"})", "field \"state\" is missing"},
    {R"({"do": "radio", "state": "5"})", "field \"state\": expected an integer"},
    {R"({"do": "radio", "state": 9223372036854775808})", "field \"state\": expected an integer"},
    {R"({"do": "advertise"})", "field \"RSSI\" is missing"},
    {R"({"do": "advertise", "RSSI": null})", "field \"RSSI\" is missing"},
    {R"({"do": "advertise", "RSSI": -60.5})", "field \"RSSI\": expected an integer"},
    {R"({"do": "advertise", "RSSI": 2147483648})", "field \"RSSI\": expected an integer of 32 bits"},
    {R"({"do": "advertise", "RSSI": -2147483649})", "field \"RSSI\": expected an integer of 32 bits"},
    {R"({"do": "advertise", "RSSI": 1, "manufacturerData": "F"})",
     "field \"manufacturerData\": expected hexadecimal text"},
    {R"({"do": "advertise", "RSSI": 1, "services": "180F"})", "field \"services\": expected a list of texts"},
    {R"({"do": "advertise", "RSSI": 1, "services": [null]})", "field \"services\": expected a list of texts"},
};

TEST(Line, SaysWhatIsWrong) {
    for (const auto& [text, message] : wrongLines) {
        EXPECT_NE(problemOf(text).find(message), std::string::npos) << text << ": " << problemOf(text);
        EXPECT_NE(problemOf(text), "") << text;
    }
}

TEST(Line, WhatIsNotJSONIsNamedWithItsFileLineAndColumn) {
    const auto said = [](std::string_view text) {
        try {
            parseLine(text, 0us);
            return std::string();
        } catch (const LineError& error) {
            EXPECT_EQ(error.inFile("f", 12), "f: " + error.inLine(12));
            return error.inLine(12);
        }
    };
    EXPECT_EQ(said("{\"do\": \"end\""), "not JSON at line 12, column 13: it breaks off here");
    EXPECT_EQ(said("{\"do\": \"end\"} {}"), "not JSON at line 12, column 15: nothing may follow the value");
    EXPECT_EQ(said("garbage\r"), "not JSON at line 12, column 1: 'g' is not expected here");
    EXPECT_EQ(said("{\"do\": \"\xC3\xBC\", oops}"), "not JSON at line 12, column 13: 'o' is not expected here");
}

TEST(Line, WhatElseIsWrongIsNamedWithItsFileAndLine) {
    const LineError error("unknown field \"x\"");
    EXPECT_EQ(error.inLine(12), "line 12: unknown field \"x\"");
    EXPECT_EQ(error.inFile("f", 12), "f:12: unknown field \"x\"");
}

TEST(Line, AWrongLineStillSaysItsTimeWhereThatCanBeRead) {
    try {
        parseLine(R"({"do": "dance", "at": 7})", 0us);
        FAIL();
    } catch (const LineError& error) {
        EXPECT_EQ(error.at, 7s);
    }
    try {
        parseLine("garbage", 0us);
        FAIL();
    } catch (const LineError& error) {
        EXPECT_EQ(error.at, std::nullopt);
    }
}

}  // namespace
}  // namespace nearcast::lines
