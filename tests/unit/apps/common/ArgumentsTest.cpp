// SPDX-License-Identifier: Apache-2.0
#include "common/Arguments.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace nearcast::cli {
namespace {

std::string problemOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const std::invalid_argument& error) {
        return error.what();
    }
    return "";
}

std::string sweepProblem(const std::string& argument) {
    return problemOf([&] { sweepOf(argument); });
}

TEST(SettingArguments, WriteTheSettingsThatTheyName) {
    const NearestSettings settings = settingsOf({"dwell=2.5", "margin=3", "dwell=0"});
    EXPECT_EQ(settings.dwell, 0);
    EXPECT_EQ(settings.margin, 3);
    EXPECT_EQ(settings.decay, NearestSettings().decay);
}

TEST(SettingArguments, NameWhatIsWrong) {
    const auto problem = [](const std::string& argument) { return problemOf([&] { settingsOf({argument}); }); };
    EXPECT_EQ(problem("dwell"), "'dwell' is not of the form KEY=VALUE");
    EXPECT_EQ(problem("dwell=fast"), "'dwell=fast': 'fast' is no number");
    EXPECT_EQ(problem("dwell=1s"), "'dwell=1s': '1s' is no number");
    EXPECT_EQ(problem("dwell=nan"), "dwell is nan, and has to be from 0 to 60 s");
    EXPECT_EQ(problem("dwell=60.1"), "dwell is 60.1, and has to be from 0 to 60 s");
    EXPECT_EQ(problem("haste=1").substr(0, 28), "there is no setting 'haste' ");
}

TEST(SettingArguments, ASweepGoesEvenlyFromOneValueToTheOther) {
    const SettingSweep sweep = sweepOf("patience=2..8:4");
    EXPECT_EQ(sweep.setting->name, "patience");
    EXPECT_EQ(sweep.values, (std::vector<double>{2, 4, 6, 8}));
    EXPECT_EQ(sweepOf("defaultThreshold=-50..-60:2").values, (std::vector<double>{-50, -60}));
    EXPECT_EQ(sweepOf("patience=0..10").values.size(), 11U);
}

TEST(SettingArguments, ASweepEndsAtItsEndExactly) {
    for (int steps = 2; steps < 100; ++steps) {
        EXPECT_EQ(sweepOf("decay=0.1..60:" + std::to_string(steps)).values.back(), 60);
    }
}

TEST(SettingArguments, ASweepHasTwoToAThousandSteps) {
    EXPECT_EQ(sweepProblem("dwell=0..1:2"), "");
    EXPECT_EQ(sweepProblem("dwell=0..1:1"), "'dwell=0..1:1': 2 to 1000 steps");
    EXPECT_EQ(sweepProblem("dwell=0..1:1000"), "");
    EXPECT_EQ(sweepProblem("dwell=0..1:1001"), "'dwell=0..1:1001': 2 to 1000 steps");
}

TEST(SettingArguments, ASweepOfAnotherFormIsRefused) {
    for (const char* argument :
         {"dwell", "dwell=1", "dwell=1..", "dwell=..1", "dwell=1..2:", "dwell=1..2:-3", "dwell=a..b"}) {
        EXPECT_NE(sweepProblem(argument).find("is not of the form KEY=FROM..TO"), std::string::npos) << argument;
    }
    EXPECT_EQ(sweepProblem("dwell=0..61"), "dwell is 61, and has to be from 0 to 60 s");
    EXPECT_EQ(sweepProblem("dwell=-1..2"), "dwell is -1, and has to be from 0 to 60 s");
}

TEST(SecondsArgument, IsANumberUpToAThousandMillions) {
    for (const char* text : {"0", "2.5", "1e3", "1000000000"}) EXPECT_EQ(problemWithSeconds(text), "") << text;
}

TEST(SecondsArgument, IsRefusedInWordsWhereItIsAnythingElse) {
    for (const char* text : {"soon", "1 ", "-1", "-1s", "nan", "inf", "1000000001", "5x", "1000000001s", "1e308h"}) {
        EXPECT_EQ(problemWithSeconds(text), "'" + std::string(text) + "' is no number of seconds from 0 to 1000000000");
    }
}

TEST(SecondsArgument, WithAUnitIsShownWithoutIt) {
    const struct {
        const char* given;
        const char* meant;
    } cases[] = {{"5s", "5"},    {"1.5m", "90"},   {"2min", "120"},
                 {"1h", "3600"}, {"500ms", "0.5"}, {"100000min", "6000000"}};
    for (const auto& one : cases) {
        EXPECT_EQ(problemWithSeconds(one.given), "'" + std::string(one.given) +
                                                     "' is no number of seconds from 0 to 1000000000; a time has no "
                                                     "unit: " +
                                                     one.meant);
    }
}

TEST(SecondsArgument, ThatIsEmptyIsSaidToBeSo) { EXPECT_EQ(problemWithSeconds(""), "is empty"); }

TEST(EmptyArgument, IsAProblemAndAnyOtherIsNone) {
    EXPECT_EQ(problemWithEmpty(""), "is empty");
    EXPECT_EQ(problemWithEmpty(" "), "");
}

}  // namespace
}  // namespace nearcast::cli
