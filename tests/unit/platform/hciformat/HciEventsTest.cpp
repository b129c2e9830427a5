// SPDX-License-Identifier: Apache-2.0
#include "platform/hciformat/HciEvents.h"

#include "unit/platform/hciformat/HciBytes.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace nearcast {

namespace {

using Outcome = HciEvents::Outcome;

struct Heard {
    std::optional<DeviceAddress> address;
    int addressType = 0;
    bool scanResponse = false;
    int RSSI = 0;
    Octets data;
    bool operator==(const Heard&) const = default;
};

/// Reads events one after another with one reader.
struct Listener {
    HciEvents events;
    std::vector<Heard> heard;

    Outcome read(const Octets& event) {
        return events.read(event, [this](const RawReport& report) {
            heard.push_back({report.address, report.addressType, report.scanResponse, report.RSSI,
                             Octets(report.data.begin(), report.data.end())});
        });
    }
};

const Octets someData = hex("02 01 06");

TEST(HciEvents, ReadsALegacyReport) {
    Listener listener;
    const Octets event = hex("3E 0F 02 01 00 01 0605040302 01 03 020106 C4");
    EXPECT_EQ(listener.read(event), Outcome::whole);
    const DeviceAddress address{0x01, 0x02, 0x03, 0x04, 0x05, 0x06};
    ASSERT_EQ(listener.heard, (std::vector<Heard>{{address, 1, false, -60, someData}}));
}

TEST(HciEvents, ReadsAnExtendedReport) {
    Listener listener;
    const Octets event = hex("3E 1D 0D 01 1300 01 0605040302 01 01 00 FF 7F C4 0000 00 000000000000 03 020106");
    EXPECT_EQ(listener.read(event), Outcome::whole);
    const DeviceAddress address{0x01, 0x02, 0x03, 0x04, 0x05, 0x06};
    ASSERT_EQ(listener.heard, (std::vector<Heard>{{address, 1, false, -60, someData}}));
}

TEST(HciEvents, ReadsSeveralLegacyReportsOfOneEvent) {
    Listener listener;
    const Octets event = legacyEvent({{.address = alice, .data = someData, .RSSI = -40},
                                      {.type = 4, .address = bob, .data = {}, .RSSI = -41},
                                      {.address = alice, .data = Octets(31, 0), .RSSI = -42, .addressType = 1}});
    EXPECT_EQ(listener.read(event), Outcome::whole);
    ASSERT_EQ(listener.heard,
              (std::vector<Heard>{
                  {alice, 0, false, -40, someData}, {bob, 0, true, -41, {}}, {alice, 1, false, -42, Octets(31, 0)}}));
}

TEST(HciEvents, ReadsSeveralExtendedReportsOfOneEvent) {
    Listener listener;
    const Octets event = extendedEvent({{.type = 0x13, .address = alice, .data = someData, .RSSI = -40},
                                        {.type = 0x1B, .address = bob, .data = {}, .RSSI = -41},
                                        {.address = alice, .data = Octets(150, 0), .RSSI = -42, .addressType = 3}});
    EXPECT_EQ(listener.read(event), Outcome::whole);
    ASSERT_EQ(listener.heard,
              (std::vector<Heard>{
                  {alice, 0, false, -40, someData}, {bob, 0, true, -41, {}}, {alice, 3, false, -42, Octets(150, 0)}}));
}

TEST(HciEvents, ReadsSignalsAsSignedNumbers) {
    for (const int RSSI : {-128, -127, -1, 0, 12, 20, 126, 127}) {
        Listener listener;
        listener.read(legacyEvent({{.RSSI = RSSI}}));
        listener.read(extendedEvent({{.RSSI = RSSI}}));
        ASSERT_EQ(listener.heard.size(), 2U);
        EXPECT_EQ(listener.heard[0].RSSI, RSSI);
        EXPECT_EQ(listener.heard[1].RSSI, RSSI);
    }
}

TEST(HciEvents, KnowsNoAddressOfAnAnonymousSender) {
    Listener listener;
    listener.read(extendedEvent({{.addressType = 0xFF}}));
    ASSERT_EQ(listener.heard.size(), 1U);
    EXPECT_FALSE(listener.heard[0].address);
}

TEST(HciEvents, JoinsAnAdvertisementThatComesInPieces) {
    Listener listener;
    const ExtendedReport first{.type = 0x20, .data = hex("01 02"), .RSSI = -40, .SID = 3};
    const ExtendedReport last{.type = 0x00, .data = hex("04"), .RSSI = -42, .SID = 3};
    EXPECT_EQ(listener.read(extendedEvent({first})), Outcome::whole);
    EXPECT_TRUE(listener.heard.empty());
    listener.read(extendedEvent({{.type = 0x20, .data = hex("03"), .RSSI = -41, .SID = 3}, last}));
    ASSERT_EQ(listener.heard, (std::vector<Heard>{{alice, 0, false, -42, hex("01 02 03 04")}}));
    listener.read(extendedEvent({last}));
    EXPECT_EQ(listener.heard.back().data, hex("04"));
}

TEST(HciEvents, ReportsWhatThereIsOfATruncatedAdvertisement) {
    Listener listener;
    listener.read(extendedEvent({{.type = 0x20, .data = hex("01 02")}, {.type = 0x40, .data = hex("03")}}));
    ASSERT_EQ(listener.heard, (std::vector<Heard>{{alice, 0, false, -50, hex("01 02 03")}}));
}

TEST(HciEvents, KeepPiecesOfDifferentAdvertisementsApart) {
    const ExtendedReport others[] = {
        {.address = bob, .SID = 3}, {.addressType = 1, .SID = 3}, {.SID = 4}, {.type = 0x08, .SID = 3}};
    for (const ExtendedReport& other : others) {
        Listener listener;
        listener.read(extendedEvent({{.type = 0x20, .data = hex("01"), .SID = 3}, other}));
        ASSERT_EQ(listener.heard.size(), 1U);
        EXPECT_EQ(listener.heard[0].data, Octets{});
    }
}

TEST(HciEvents, PassOverOtherEvents) {
    Listener listener;
    const Octets report = legacyEvent({{}});
    Octets otherCode = report;
    otherCode[0] = 0x0E;
    Octets otherSubevent = report;
    otherSubevent[2] = 0x0B;
    for (const Octets& event :
         {Octets{}, hex("3E"), hex("3E 00"), otherCode, otherSubevent, hex("0E 04 01 03 0C 00")}) {
        EXPECT_EQ(listener.read(event), Outcome::other);
    }
    EXPECT_TRUE(listener.heard.empty());
}

TEST(HciEvents, CutAnywhereGiveTheReportsThatAreWhole) {
    const LegacyReport legacy{.data = someData};
    const ExtendedReport extended{.data = someData};
    const struct {
        Octets event;
        std::size_t report;  // octets of one
    } cases[] = {{legacyEvent({legacy, legacy}), legacy.octets().size()},
                 {extendedEvent({extended, extended}), extended.octets().size()}};
    for (const auto& one : cases) {
        for (std::size_t length = 0; length < one.event.size(); ++length) {
            Listener listener;
            const Octets cut(one.event.begin(), one.event.begin() + static_cast<std::ptrdiff_t>(length));
            const Outcome outcome = listener.read(cut);
            EXPECT_EQ(outcome, length < 3 ? Outcome::other : Outcome::damaged) << length;
            EXPECT_EQ(listener.heard.size(), length < 4 ? 0 : (length - 4) / one.report) << length;
        }
    }
}

struct LyingCase {
    const char* description;
    Octets event;
    std::size_t reports;
    Outcome outcome;
};

Octets changed(Octets octets, std::size_t place, int value) {
    octets[place] = static_cast<std::uint8_t>(value);
    return octets;
}

TEST(HciEvents, AreNotFooledByLyingLengths) {
    const Octets one = legacyEvent({{.data = someData}});
    const Octets two = legacyEvent({{.data = someData}, {.data = someData}});
    const Octets extended = extendedEvent({{.data = someData}});
    const LyingCase cases[] = {
        {"parameters longer than the event", changed(one, 1, 0xFF), 1, Outcome::whole},
        {"parameters end inside the report", changed(one, 1, one[1] - 1), 0, Outcome::damaged},
        {"more follows the parameters", one + hex("FF FF"), 1, Outcome::whole},
        {"more reports promised", changed(two, 3, 3), 2, Outcome::damaged},
        {"the most reports promised", changed(two, 3, 0xFF), 2, Outcome::damaged},
        {"fewer reports promised", changed(two, 3, 1), 1, Outcome::whole},
        {"no reports promised", changed(two, 3, 0), 0, Outcome::whole},
        {"data longer than the event", changed(one, 12, 31), 0, Outcome::damaged},
        {"data longer than can be", changed(two, 12, 32), 0, Outcome::damaged},
        {"data swallows the signal", changed(one, 12, 4), 0, Outcome::damaged},
        {"extended data longer than the event", changed(extended, 27, 4), 0, Outcome::damaged},
        {"extended data shorter than the event", changed(extended, 27, 2), 1, Outcome::whole},
    };
    for (const LyingCase& lie : cases) {
        Listener listener;
        EXPECT_EQ(listener.read(lie.event), lie.outcome) << lie.description;
        EXPECT_EQ(listener.heard.size(), lie.reports) << lie.description;
    }
}

TEST(HciEvents, LetPassWhatTheSinkThrows) {
    HciEvents events;
    const Octets event = legacyEvent({{}});
    EXPECT_THROW(events.read(event, [](const RawReport&) { throw std::runtime_error("enough"); }), std::runtime_error);
}

}  // namespace

}  // namespace nearcast
