// SPDX-License-Identifier: Apache-2.0
#include "lab/Rule.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace nearcast::lab {
namespace {

Settings registryOf(std::initializer_list<std::string> addresses) {
    Settings registry;
    for (const std::string& address : addresses) {
        registry.emplace(address, std::make_shared<const SettingRecord>(SettingRecord{{"MAC Address", address}}));
    }
    return registry;
}

TEST(RuleList, EveryRuleHasANameOfItsOwnAndADescription) {
    std::set<std::string_view> names;
    for (const NamedRule& rule : rules()) {
        EXPECT_TRUE(names.insert(rule.name).second) << rule.name;
        EXPECT_FALSE(rule.description.empty()) << rule.name;
        EXPECT_EQ(findRule(rule.name), &rule);
    }
    EXPECT_EQ(names.size(), 9U);
    EXPECT_EQ(rules().back().name, nearestRuleName);
}

TEST(RuleList, AnUnknownNameIsFoundNowhere) {
    EXPECT_EQ(findRule(""), nullptr);
    EXPECT_EQ(findRule("Nearest"), nullptr);
}

TEST(RuleList, EveryRuleNamesADongleThatIsAloneAndStrong) {
    const Settings registry = registryOf({"A", "B"});
    for (const NamedRule& named : rules()) {
        const auto rule = named.make(registry, {});
        for (double at = 0; at < 10; at += 0.5) {
            rule->heard(at, "A", -50);
            rule->reported(at, "A", -50);
            rule->nearest(at);
        }
        EXPECT_EQ(rule->nearest(10), "A") << named.name;
        EXPECT_EQ(rule->nearest(15), "") << named.name;
    }
}

TEST(RuleList, TheTwoKalmanFiltersAreNotTheSame) {
    const Settings registry = registryOf({"A", "B"});
    const auto answer = [&](std::string_view name) {
        const auto rule = findRule(name)->make(registry, {});
        for (double at = 0; at < 10; ++at) {
            rule->heard(at, "A", -70);
            rule->heard(at, "B", -75);
        }
        for (double at = 10; at < 12; ++at) rule->heard(at, "B", -65);
        return std::string(rule->nearest(12));
    };
    EXPECT_EQ(answer("kalman-quick"), "B");
    EXPECT_EQ(answer("kalman-calm"), "A");
}

TEST(RuleList, SettingsThatAreNotValidAreRefusedByNearest) {
    NearestSettings settings;
    settings.dwell = -1;
    EXPECT_THROW(findRule(nearestRuleName)->make({}, settings), std::invalid_argument);
}

}  // namespace
}  // namespace nearcast::lab
