// SPDX-License-Identifier: Apache-2.0
#include "scenario/EventComparer.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace nearcast::scenario {
namespace {

namespace fs = std::filesystem;

const fs::path casesFolder = fs::path(NEARCAST_TEST_SOURCE_DIR) / "scenario/cases";
constexpr std::string_view expectedSuffix = ".expected.jsonl";

std::vector<std::string> caseNames() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(casesFolder)) {
        const std::string name = entry.path().filename().string();
        if (name.ends_with(expectedSuffix)) names.push_back(name.substr(0, name.size() - expectedSuffix.size()));
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::string contentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

struct Ended {
    std::string output;
    int status;
};

/// The program of this build, or another that is to be looked at.
std::string program() {
    const char* const other = std::getenv("NEARCAST_PROGRAM");
    return other != nullptr ? other : NEARCAST_PROGRAM;
}

/// Runs the command line's `run` as a user does.
Ended runProgram(const std::string& name) {
    const std::string command =
        "'" + program() + "' run --trace --locks '" + (casesFolder / (name + ".jsonl")).string() + "'";
    std::FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return {"", -1};
    Ended ended{"", 0};
    char part[1 << 16];
    while (const std::size_t got = std::fread(part, 1, sizeof part, pipe)) ended.output.append(part, got);
    const int status = pclose(pipe);
    ended.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return ended;
}

std::string withoutPointers(const std::string& text) {
    return std::regex_replace(text, std::regex("0x[0-9a-f]+"), "<ptr>");
}

class Cases : public testing::TestWithParam<std::string> {};

TEST_P(Cases, ShowsTheExpectedEventsTracesAndLocks) {
    const Ended ended = runProgram(GetParam());
    EXPECT_EQ(ended.status, 0);
    const auto expected = readEvents(contentOf(casesFolder / (GetParam() + std::string(expectedSuffix))));
    ASSERT_FALSE(expected.empty());
    EXPECT_EQ(difference(readEvents(ended.output), expected).value_or(""), "");
}

TEST_P(Cases, PrintsTheSameBytesTwicePointersAside) {
    const std::string first = withoutPointers(runProgram(GetParam()).output);
    EXPECT_FALSE(first.empty());
    EXPECT_EQ(first, withoutPointers(runProgram(GetParam()).output));
}

INSTANTIATE_TEST_SUITE_P(All, Cases, testing::ValuesIn(caseNames()), [](const auto& each) {
    return std::regex_replace(each.param, std::regex("[^A-Za-z0-9]"), "_");
});

TEST(CasesFolder, HoldsAllScenariosThatAreSharedWithOthers) {
    const fs::path shared = fs::path(NEARCAST_TEST_SOURCE_DIR) / "../../shared/scenarios";
    EXPECT_GE(caseNames().size(), 15U);
    if (!fs::exists(shared)) GTEST_SKIP() << "THERE IS NO " << shared << ": the copies were not compared with it";
    for (const auto& entry : fs::directory_iterator(shared)) {
        if (entry.path().extension() != ".jsonl") continue;
        EXPECT_EQ(contentOf(entry.path()), contentOf(casesFolder / entry.path().filename())) << entry.path();
    }
}

}  // namespace
}  // namespace nearcast::scenario
