// SPDX-License-Identifier: Apache-2.0
#include "common/files/SettingsFile.h"
#include "doubles/TemporaryFolder.h"
#include "lines/TextReader.h"

#include <nearcast/Platform.h>

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <system_error>

namespace nearcast::cli {
namespace {

class SettingsFile : public testing::Test {
protected:
    template <class Problem = lines::InputError>
    static std::string refusal(const std::string& path) {
        try {
            registryOfFile(path, "watch");
            return "loaded";
        } catch (const Problem& error) {
            return error.what();
        }
    }

    const TemporaryFolder folder_;
};

TEST_F(SettingsFile, GivesTheRegistryItHolds) {
    const auto registry =
        registryOfFile(folder_.write("s.json", R"({"BT:Front": {"Device Type": "Printer"}})"), "watch");
    ASSERT_EQ(registry->count("BT:Front"), 1U);
    EXPECT_EQ(*registry->at("BT:Front"), (SettingRecord{{"Device Type", 1}}));
}

TEST_F(SettingsFile, IsReadWithoutAManagerOrAPlatform) {
    registryOfFile(folder_.write("s.json", "{}"), "watch");
    PlatformOptions options;
    options.radio = "none";
    EXPECT_NO_THROW(Platform::choose(options)) << "a manager that exists would forbid it";
}

TEST_F(SettingsFile, ThatIsWrittenIsReadBack) {
    const Settings registry{{"BT:Front", std::make_shared<const SettingRecord>(SettingRecord{{"Device Type", 1}})}};
    const std::string content = settingsFileOf(registry);
    EXPECT_EQ(content.back(), '\n');
    EXPECT_EQ(*registryOfFile(folder_.write("s.json", content), "watch")->at("BT:Front"), *registry.at("BT:Front"));
}

TEST_F(SettingsFile, WhatJSONCannotExpressIsNotWritten) {
    const SettingRecord record{{"Threshold RSSI", std::numeric_limits<double>::infinity()}};
    EXPECT_THROW(settingsFileOf({{"BT:Front", std::make_shared<const SettingRecord>(record)}}), std::runtime_error);
}

TEST_F(SettingsFile, ThatIsMissingIsNamed) {
    EXPECT_EQ(refusal<std::system_error>(folder_.file("none.json")),
              folder_.file("none.json") + ": cannot be opened: No such file or directory");
}

TEST_F(SettingsFile, ThatIsAFolderIsNamed) {
    EXPECT_EQ(refusal<std::system_error>("/"), "/: cannot be read: Is a directory");
}

TEST_F(SettingsFile, ThatIsNoJSONIsNamedWithThePlace) {
    const std::string path = folder_.write("s.json", "{\n  \"a\": oops\n}");
    EXPECT_EQ(refusal(path).rfind(path + ": not JSON at line 2, column 8: ", 0), 0U) << refusal(path);
}

TEST_F(SettingsFile, OfAnotherShapeIsNamedWithWhatIsWrong) {
    const std::string path = folder_.write("s.json", R"({"BT:Front": 7})");
    EXPECT_EQ(refusal(path), path + ": settings: the record of \"BT:Front\" is not an object");
}

TEST_F(SettingsFile, IsOnlyRead) {
    const std::string path = folder_.write("s.json", "{");
    refusal(path);
    EXPECT_EQ(folder_.read("s.json"), "{");
}

}  // namespace
}  // namespace nearcast::cli
