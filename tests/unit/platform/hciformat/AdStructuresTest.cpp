// SPDX-License-Identifier: Apache-2.0
#include "platform/hciformat/AdStructures.h"

#include "unit/platform/hciformat/HciBytes.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace nearcast {

namespace {

struct Read {
    AdvertisingReport report;
    std::optional<std::size_t> malformedAt;
};

Read read(const Octets& data) {
    Read result;
    result.malformedAt = readAdStructures(data, result.report);
    return result;
}

std::vector<std::string> servicesOf(const Read& result) {
    std::vector<std::string> texts;
    for (const CBUUID& service : result.report.services) texts.push_back(service.UUIDString());
    return texts;
}

using Texts = std::vector<std::string>;

TEST(AdStructures, ReadsTheServiceAndThePayloadOfADongle) {
    const Read result =
        read(hex("02 01 06"
                 "11 07 DF CA 71 99 70 9E E0 98 0C 44 43 3F 06 D9 37 4F"
                 "09 FF FF FF 00 11 22 AA BB CC"));
    EXPECT_FALSE(result.malformedAt);
    EXPECT_EQ(servicesOf(result), Texts{"4F37D906-3F43-440C-98E0-9E709971CADF"});
    EXPECT_EQ(result.report.manufacturerData, hex("FF FF 00 11 22 AA BB CC"));
    EXPECT_FALSE(result.report.name);
}

TEST(AdStructures, OfNothingIsWellFormedAndEmpty) {
    const Read result = read({});
    EXPECT_FALSE(result.malformedAt);
    EXPECT_FALSE(result.report.name);
    EXPECT_FALSE(result.report.manufacturerData);
    EXPECT_TRUE(result.report.services.empty());
}

TEST(AdStructures, ReadsServiceListsOfAllSizes) {
    const Read result =
        read(structure(0x02, hex("0F18")) + structure(0x03, hex("0A18 0D18")) + structure(0x04, hex("78563412")) +
             structure(0x05, hex("F2F1E0D0")) + structure(0x06, hex("000102030405060708090A0B0C0D0E0F")));
    EXPECT_FALSE(result.malformedAt);
    EXPECT_EQ(servicesOf(result),
              (Texts{"180F", "180A", "180D", "12345678", "D0E0F1F2", "0F0E0D0C-0B0A-0908-0706-050403020100"}));
}

TEST(AdStructures, PassOverWhatIsNotAskedFor) {
    const Octets serviceData = structure(0x16, hex("0F18 64"));
    const Octets solicitation = structure(0x15, Octets(16, 7));
    const Read result = read(structure(0x0A, hex("04")) + serviceData + solicitation + structure(0x24, {}));
    EXPECT_FALSE(result.malformedAt);
    EXPECT_TRUE(result.report.services.empty());
    EXPECT_FALSE(result.report.manufacturerData);
}

struct NameCase {
    const char* description;
    Octets data;
    std::optional<std::string> name;
};

TEST(AdStructures, PickTheBestName) {
    const Octets shortened = structure(0x08, octetsOf("QX00"));
    const Octets complete = structure(0x09, octetsOf("QX001122AABBCC"));
    const Octets other = structure(0x09, octetsOf("other"));
    const NameCase cases[] = {
        {"complete", complete, "QX001122AABBCC"},
        {"shortened", shortened, "QX00"},
        {"complete after shortened", shortened + complete, "QX001122AABBCC"},
        {"shortened after complete", complete + shortened, "QX001122AABBCC"},
        {"two complete", complete + other, "QX001122AABBCC"},
        {"two shortened", shortened + structure(0x08, octetsOf("AB")), "QX00"},
        {"empty", structure(0x09, {}), std::nullopt},
        {"shortened after an empty complete one", structure(0x09, {}) + shortened, "QX00"},
        {"a zero in it", structure(0x09, hex("41 00 42")), std::string("A\0B", 3)},
        {"zeros behind it", structure(0x09, hex("41 42 00 00")), "AB"},
        {"zeros alone", structure(0x09, hex("00 00")), std::nullopt},
        {"shortened after zeros alone", structure(0x09, hex("00")) + shortened, "QX00"},
        {"octets that are not UTF-8", structure(0x09, hex("41 FF 42")), "A\xEF\xBF\xBD\x42"},
    };
    for (const NameCase& one : cases) EXPECT_EQ(read(one.data).report.name, one.name) << one.description;
}

struct ManufacturerCase {
    const char* description;
    std::vector<const char*> onTheAir;
    const char* kept;
};

TEST(AdStructures, PickTheManufacturerDataThatCount) {
    const ManufacturerCase cases[] = {
        {"the dongle's first", {"FFFF 010203040506", "4C00 10"}, "FFFF 010203040506"},
        {"the dongle's second", {"4C00 10", "FFFF 010203040506"}, "FFFF 010203040506"},
        {"the dongle's twice", {"FFFF 010203040506", "FFFF 060504030201"}, "FFFF 060504030201"},
        {"the last of the dongle's is short", {"FFFF 010203040506", "FFFF 06"}, "FFFF 06"},
        {"the dongle's between others", {"4C00 10", "FFFF 01", "4C00 11"}, "FFFF 01"},
        {"two others", {"4C00 10", "0600 20"}, "4C00 10"},
        {"one other twice", {"4C00 10", "4C00 11"}, "4C00 11"},
        {"one other twice and another between", {"4C00 10", "0600 20", "4C00 11"}, "4C00 11"},
        {"half of the dongle's company is not it", {"4C00 10", "FF00 20", "00FF 30"}, "4C00 10"},
    };
    for (const ManufacturerCase& one : cases) {
        Octets data;
        for (const char* const value : one.onTheAir) data = data + structure(0xFF, hex(value));
        EXPECT_EQ(read(data).report.manufacturerData, hex(one.kept)) << one.description;
    }
}

TEST(AdStructures, NameAServiceByItsShortestTextWhateverItsLengthOnTheAir) {
    EXPECT_EQ(servicesOf(read(structure(0x07, hex("FB349B5F8000 0080 0010 0000 0F180000")))), Texts{"180F"});
    EXPECT_EQ(servicesOf(read(structure(0x07, hex("FB349B5F8000 0080 0010 0000 78563412")))), Texts{"12345678"});
}

TEST(AdStructures, EndEarlyAtALengthOfZero) {
    const Octets name = structure(0x09, octetsOf("A"));
    for (const Octets& rest : {hex("00"), hex("00 00 00 00"), hex("00 05 09 41 42"), hex("00 FF")}) {
        const Read result = read(name + rest);
        EXPECT_FALSE(result.malformedAt);
        EXPECT_EQ(result.report.name, "A");
    }
    EXPECT_FALSE(read(hex("00")).malformedAt);
}

struct MalformedCase {
    const char* description;
    Octets tail;
};

TEST(AdStructures, CountWhatPrecedesAMalformedStructureAndNothingAfterIt) {
    const Octets lost = structure(0x09, octetsOf("lost"));
    const MalformedCase cases[] = {
        {"one octet too long", hex("03 09 41")},
        {"a length alone", hex("05")},
        {"the greatest length", hex("FF 09 41 42 43") + lost},
        {"half a 16-bit UUID", structure(0x03, hex("0F18 0A")) + lost},
        {"three quarters of a 32-bit UUID", structure(0x05, hex("010203")) + lost},
        {"a 128-bit UUID and one octet", structure(0x07, Octets(17, 1)) + lost},
        {"no company", structure(0xFF, {}) + lost},
        {"half a company", structure(0xFF, hex("4C")) + lost},
    };
    const Octets head = structure(0x01, hex("06")) + structure(0x03, hex("0F18"));
    for (const MalformedCase& one : cases) {
        const Read result = read(head + one.tail);
        EXPECT_EQ(result.malformedAt, head.size()) << one.description;
        EXPECT_EQ(servicesOf(result), Texts{"180F"}) << one.description;
        EXPECT_FALSE(result.report.name) << one.description;
        EXPECT_FALSE(result.report.manufacturerData) << one.description;
    }
}

TEST(AdStructures, MayFillTheDataToItsLastOctet) {
    EXPECT_FALSE(read(hex("02 09 41")).malformedAt);
    EXPECT_TRUE(read(hex("03 09 41")).malformedAt);
    EXPECT_EQ(read(hex("02 09 41")).report.name, "A");
}

TEST(AdStructures, CutAnywhereNeverReadTooFar) {
    const Octets whole = structure(0x01, hex("06")) + structure(0x09, octetsOf("QX001122AABBCC")) +
                         structure(0xFF, hex("FFFF 001122AABBCC"));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const Octets cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const bool betweenStructures = length == 0 || length == 3 || length == 19;
        EXPECT_EQ(read(cut).malformedAt.has_value(), !betweenStructures) << length;
    }
}

TEST(RawReport, IsReadWithItsSenderItsSignalAndItsData) {
    const Octets data = hex("05 09 51 58 30 31  1F FF");
    AdvertisingReport report;
    const auto malformedAt =
        readReport({.address = bob, .addressType = 1, .scanResponse = true, .RSSI = -61, .data = data}, report);
    EXPECT_EQ(malformedAt, 6U);
    EXPECT_EQ(report.address, bob);
    EXPECT_EQ(report.addressType, 1);
    EXPECT_TRUE(report.scanResponse);
    EXPECT_EQ(report.RSSI, -61);
    EXPECT_EQ(report.name, "QX01");
}

}  // namespace

}  // namespace nearcast
