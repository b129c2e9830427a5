// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/JsonLines.h"

#include "platform/replay/ReplayPlatform.h"
#include "unit/platform/replay/CaptureBytes.h"
#include "unit/platform/replay/ReplayFixture.h"

#include <gtest/gtest.h>

#include <system_error>

namespace nearcast::replay {

namespace {

struct Imported {
    ImportResult result;
    std::vector<std::string> lines;
    [[nodiscard]] Octets file() const {
        std::string text;
        for (const std::string& line : lines) text += line + "\n";
        return octetsOf(text);
    }
};

Imported import(const Octets& file, const RecordingOptions& options = {}) {
    Imported imported;
    const auto reader = openRecording(sourceOf(file), "test");
    imported.result =
        importRecording(*reader, "test", options, [&](std::string_view line) { imported.lines.emplace_back(line); });
    return imported;
}

/// Everything that a radio delivers of a recording, to a scan with or without the dongles' filter.
std::vector<Delivery> played(const Octets& file, const RecordingOptions& options, bool filter) {
    KeptLines console;
    const auto timeline = std::make_shared<Timeline>(console);
    Listener listener(*timeline);
    RadioMonitor monitor(console, [&] { return NSDate(timeline->now()); });
    ReplayRadio radio(listener, console, monitor, *timeline,
                      Recording{"test", openRecording(sourceOf(file), "test"), options});
    timeline->runUntil(std::chrono::seconds(5));
    std::optional<std::vector<CBUUID>> services;
    if (filter) services = {dongleUUID()};
    radio.scanForPeripheralsWithServices(services, {.allowDuplicates = true});
    timeline->runToLastHappening();
    return listener.deliveries;
}

/// Senders with and without names, services, dongle payloads and well-formed data.
Octets capture() {
    const Octets uuid = structure(0x07, hex("DF CA 71 99 70 9E E0 98 0C 44 43 3F 06 D9 37 4F"));
    const Octets payload = structure(0xFF, hex("FFFF 001122AABBCC"));
    const Octets packets[] = {
        legacyEvent({{.address = alice, .data = payload, .RSSI = -40}, {.address = bob, .RSSI = 127}}),
        legacyEvent({{.type = 4, .address = alice, .data = uuid + structure(0x09, octetsOf("K\xC3\xBC\xFF \"\\\n"))}}),
        legacyEvent({{.address = alice, .data = payload, .RSSI = -41}}),
        extendedEvent({{.address = bob, .data = structure(0x03, hex("0F18")) + hex("09 FF 01"), .RSSI = 12}}),
        extendedEvent(
            {{.type = 0x20, .address = bob, .data = uuid, .SID = 1}, {.address = bob, .data = payload, .SID = 1}}),
        extendedEvent({{.address = bob, .data = structure(0x09, hex("00")), .addressType = 0xFF}}),
    };
    Octets file = btsnoopHeader(1002);
    std::uint64_t at = 0;
    for (const Octets& packet : packets) file = file + btsnoopRecord(at += 123'457, H4(packet));
    return file;
}

TEST(Import, WritesAdvertisementsAsAScenarioHasThem) {
    const Octets data = structure(0x09, octetsOf("QX1")) + structure(0x03, hex("0F18"));
    const Octets file = btsnoopHeader(1002) + btsnoopRecord(0, {}) +
                        btsnoopRecord(1'500, H4(legacyEvent({{.data = data, .RSSI = -60}, {.RSSI = 127}})));
    const Imported imported = import(file);
    EXPECT_EQ(
        imported.lines,
        (std::vector<std::string>{
            R"({"at": 0.0015, "do": "advertise", "name": "QX1", "manufacturerData": null, "RSSI": -60, "services": ["180F"]})",
            R"({"at": 0.0015, "do": "advertise", "name": null, "manufacturerData": null, "RSSI": 127, "services": []})"}));
    EXPECT_EQ(imported.result.reports, 2U);
    EXPECT_EQ(imported.result.malformed, 0U);
    EXPECT_FALSE(imported.result.damage);
}

TEST(Import, LeavesOutTheServicesOfADongle) {
    const Octets file = btsnoopHeader(1002) + btsnoopRecord(0, H4(legacyEvent({{.address = alice, .RSSI = -60}})));
    EXPECT_EQ(
        import(file, {.asDongles = true}).lines,
        (std::vector<std::string>{
            R"({"at": 0.0, "do": "advertise", "name": null, "manufacturerData": "FFFFA11112131415", "RSSI": -60})"}));
}

TEST(Import, GivesTheReportsThatPlayingGivesOneByOne) {
    for (const bool anyService : {false, true}) {
        for (const bool asDongles : {false, true}) {
            const RecordingOptions options{.anyService = anyService, .asDongles = asDongles};
            const Imported imported = import(capture(), options);
            EXPECT_EQ(imported.result.reports, 7U);
            EXPECT_EQ(imported.result.malformed, 1U);
            for (const bool filter : {false, true}) {
                const auto direct = played(capture(), options, filter);
                EXPECT_EQ(played(imported.file(), {}, filter), direct);
                EXPECT_EQ(direct.size(), filter && !anyService && !asDongles ? 3U : filter && !anyService ? 6U : 7U);
            }
        }
    }
}

TEST(Import, OfWhatWasImportedChangesNothing) {
    const Imported once = import(capture(), {.asDongles = true});
    EXPECT_EQ(import(once.file()).lines, once.lines);
}

TEST(Import, KeepsStatesAndEnds) {
    const std::string lines = "{\"at\": 1.0, \"do\": \"radio\", \"state\": 4}\n{\"at\": 2.5, \"do\": \"end\"}\n";
    const Imported imported = import(octetsOf(lines));
    EXPECT_EQ(imported.file(), octetsOf(lines));
    EXPECT_EQ(imported.result.reports, 0U);
}

TEST(Import, KeepsWhatPrecedesDamageAndSaysWhereItIs) {
    const Octets whole = btsnoopHeader(1002) + btsnoopRecord(0, H4(legacyEvent({{}})));
    const Imported imported = import(whole + hex("000000"));
    EXPECT_EQ(imported.lines.size(), 1U);
    EXPECT_EQ(imported.result.damage,
              "test: damaged at byte " + std::to_string(whole.size()) + ": the file ends inside what begins here");
}

TEST(Import, NamesAFileThatCannotBeRead) {
    EXPECT_THROW(importRecording("/nowhere/to/be.found", {}, [](std::string_view) {}), std::system_error);
}

}  // namespace

}  // namespace nearcast::replay
