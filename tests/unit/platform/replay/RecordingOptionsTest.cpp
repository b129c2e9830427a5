// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/RecordingReader.h"

#include "unit/platform/hciformat/HciBytes.h"
#include "unit/platform/replay/ReplayFixture.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace nearcast::replay {

namespace {

const CBUUID battery = CBUUID::UUIDWithShort(0x180F);

RecordingOptions parse(std::string_view text) { return RecordingOptions::parse(RadioString::parse(text)); }

RecordedReport foreign() {
    RecordedReport report;
    report.report.address = alice;
    report.report.name = "foreign";
    report.report.manufacturerData = hex("4C00 01");
    report.report.services = {battery};
    report.report.RSSI = -60;
    return report;
}

RecordedReport applied(const RecordingOptions& options, RecordedReport report = foreign()) {
    options.apply(report);
    return report;
}

TEST(RecordingOptions, AreReadFromARadioString) {
    EXPECT_FALSE(parse("replay:f").anyService);
    EXPECT_FALSE(parse("replay:f?speed=2").asDongles);
    EXPECT_TRUE(parse("replay:f?services=any").anyService);
    EXPECT_FALSE(parse("replay:f?services=any").asDongles);
    EXPECT_TRUE(parse("replay:f?as=dongles&speed=max").asDongles);
    EXPECT_TRUE(parse("replay:f?as=dongles&services=any").anyService);
}

TEST(RecordingOptions, RefuseOtherValues) {
    for (const char* text : {"replay:f?services=all", "replay:f?services=", "replay:f?services", "replay:f?as=dongle",
                             "replay:f?as=Dongles"}) {
        EXPECT_THROW(parse(text), std::invalid_argument) << text;
    }
    try {
        parse("replay:f?as=cats");
        ADD_FAILURE();
    } catch (const std::invalid_argument& error) {
        EXPECT_STREQ(error.what(), "radio 'replay:f?as=cats': option 'as' can be 'dongles' only, not 'cats'");
    }
}

TEST(RecordingOptions, ChangeNothingWhenNoneIsGiven) {
    const RecordedReport report = applied({});
    EXPECT_EQ(report.report.services, std::vector{battery});
    EXPECT_EQ(report.report.manufacturerData, hex("4C00 01"));
}

TEST(RecordingOptions, AddTheDongleServiceOnce) {
    const RecordedReport once = applied({.anyService = true});
    EXPECT_EQ(once.report.services, (std::vector{battery, dongleUUID()}));
    EXPECT_EQ(applied({.anyService = true, .asDongles = true}, once).report.services, once.report.services);
    EXPECT_EQ(once.report.manufacturerData, hex("4C00 01"));
}

TEST(RecordingOptions, MakeADongleOfASender) {
    const RecordedReport report = applied({.asDongles = true});
    EXPECT_EQ(report.report.manufacturerData, hex("FFFF A11112131415"));
    EXPECT_EQ(report.report.services, (std::vector{battery, dongleUUID()}));
    EXPECT_EQ(report.report.name, "foreign");
    EXPECT_EQ(report.report.RSSI, -60);
}

TEST(RecordingOptions, MakeADongleOfASenderWithoutAPayload) {
    RecordedReport bare = foreign();
    bare.report.manufacturerData.reset();
    bare.report.services.clear();
    EXPECT_EQ(applied({.asDongles = true}, bare).report.manufacturerData, hex("FFFF A11112131415"));
}

TEST(RecordingOptions, LeaveAReportWithoutASenderAsItIs) {
    RecordedReport nobody = foreign();
    nobody.report.address.reset();
    const RecordedReport report = applied({.asDongles = true}, nobody);
    EXPECT_EQ(report.report.manufacturerData, hex("4C00 01"));
    EXPECT_EQ(report.report.services, std::vector{battery});
}

}  // namespace

}  // namespace nearcast::replay
