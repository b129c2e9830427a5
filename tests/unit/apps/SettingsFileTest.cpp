// SPDX-License-Identifier: Apache-2.0
#include "doubles/TemporaryFolder.h"
#include "watch/SettingsFile.h"

#include <nearcast/Platform.h>

#include <gtest/gtest.h>

namespace nearcast::cli {
namespace {

class SettingsFile : public testing::Test {
protected:
    void SetUp() override {
        PlatformOptions options;
        options.radio = "none";
        Platform::choose(options);
    }

    std::string refusal(const std::string& path) {
        try {
            loadSettings(manager(), path);
            return "loaded";
        } catch (const SettingsFileError& error) {
            return error.what();
        }
    }

    static QXNearcastManager& manager() { return QXNearcastManager::sharedManager(); }

    const TemporaryFolder folder_;
};

TEST_F(SettingsFile, InstallsTheRegistryItHolds) {
    loadSettings(manager(), folder_.write("s.json", R"({"BT:Front": {"Device Type": "Printer"}})"));
    EXPECT_EQ(manager().getSettings()->count("BT:Front"), 1U);
}

TEST_F(SettingsFile, ThatIsMissingIsNamed) {
    EXPECT_EQ(refusal(folder_.file("none.json")),
              folder_.file("none.json") + ": cannot be opened: No such file or directory");
}

TEST_F(SettingsFile, ThatIsAFolderIsNamed) { EXPECT_EQ(refusal("/"), "/: cannot be read: Is a directory"); }

TEST_F(SettingsFile, ThatIsNoJSONIsNamedWithThePlace) {
    const std::string path = folder_.write("s.json", "{\n  \"a\": oops\n}");
    EXPECT_EQ(refusal(path).rfind(path + ": is not JSON, line 2, column 8: ", 0), 0U) << refusal(path);
}

TEST_F(SettingsFile, OfAnotherShapeIsNamedWithWhatIsWrong) {
    const std::string path = folder_.write("s.json", R"({"BT:Front": 7})");
    EXPECT_EQ(refusal(path), path + ": settings: the record of \"BT:Front\" is not an object");
}

TEST_F(SettingsFile, ThatIsBrokenLeavesTheRegistryAsItWas) {
    manager().addSettingForPrinterPortName("BT:Old", {}, false, "00:11:22:AA:BB:CC", {}, {});
    refusal(folder_.write("s.json", "{"));
    EXPECT_EQ(manager().getSettings()->count("BT:Old"), 1U);
}

TEST_F(SettingsFile, IsOnlyRead) {
    const std::string path = folder_.write("s.json", "{");
    refusal(path);
    EXPECT_EQ(folder_.read("s.json"), "{");
}

}  // namespace
}  // namespace nearcast::cli
