// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Device.h>
#include <nearcast/SettingsFile.h>

#include "doubles/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <array>
#include <csignal>
#include <filesystem>
#include <limits>
#include <memory>
#include <set>
#include <system_error>

namespace nearcast {
namespace {

namespace fs = std::filesystem;

constexpr const char* twoDevices = R"({
  "BT:Bar": {"Device Type": "Robot", "MAC Address": "00:11:22:AA:BB:DD", "Colour": {"R": 1.5, "G": [true, null]}},
  "BT:Front": {"Device Type": "Printer", "MAC Address": "00:11:22:AA:BB:CC", "Threshold RSSI": -65, "Colour": "red"}
})";

SettingRecordPointer recordOf(SettingRecord record) { return std::make_shared<const SettingRecord>(std::move(record)); }

Settings oneDevice(int threshold) {
    return {{"BT:Front", recordOf({{"MAC Address", "00:11:22:AA:BB:CC"}, {"Threshold RSSI", threshold}})}};
}

/// The names in a folder.
std::set<std::string> namesIn(const std::string& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename().string());
    return names;
}

constexpr rlimit nothing{0, 0};

class SettingsFileTest : public testing::Test {
protected:
    [[nodiscard]] std::string content() const { return folder.read("devices.json"); }
    [[nodiscard]] std::set<std::string> versions() const { return namesIn(folder.file(".devices.json.versions")); }
    void hold(const char* text) const { EXPECT_EQ(folder.write("devices.json", text), path); }
    void change(int threshold) const { file.save(oneDevice(threshold)); }

    TemporaryFolder folder;
    std::string path = folder.file("devices.json");
    SettingsFile file{path};
};

TEST_F(SettingsFileTest, ThatIsNotThereHoldsNothing) {
    EXPECT_EQ(file.load(), std::nullopt);
    EXPECT_EQ(file.undoable(), 0U);
    EXPECT_EQ(namesIn(fs::path(path).parent_path()), std::set<std::string>()) << "reading leaves nothing behind";
}

TEST_F(SettingsFileTest, GivesBackWhatWasSaved) {
    change(-65);
    const auto settings = file.load();
    ASSERT_TRUE(settings);
    EXPECT_EQ(*settings->at("BT:Front"), *oneDevice(-65).at("BT:Front"));
}

TEST_F(SettingsFileTest, KeepsWhatAChangeDidNotTouch) {
    hold(twoDevices);
    SettingsFile::Change edit(file);
    edit.settings()["BT:Front"] = withThreshold(*edit.settings().at("BT:Front"), -60);
    edit.commit();
    EXPECT_EQ(content(), R"({
  "BT:Bar": {
    "Colour": {
      "G": [
        true,
        null
      ],
      "R": 1.5
    },
    "Device Type": "Robot",
    "MAC Address": "00:11:22:AA:BB:DD"
  },
  "BT:Front": {
    "Colour": "red",
    "Device Type": "Printer",
    "MAC Address": "00:11:22:AA:BB:CC",
    "Threshold RSSI": -60
  }
}
)");
}

TEST_F(SettingsFileTest, KeepsAnUnknownDeviceTypeOfTheRecordThatIsChanged) {
    hold(twoDevices);
    Settings settings = *file.load();
    settings["BT:Bar"] = withThreshold(*settings.at("BT:Bar"), -60);
    file.save(settings);
    EXPECT_NE(content().find(R"("Device Type": "Robot")"), std::string::npos) << content();
}

TEST_F(SettingsFileTest, LosesAnUnknownDeviceTypeWhereAnotherIsGiven) {
    hold(twoDevices);
    Settings settings = *file.load();
    SettingRecord bar = *settings.at("BT:Bar");
    bar["Device Type"] = QXDeviceTypeTFTillfox;
    settings["BT:Bar"] = recordOf(bar);
    file.save(settings);
    EXPECT_NE(content().find(R"("Device Type": "TF-Tillfox")"), std::string::npos) << content();
}

TEST_F(SettingsFileTest, LosesWhatWasTakenAway) {
    hold(twoDevices);
    Settings settings = *file.load();
    SettingRecord front = *settings.at("BT:Front");
    front.erase("Colour");
    settings["BT:Front"] = recordOf(front);
    settings.erase("BT:Bar");
    file.save(settings);
    EXPECT_EQ(content().find("Colour"), std::string::npos) << content();
    EXPECT_EQ(content().find("BT:Bar"), std::string::npos) << content();
}

TEST_F(SettingsFileTest, IsLeftAloneWhereNothingChanges) {
    hold(twoDevices);
    file.save(*file.load());
    EXPECT_EQ(content(), twoDevices);
    EXPECT_EQ(file.undoable(), 0U);
}

TEST_F(SettingsFileTest, BringsBackTheContentBeforeTheLastChangeOctetByOctet) {
    hold(twoDevices);
    change(-60);
    change(-50);
    const std::string sixty = folder.read(".devices.json.versions/000002");
    EXPECT_TRUE(file.undo());
    EXPECT_EQ(content(), sixty);
    EXPECT_TRUE(file.undo());
    EXPECT_EQ(content(), twoDevices);
    EXPECT_FALSE(file.undo());
    EXPECT_EQ(content(), twoDevices);
}

TEST_F(SettingsFileTest, KeepsTenFormerContents) {
    for (int threshold = -80; threshold < -68; ++threshold) change(threshold);  // twelve
    EXPECT_EQ(file.undoable(), 10U);
    EXPECT_EQ(*versions().begin(), "000002");
    for (int undone = 0; undone < 10; ++undone) EXPECT_TRUE(file.undo());
    EXPECT_FALSE(file.undo());
    EXPECT_EQ(thresholdOf(*file.load()->at("BT:Front")), -79);
}

TEST_F(SettingsFileTest, PassesOverAVersionThatItStillHolds) {
    change(-60);
    change(-50);
    fs::copy_file(path, folder.file(".devices.json.versions/000002"));  // as a writer does that is killed right after
    EXPECT_TRUE(file.undo());
    EXPECT_EQ(thresholdOf(*file.load()->at("BT:Front")), -60);
    EXPECT_EQ(file.undoable(), 0U);
}

TEST_F(SettingsFileTest, ThatIsDamagedIsNeverOverwritten) {
    for (const char* damaged :
         {"{\"BT:Front\": {", "[]", "", "{\"BT:Front\": 1}", "{\"BT:Front\": {\"Device Type\": 1}}"}) {
        hold(damaged);
        EXPECT_THROW(change(-60), SettingsFileError) << damaged;
        EXPECT_THROW(static_cast<void>(file.load()), SettingsFileError) << damaged;
        EXPECT_EQ(content(), damaged);
    }
    EXPECT_EQ(file.undoable(), 0U);
}

TEST_F(SettingsFileTest, ThatIsDamagedIsNamedWithThePlace) {
    hold("{\n  \"BT:Front\": nothing\n}");
    try {
        FAIL() << file.load()->size() << " devices, and it is damaged";
    } catch (const SettingsFileError& error) {
        EXPECT_EQ(std::string(error.what()).find(path + ": not JSON at line 2, column 1"), 0U) << error.what();
    }
}

TEST_F(SettingsFileTest, ThatIsDamagedIsMendedByUndo) {
    change(-60);
    change(-50);
    hold("{");
    EXPECT_TRUE(file.undo());
    EXPECT_EQ(thresholdOf(*file.load()->at("BT:Front")), -60);
}

TEST_F(SettingsFileTest, RefusesWhatJSONCannotExpress) {
    change(-60);
    const std::string before = content();
    const Settings inexpressible{{"BT:Front", recordOf({{"Threshold RSSI", std::numeric_limits<double>::infinity()}})}};
    EXPECT_THROW(file.save(inexpressible), SettingsFileError);
    EXPECT_EQ(content(), before);
    EXPECT_EQ(file.undoable(), 0U);
}

TEST_F(SettingsFileTest, IsRefusedToASecondWriter) {
    change(-60);
    SettingsFile::Change first(file);
    for (const auto& refused :
         {std::function<void()>([&] { change(-50); }), std::function<void()>([&] { file.undo(); }),
          std::function<void()>([&] { SettingsFile(folder.file("./devices.json")).undo(); })}) {
        try {
            refused();
            FAIL() << "another changes it";
        } catch (const std::system_error& error) {
            EXPECT_EQ(error.code(), std::errc::operation_would_block);
            EXPECT_NE(std::string(error.what()).find("is being changed by another program"), std::string::npos);
        }
    }
    EXPECT_TRUE(file.load()) << "it can be read meanwhile";
    first.settings() = oneDevice(-40);
    first.commit();
    EXPECT_EQ(thresholdOf(*file.load()->at("BT:Front")), -40);
}

TEST_F(SettingsFileTest, IsFreeOnceTheChangeIsGone) {
    { const SettingsFile::Change first(file); }
    EXPECT_NO_THROW(change(-60));
}

TEST_F(SettingsFileTest, TakesSeveralCommitsOfOneChange) {
    SettingsFile::Change edit(file);
    edit.settings() = oneDevice(-60);
    edit.commit();
    edit.settings() = oneDevice(-50);
    edit.commit();
    edit.commit();
    EXPECT_EQ(thresholdOf(*file.load()->at("BT:Front")), -50);
    EXPECT_EQ(file.undoable(), 1U);
}

TEST_F(SettingsFileTest, KeepsItsModeAndGivesItToTheVersions) {
    change(-60);
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    change(-50);
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0640));
    EXPECT_EQ(fs::status(folder.file(".devices.json.versions/000001")).permissions(), fs::perms(0640));
}

TEST_F(SettingsFileTest, StaysItsOwnersWithAllThatBelongsToIt) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give a file away";
    change(-60);
    ASSERT_EQ(chown(path.c_str(), 1234, 4321), 0);
    change(-50);
    for (const char* name :
         {"devices.json", ".devices.json.lock", ".devices.json.versions", ".devices.json.versions/000001"}) {
        struct stat status {};
        ASSERT_EQ(stat(folder.file(name).c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, 1234U) << name;
        EXPECT_EQ(status.st_gid, 4321U) << name;
    }
}

TEST_F(SettingsFileTest, IsRefusedWhereItWouldChangeHands) {
    if (geteuid() != 0) GTEST_SKIP() << "it takes a file of somebody else's";
    hold(twoDevices);
    ASSERT_EQ(chmod(path.c_str(), 0666), 0);
    ASSERT_EQ(chmod(fs::path(path).parent_path().c_str(), 0777), 0);
    EXPECT_EXIT(
        {
            if (setgid(4321) != 0 || setuid(1234) != 0) _exit(1);
            try {
                change(-60);
            } catch (const std::system_error& error) {
                _exit(error.code() == std::errc::operation_not_permitted ? 0 : 2);
            }
            _exit(3);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_EQ(content(), twoDevices);
}

TEST_F(SettingsFileTest, IsReachedThroughALinkThatStays) {
    change(-60);
    fs::create_symlink("devices.json", folder.file("link"));
    const SettingsFile linked(folder.file("link"));
    linked.save(oneDevice(-50));
    EXPECT_TRUE(fs::is_symlink(folder.file("link")));
    EXPECT_EQ(thresholdOf(*file.load()->at("BT:Front")), -50);
    EXPECT_TRUE(linked.undo());
    EXPECT_EQ(thresholdOf(*file.load()->at("BT:Front")), -60);
}

TEST_F(SettingsFileTest, IsWholeWhereTheDiskIsFull) {
    change(-60);
    const std::string before = content();
    EXPECT_EXIT(
        {
            std::signal(SIGXFSZ, SIG_IGN);  // NOLINT(cert-err33-c)
            if (setrlimit(RLIMIT_FSIZE, &nothing) != 0) _exit(1);
            try {
                change(-50);
            } catch (const std::system_error&) {
                _exit(0);
            }
            _exit(3);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_EQ(content(), before);
    change(-40);
    EXPECT_EQ(thresholdOf(*file.load()->at("BT:Front")), -40);
}

TEST_F(SettingsFileTest, IsRidOfWhatAKilledWriterLeft) {
    change(-60);
    const std::string left = folder.write(".devices.json.aB3xY9.new", "half of it");
    const std::string own = folder.write(".devices.json.backup", "the user's own");
    change(-50);
    EXPECT_FALSE(fs::exists(left));
    EXPECT_TRUE(fs::exists(own));
}

TEST_F(SettingsFileTest, InAFolderThatIsNotThereIsNamed) {
    const SettingsFile nowhere(folder.file("no/devices.json"));
    EXPECT_EQ(nowhere.load(), std::nullopt);
    try {
        nowhere.save(oneDevice(-60));
        FAIL() << "there is no folder";
    } catch (const std::system_error& error) {
        EXPECT_NE(std::string(error.what()).find("devices.json"), std::string::npos);
    }
}

}  // namespace
}  // namespace nearcast
