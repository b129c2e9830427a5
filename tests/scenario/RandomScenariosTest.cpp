// SPDX-License-Identifier: Apache-2.0
#include "doubles/ModelManager.h"
#include "scenario/EventComparer.h"
#include "scenario/RunInChild.h"
#include "scenario/ScenarioGenerator.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace nearcast::scenario {
namespace {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr std::uint64_t ordinary = 400;
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer) || __has_feature(address_sanitizer)
constexpr std::uint64_t ordinary = 400;
#else
constexpr std::uint64_t ordinary = 2000;
#endif
#else
constexpr std::uint64_t ordinary = 2000;
#endif

constexpr std::uint64_t shares = 4;

/// How many scenarios all shares run together; NEARCAST_RANDOM_SCENARIOS asks for more, NEARCAST_RANDOM_SEED for
/// others.
std::uint64_t fromEnvironment(const char* name, std::uint64_t otherwise) {
    const char* const text = std::getenv(name);
    return text == nullptr ? otherwise : std::stoull(text);
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
}

class RandomScenarios : public testing::TestWithParam<std::uint64_t> {};

TEST_P(RandomScenarios, AgreeWithTheModelEventByEvent) {
    const std::uint64_t count = fromEnvironment("NEARCAST_RANDOM_SCENARIOS", ordinary);
    const std::uint64_t first = fromEnvironment("NEARCAST_RANDOM_SEED", 0);
    std::size_t events = 0;
    for (std::uint64_t seed = first + GetParam(); seed < first + count; seed += shares) {
        const auto lines = ScenarioGenerator(seed).lines();
        const Outcome outcome = runInChild(lines, {.trace = true, .locks = true});
        ASSERT_TRUE(outcome.clean) << "seed " << seed << ": " << outcome.problem << "\n" << joined(lines);
        const auto expected = doubles::ModelManager::run(lines);
        const auto problem = difference(readEvents(outcome.output), expected);
        ASSERT_FALSE(problem) << "seed " << seed << ": " << *problem << "\n" << joined(lines);
        events += expected.size();
    }
    EXPECT_GT(events, count / shares);
}

INSTANTIATE_TEST_SUITE_P(Shares, RandomScenarios, testing::Range(std::uint64_t{0}, shares));

}  // namespace
}  // namespace nearcast::scenario
