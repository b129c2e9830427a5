// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/LinkLayerReports.h"

#include "unit/platform/replay/SnifferBytes.h"

#include <gtest/gtest.h>

#include <vector>

namespace nearcast::replay {

namespace {

using Auxiliary = LinkLayerPacket::Auxiliary;

struct Heard {
    std::optional<DeviceAddress> address;
    int addressType = 0;
    bool scanResponse = false;
    int RSSI = 0;
    Octets data;
    bool operator==(const Heard&) const = default;
};

struct Sniffer {
    LinkLayerReports reports;
    std::vector<Heard> heard;

    void read(const Octets& bytes, bool primary, Auxiliary auxiliary = Auxiliary::unknown, int RSSI = -60) {
        LinkLayerPacket packet;
        packet.bytes = bytes;
        packet.primaryChannel = primary;
        packet.auxiliary = auxiliary;
        packet.RSSI = RSSI;
        reports.read(packet, [this](const RawReport& report) {
            heard.push_back({report.address, report.addressType, report.scanResponse, report.RSSI,
                             Octets(report.data.begin(), report.data.end())});
        });
    }
    void primary(const ExtendedPDU& pdu) { read(pdu.octets(), true); }
    void secondary(const ExtendedPDU& pdu, Auxiliary auxiliary, int RSSI = -60) {
        read(pdu.octets(), false, auxiliary, RSSI);
    }
};

constexpr std::uint16_t set = 0x3123;

TEST(LinkLayerReports, ReportUndirectedLegacyAdvertisementsAndResponses) {
    const struct {
        int type;
        bool reported;
    } cases[] = {{ADV_IND, true},  {ADV_DIRECT_IND, false}, {ADV_NONCONN_IND, true}, {SCAN_REQ, false},
                 {SCAN_RSP, true}, {CONNECT_IND, false},    {ADV_SCAN_IND, true},    {8, false},
                 {15, false}};
    for (const auto& one : cases) {
        Sniffer sniffer;
        sniffer.read(legacyPDU(one.type, alice, hex("020106"), true), true);
        ASSERT_EQ(sniffer.heard.size(), one.reported ? 1U : 0U) << one.type;
        if (!one.reported) continue;
        EXPECT_EQ(sniffer.heard[0], (Heard{alice, 1, one.type == SCAN_RSP, -60, hex("020106")})) << one.type;
    }
}

TEST(LinkLayerReports, PassOverPacketsOfConnections) {
    Sniffer sniffer;
    sniffer.read(linkLayer(ADV_IND, airAddress(alice), false, 0x50655AB3), true);
    EXPECT_TRUE(sniffer.heard.empty());
}

TEST(LinkLayerReports, PassOverLegacyPacketsWithoutAWholeAddress) {
    Sniffer sniffer;
    sniffer.read(linkLayer(ADV_IND, hex("0102030405")), true);
    EXPECT_TRUE(sniffer.heard.empty());
    sniffer.read(linkLayer(ADV_IND, hex("010203040506")), true);
    EXPECT_EQ(sniffer.heard.size(), 1U);
}

TEST(LinkLayerReports, ReportAnExtendedAdvertisementAtItsAuxiliaryPacket) {
    Sniffer sniffer;
    sniffer.primary({.identifier = set, .auxiliaryOffset = 9});
    EXPECT_TRUE(sniffer.heard.empty());
    sniffer.secondary({.address = alice, .identifier = set, .data = hex("020106")}, Auxiliary::advertisement, -70);
    EXPECT_EQ(sniffer.heard, (std::vector<Heard>{{alice, 0, false, -70, hex("020106")}}));
}

TEST(LinkLayerReports, TakeTheAddressThatWentAhead) {
    Sniffer sniffer;
    sniffer.primary({.address = alice, .identifier = set, .auxiliaryOffset = 9});
    sniffer.secondary({.identifier = set, .data = hex("020106")}, Auxiliary::advertisement);
    sniffer.primary({.address = alice, .identifier = set, .auxiliaryOffset = 9});
    sniffer.secondary({.identifier = set + 1, .data = hex("020106")}, Auxiliary::advertisement);
    ASSERT_EQ(sniffer.heard.size(), 2U);
    EXPECT_EQ(sniffer.heard[0].address, alice);
    EXPECT_FALSE(sniffer.heard[1].address);
}

TEST(LinkLayerReports, JoinAChainAndReportItAtItsLastPacket) {
    for (const Auxiliary chain : {Auxiliary::chain, Auxiliary::unknown}) {
        Sniffer sniffer;
        sniffer.primary({.identifier = set, .auxiliaryOffset = 9});
        sniffer.secondary({.address = alice, .identifier = set, .auxiliaryOffset = 9, .data = hex("01")},
                          Auxiliary::advertisement, -60);
        sniffer.secondary({.identifier = set, .auxiliaryOffset = 9, .data = hex("02")}, chain, -61);
        EXPECT_TRUE(sniffer.heard.empty());
        sniffer.secondary({.identifier = set, .data = hex("03")}, chain, -62);
        EXPECT_EQ(sniffer.heard, (std::vector<Heard>{{alice, 0, false, -62, hex("010203")}}));
    }
}

TEST(LinkLayerReports, DropAChainWhoseBeginWasNotHeard) {
    Sniffer sniffer;
    sniffer.secondary({.identifier = set, .data = hex("03")}, Auxiliary::chain);
    sniffer.primary({.address = alice, .identifier = set, .auxiliaryOffset = 9});
    sniffer.secondary({.identifier = set, .data = hex("03")}, Auxiliary::chain);
    EXPECT_TRUE(sniffer.heard.empty());
}

TEST(LinkLayerReports, DropAnAdvertisementThatAnotherInterrupts) {
    Sniffer sniffer;
    sniffer.secondary({.address = alice, .identifier = set, .auxiliaryOffset = 9, .data = hex("01")},
                      Auxiliary::advertisement);
    sniffer.secondary({.address = bob, .identifier = 7, .data = hex("02")}, Auxiliary::advertisement);
    sniffer.secondary({.identifier = set, .data = hex("03")}, Auxiliary::chain);
    EXPECT_EQ(sniffer.heard, (std::vector<Heard>{{bob, 0, false, -60, hex("02")}}));
}

TEST(LinkLayerReports, ReportExtendedScanResponsesAsSuch) {
    Sniffer sniffer;
    sniffer.secondary({.address = alice, .identifier = set, .data = hex("020106")}, Auxiliary::scanResponse);
    EXPECT_EQ(sniffer.heard, (std::vector<Heard>{{alice, 0, true, -60, hex("020106")}}));
}

TEST(LinkLayerReports, ReportAnAdvertisementThatIsNoMoreThanAnAddress) {
    Sniffer sniffer;
    sniffer.primary({.address = alice});
    sniffer.primary({});
    sniffer.primary({.address = bob, .identifier = set, .auxiliaryOffset = 0});  // offset 0: nothing is sent there
    EXPECT_EQ(sniffer.heard, (std::vector<Heard>{{alice, 0, false, -60, {}}, {bob, 0, false, -60, {}}}));
}

TEST(LinkLayerReports, PassOverPeriodicAndDirectedAdvertisements) {
    Sniffer sniffer;
    sniffer.secondary({.address = alice, .identifier = set}, Auxiliary::periodic);
    sniffer.primary({.address = alice, .target = bob});
    sniffer.secondary({.address = alice, .target = bob, .identifier = set}, Auxiliary::advertisement);
    EXPECT_TRUE(sniffer.heard.empty());
}

TEST(LinkLayerReports, CutWhatIsLongerThanCanBeAdvertised) {
    Sniffer sniffer;
    const Octets data(200, 0);
    sniffer.secondary({.address = alice, .identifier = set, .auxiliaryOffset = 9, .data = data},
                      Auxiliary::advertisement);
    for (int i = 0; i < 20; ++i) {
        sniffer.secondary({.identifier = set, .auxiliaryOffset = 9, .data = data}, Auxiliary::chain);
    }
    sniffer.secondary({.identifier = set, .data = data}, Auxiliary::chain);
    ASSERT_EQ(sniffer.heard.size(), 1U);
    EXPECT_EQ(sniffer.heard[0].data.size(), 1650U);
}

TEST(LinkLayerReports, AreNotFooledByLyingLengths) {
    const Octets good = ExtendedPDU{.address = alice, .data = hex("020106")}.octets();
    const struct {
        std::size_t place;
        int value;
        std::size_t reports;
    } cases[] = {
        {5, 255, 0},             // longer than the packet
        {5, 0, 0},               // no room for its header
        {6, 0x3F, 0},            // an extended header longer than the PDU
        {6, 6, 0},               // an extended header that ends inside the address
        {7, 0xFF, 0},            // fields that are not there
        {6, good[6] | 0xC0, 1},  // the mode of a future version
    };
    for (const auto& one : cases) {
        Octets bytes = good;
        bytes[one.place] = static_cast<std::uint8_t>(one.value);
        Sniffer sniffer;
        sniffer.read(bytes, true);
        EXPECT_EQ(sniffer.heard.size(), one.reports) << one.place << " " << one.value;
    }
}

}  // namespace

}  // namespace nearcast::replay
