// SPDX-License-Identifier: Apache-2.0
#include "lab/controller/Air.h"

#include <gtest/gtest.h>

namespace nearcast::lab {

namespace {

using std::chrono::seconds;

constexpr Scan passive{.enabled = true, .enables = 1};
constexpr Scan active{.enabled = true, .active = true, .enables = 1};
constexpr Scan filtered{.enabled = true, .filterDuplicates = true, .enables = 1};
constexpr Scan none{};

class AirTest : public testing::Test {
protected:
    void pass(Time until, const Scan& scan) {
        air.advance(until, scan, [this](const Bytes& event) { events.push_back(event); });
    }
    static Dongle dongle(double rate) {
        Dongle made;
        made.rate = rate;
        return made;
    }

    Air air;
    std::vector<Bytes> events;
};

TEST_F(AirTest, KeepsTheRateOverTime) {
    air.put("a", dongle(10), Time(0));
    pass(seconds(60), passive);
    EXPECT_NEAR(static_cast<double>(events.size()), 600, 1);
    EXPECT_EQ(air.tallies().at("a").aired, events.size());
    EXPECT_EQ(air.tallies().at("a").reported, events.size());
}

TEST_F(AirTest, PutsOnTheAirWhatNobodyHears) {
    air.put("a", dongle(10), Time(0));
    pass(seconds(10), none);
    EXPECT_TRUE(events.empty());
    EXPECT_NEAR(static_cast<double>(air.tallies().at("a").aired), 100, 1);
    EXPECT_EQ(air.tallies().at("a").reported, 0U);
}

TEST_F(AirTest, SaysWhenSomethingIsToBeDone) {
    EXPECT_FALSE(air.next());
    air.put("a", dongle(1), Time(0));
    ASSERT_TRUE(air.next());
    pass(*air.next() - Time(1), passive);
    EXPECT_TRUE(events.empty());
    pass(*air.next(), passive);
    EXPECT_EQ(events.size(), 1U);
}

TEST_F(AirTest, IsQuietAboutASilentDongle) {
    air.put("a", dongle(10), Time(0));
    EXPECT_TRUE(air.silence("a", true));
    pass(seconds(1), passive);
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(air.tallies().at("a").aired, 0U);
    EXPECT_TRUE(air.silence("a", false));
    pass(seconds(2), passive);
    EXPECT_FALSE(events.empty());
    EXPECT_FALSE(air.silence("b", true));
}

TEST_F(AirTest, SilencesAllAtOnce) {
    air.put("a", dongle(10), Time(0));
    air.put("b", dongle(10), Time(0));
    EXPECT_TRUE(air.silence("*", true));
    pass(seconds(1), passive);
    EXPECT_TRUE(events.empty());
}

TEST_F(AirTest, HearsNothingWhileDeaf) {
    air.put("a", dongle(10), Time(0));
    air.setDeaf(true);
    pass(seconds(1), passive);
    EXPECT_TRUE(events.empty());
    EXPECT_GT(air.tallies().at("a").aired, 0U);
}

TEST_F(AirTest, GoesRoundTheRowOfSignals) {
    Dongle made = dongle(10);
    made.rssi = {-50, -60, -70};
    air.put("a", made, Time(0));
    pass(seconds(1), passive);
    ASSERT_GE(events.size(), 4U);
    EXPECT_EQ(static_cast<std::int8_t>(events[0].back()), -50);
    EXPECT_EQ(static_cast<std::int8_t>(events[2].back()), -70);
    EXPECT_EQ(static_cast<std::int8_t>(events[3].back()), -50);
}

TEST_F(AirTest, GivesAStrictFilterOneReportForEachEnabling) {
    air.setStrict(true);
    air.put("a", dongle(10), Time(0));
    pass(seconds(5), filtered);
    EXPECT_EQ(events.size(), 1U);
    Scan again = filtered;
    again.enables = 2;
    pass(seconds(10), again);
    EXPECT_EQ(events.size(), 2U);
}

TEST_F(AirTest, TellsAPublicFromARandomAddressInAStrictFilter) {
    air.setStrict(true);
    air.put("public", dongle(10), Time(0));
    Dongle random = dongle(10);
    random.random = true;
    air.put("random", random, Time(0));
    pass(seconds(1), filtered);
    EXPECT_EQ(events.size(), 2U);
}

TEST_F(AirTest, ShowsExtendedAdvertisingToExtendedScannersAlone) {
    Dongle extended = dongle(10);
    extended.extended = true;
    extended.data = Bytes(300, 0);
    air.put("a", extended, Time(0));
    pass(seconds(1), passive);
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(air.tallies().at("a").reported, 0U);
    Scan scan = passive;
    scan.extended = true;
    pass(seconds(2), scan);
    EXPECT_EQ(events.size(), 2 * air.tallies().at("a").reported) << "each in two pieces";
    EXPECT_GE(events.size(), 18U);
}

TEST_F(AirTest, GivesAStrictFilterEverythingWhereTheHostWantsIt) {
    air.setStrict(true);
    air.put("a", dongle(10), Time(0));
    pass(seconds(5), passive);
    EXPECT_NEAR(static_cast<double>(events.size()), 50, 1);
}

TEST_F(AirTest, DoesNotFilterUnlessStrict) {
    air.put("a", dongle(10), Time(0));
    pass(seconds(5), filtered);
    EXPECT_NEAR(static_cast<double>(events.size()), 50, 1);
}

TEST_F(AirTest, AnswersAnActiveScanOnly) {
    Dongle made = dongle(10);
    made.advertising = Advertising::connectable;
    made.answersScans = true;
    air.put("a", made, Time(0));
    pass(seconds(1), passive);
    EXPECT_EQ(events.size(), air.tallies().at("a").reported);
    events.clear();
    pass(seconds(2), active);
    EXPECT_NEAR(static_cast<double>(events.size()), 20, 2);
}

TEST_F(AirTest, DoesNotAnswerForADongleThatIsNotScannable) {
    Dongle made = dongle(10);
    made.answersScans = true;
    air.put("a", made, Time(0));
    pass(seconds(1), active);
    EXPECT_EQ(events.size(), air.tallies().at("a").reported);
}

}  // namespace

}  // namespace nearcast::lab
