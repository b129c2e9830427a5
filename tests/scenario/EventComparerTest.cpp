// SPDX-License-Identifier: Apache-2.0
#include "scenario/EventComparer.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace nearcast::scenario {
namespace {

Event trace(int type, const std::string& method, const Event& text) {
    return {{"at", 0.0},
            {"event", "trace"},
            {"type", type},
            {"method", "-[QXNearcastManager " + method + "]"},
            {"text", text}};
}
Event lock(const std::string& name, bool held) {
    return {{"at", 0.0}, {"event", "lock"}, {"name", "_lock" + name + "Flag"}, {"held", held}};
}
Event silence(const std::string& port, const std::string& address) {
    return {{"at", 5.0}, {"event", "didUpdateState"}, {"portName", port}, {"MACAddr", address}};
}
Event returned(const std::string& of, const Event& value) {
    return {{"at", 0.0}, {"event", "return"}, {"of", of}, {"value", value}};
}
Event raise(const Event& name, const Event& reason) {
    return {{"at", 0.0}, {"event", "raise"}, {"of", "deserializeSettings"}, {"name", name}, {"reason", reason}};
}
bool agree(const Events& actual, const Events& expected) { return !difference(actual, expected); }

const std::string add = "addSettingForPrinterPortName:";

TEST(EventComparer, AcceptsEventsThatAreEqual) {
    EXPECT_TRUE(
        agree({returned("getRSSI", -60), lock("RssiData", true)}, {returned("getRSSI", -60), lock("RssiData", true)}));
    EXPECT_TRUE(agree({}, {}));
}

TEST(EventComparer, RejectsEveryOtherValueInEveryMember) {
    const Event right{{"at", 1.5}, {"event", "didDiscoverPort"}, {"portName", "A"}, {"deviceType", 1}, {"RSSI", -60}};
    const std::pair<const char*, Event> wrong[] = {{"at", 1.500001},  {"at", "1.5"},     {"event", "didUpdateState"},
                                                   {"portName", "B"}, {"deviceType", 3}, {"RSSI", -61},
                                                   {"RSSI", -60.0},   {"RSSI", "-60"},   {"more", nullptr}};
    for (const auto& [member, value] : wrong) {
        Event other = right;
        other[member] = value;
        EXPECT_FALSE(agree({other}, {right})) << member << " " << value;
    }
    for (const char* member : {"at", "event", "portName", "RSSI"}) {
        Event other = right;
        other.erase(member);
        EXPECT_FALSE(agree({other}, {right})) << member;
    }
}

TEST(EventComparer, RejectsAMissingASurplusAndAnExchangedEvent) {
    const Event one = returned("startScan", true);
    const Event two = returned("startScan", false);
    EXPECT_FALSE(agree({one}, {one, two}));
    EXPECT_FALSE(agree({one, two}, {one}));
    EXPECT_FALSE(agree({two, one}, {one, two}));
}

TEST(EventComparer, NamesThePlaceAndBothEvents) {
    const auto text = difference({returned("a", 1), returned("b", 1)}, {returned("a", 1), returned("c", 1)});
    ASSERT_TRUE(text);
    EXPECT_NE(text->find("event 1"), std::string::npos);
    EXPECT_NE(text->find("\"b\""), std::string::npos);
    EXPECT_NE(text->find("\"c\""), std::string::npos);
    EXPECT_NE(difference({}, {returned("c", 1)})->find("nothing more"), std::string::npos);
}

TEST(EventComparer, TakesAnyPointerWhereOneIsExpected) {
    const std::pair<const char*, bool> texts[] = {
        {"-> 0x0", true},   {"-> 0x7ffe12ab", true}, {"-> <ptr>", true}, {"-> 0x", false},     {"-> 0x12ab!", false},
        {"-> 12ab", false}, {"-> ", false},          {"0x12ab", false},  {"-> 0x12AB", false}, {"-> (null)", false},
    };
    for (const auto& [text, good] : texts) {
        EXPECT_EQ(agree({trace(3, "init", text)}, {trace(3, "init", "-> <ptr>")}), good) << text;
    }
    EXPECT_TRUE(agree({trace(2, "x", "0x1, 0x2, -60")}, {trace(2, "x", "<ptr>, <ptr>, -60")}));
    EXPECT_FALSE(agree({trace(2, "x", "0x1, 0x2, -61")}, {trace(2, "x", "<ptr>, <ptr>, -60")}));
    EXPECT_FALSE(agree({trace(2, "x", "0x1")}, {trace(2, "x", "0x2")}));
}

TEST(EventComparer, LeavesATextOfNullFreeButNotItsTypeAndMethod) {
    EXPECT_TRUE(agree({trace(2, "isValidateMACAddr:", "anything")}, {trace(2, "isValidateMACAddr:", nullptr)}));
    EXPECT_FALSE(agree({trace(2, "isValidateMACAddr:", nullptr)}, {trace(2, "isValidateMACAddr:", nullptr)}));
    EXPECT_FALSE(agree({trace(3, "isValidateMACAddr:", "x")}, {trace(2, "isValidateMACAddr:", nullptr)}));
    EXPECT_FALSE(agree({trace(2, "isValidate:", "x")}, {trace(2, "isValidateMACAddr:", nullptr)}));
}

TEST(EventComparer, LeavesTheNameOfAnotherErrorFreeSaveThatOfARefusal) {
    EXPECT_TRUE(agree({raise("std::invalid_argument", "no")}, {raise(nullptr, nullptr)}));
    EXPECT_FALSE(agree({raise("PortException", "no")}, {raise(nullptr, nullptr)}));
    EXPECT_FALSE(agree({raise("std::invalid_argument", "no")}, {raise("PortException", "no")}));
    EXPECT_FALSE(agree({raise("PortException", "yes")}, {raise("PortException", "no")}));
    EXPECT_FALSE(agree({raise(nullptr, nullptr)}, {raise(nullptr, nullptr)}));
}

TEST(EventComparer, TakesATimeWithOrWithoutAPoint) {
    Event whole = returned("startScan", true);
    whole["at"] = 5;
    Event point = returned("startScan", true);
    point["at"] = 5.0;
    EXPECT_TRUE(agree({whole}, {point}));
    EXPECT_TRUE(agree({point}, {whole}));
}

Events sweep(Events reports) {
    reports.insert(reports.begin(), {trace(2, "eventRepeatTimer", ""), lock("RssiData", true)});
    reports.insert(reports.end(), {lock("RssiData", false), trace(3, "eventRepeatTimer", "")});
    return reports;
}

TEST(EventComparer, TakesTheReportsOfOneSweepInAnyOrder) {
    const Event a = silence("A", "00:11");
    const Event b = silence("", "00:22");
    EXPECT_TRUE(agree(sweep({a, b}), sweep({b, a})));
    EXPECT_FALSE(agree(sweep({a, a}), sweep({b, a})));
    EXPECT_FALSE(agree(sweep({a}), sweep({b, a})));
}

TEST(EventComparer, KeepsTheLookUpsOfAReportBesideIt) {
    const Event a = silence("A", "00:11");
    const Event b = silence("", "00:22");
    const Event look = trace(2, "getPortNameFromMACAddr:", "x");
    EXPECT_TRUE(agree(sweep({look, look, a, look, b}), sweep({look, b, look, look, a})));
    EXPECT_FALSE(agree(sweep({look, a, look, look, b}), sweep({look, b, look, look, a})));
}

TEST(EventComparer, KeepsTheOrderOfReportsOutsideASweepAndOfTwoSweeps) {
    const Event a = silence("A", "00:11");
    const Event b = silence("", "00:22");
    EXPECT_FALSE(agree({a, b}, {b, a}));
    Events first = sweep({a});
    const Events second = sweep({b});
    Events exchanged = second;
    exchanged.insert(exchanged.end(), first.begin(), first.end());
    first.insert(first.end(), second.begin(), second.end());
    EXPECT_FALSE(agree(first, exchanged));
}

TEST(EventComparer, TakesARegistrationWithOrWithoutTheLockOfItsLookAtTheKeys) {
    const Event start = trace(0, add, "A");
    const Event address = trace(2, "isValidateMACAddr:", "x");
    const Event held = trace(7, add, "[mutableSettings.allKeys containsObject:portName], 0x1, A");
    const Events pair{lock("MutableSettings", true), lock("MutableSettings", false)};
    EXPECT_TRUE(agree({start, pair[0], pair[1], address}, {start, address}));
    EXPECT_TRUE(agree({start, address}, {start, pair[0], pair[1], address}));
    EXPECT_TRUE(agree({start, pair[0], pair[1], held}, {start, held}));
}

TEST(EventComparer, RejectsTheRegistryLockElsewhereInARegistration) {
    const Event start = trace(0, add, "A");
    const Event address = trace(2, "isValidateMACAddr:", "x");
    const Event missing = trace(7, add, "(portName == nil) || (MACAddr == nil), 0x0, 0x0");
    const Events pair{lock("MutableSettings", true), lock("MutableSettings", false)};
    EXPECT_FALSE(agree({start, address, pair[0], pair[1]}, {start, address}));
    EXPECT_FALSE(agree({start, pair[0], pair[1], missing}, {start, missing}));
    EXPECT_FALSE(agree({start, pair[0], address}, {start, address}));
    EXPECT_FALSE(agree({start, lock("RssiData", true), lock("RssiData", false), address}, {start, address}));
}

TEST(EventComparer, TakesAnExitRecordBeforeOrAfterTheReleaseBesideIt) {
    const Event exit = trace(1, "getRSSI:", "-> 1");
    const Event release = lock("RssiData", false);
    EXPECT_TRUE(agree({exit, release}, {release, exit}));
    EXPECT_TRUE(agree({release, exit}, {exit, release}));
    EXPECT_FALSE(agree({trace(6, "getRSSI:", "x"), release}, {release, trace(6, "getRSSI:", "x")}));
    EXPECT_FALSE(agree({exit, lock("RssiData", true)}, {lock("RssiData", true), exit}));
    EXPECT_FALSE(agree({exit, returned("x", 1), release}, {release, returned("x", 1), exit}));
}

TEST(EventComparer, ReadsASavedRegistryAsJSONThatIsIndented) {
    const Event value{{"A", {{"n", 1}}}};
    EXPECT_TRUE(agree({returned("serializedSettings", value.dump(4))}, {returned("serializedSettings", value)}));
    EXPECT_TRUE(agree({returned("serializedSettings", value.dump(2))}, {returned("serializedSettings", value.dump())}));
    EXPECT_TRUE(agree({returned("serializedSettings", "{}")}, {returned("serializedSettings", Event::object())}));
    EXPECT_TRUE(agree({returned("serializedSettings", nullptr)}, {returned("serializedSettings", nullptr)}));
    EXPECT_FALSE(agree({returned("serializedSettings", value.dump())}, {returned("serializedSettings", value)}));
    EXPECT_FALSE(agree({returned("serializedSettings", value)}, {returned("serializedSettings", value)}));
    EXPECT_FALSE(agree({returned("serializedSettings", "{\n ")}, {returned("serializedSettings", value)}));
    const Event other{{"A", {{"n", 1.0}}}};
    EXPECT_FALSE(agree({returned("serializedSettings", other.dump(4))}, {returned("serializedSettings", value)}));
}

TEST(EventComparer, TakesTheMembersOfAnObjectInAnyOrder) {
    EXPECT_TRUE(agree(readEvents("{\"at\":0,\"event\":\"return\",\"of\":\"settings\",\"value\":{\"a\":1,\"b\":2}}\n"),
                      readEvents("{\"value\":{\"b\":2,\"a\":1},\"of\":\"settings\",\"event\":\"return\",\"at\":0}")));
}

TEST(EventComparer, ThrowsWhereALineIsNoJSON) { EXPECT_ANY_THROW(readEvents("{\"at\": 0}\n{\"at\"")); }

}  // namespace
}  // namespace nearcast::scenario
