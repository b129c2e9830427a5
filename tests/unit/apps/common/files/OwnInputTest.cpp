// SPDX-License-Identifier: Apache-2.0
#include "common/files/OwnInput.h"

#include "common/UsageError.h"
#include "doubles/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

namespace nearcast::cli {
namespace {

namespace fs = std::filesystem;

TEST(OwnInput, IsRefusedUnderEachOfItsNames) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "x");
    fs::create_symlink("file", folder.file("symbolic"));
    fs::create_hard_link(path, folder.file("hard"));
    for (const char* name : {"file", "./file", "symbolic", "hard"}) {
        EXPECT_THROW(refuseOwnInput(folder.file(name), {path}), UsageError) << name;
        EXPECT_THROW(refuseOwnInput(path, {"", folder.file("none"), folder.file(name)}), UsageError) << name;
    }
}

TEST(OwnInput, IsNoOtherFileAndNoneThatIsNotThere) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "x");
    EXPECT_NO_THROW(refuseOwnInput(folder.write("other", "x"), {path}));
    EXPECT_NO_THROW(refuseOwnInput(folder.file("none"), {path, folder.file("none"), ""}));
}

TEST(OwnInput, MayBeADevice) { EXPECT_NO_THROW(refuseOwnInput("/dev/null", {"/dev/null"})); }

TEST(OwnInput, IsTheFileOfARadio) {
    EXPECT_EQ(fileOfRadio("replay:shop.jsonl?speed=max"), "shop.jsonl");
    EXPECT_EQ(fileOfRadio("simulator:scene.json?seed=2"), "scene.json");
    EXPECT_EQ(fileOfRadio("simulator"), "");
    EXPECT_EQ(fileOfRadio("bluez:hci0"), "");
    EXPECT_THROW((void)fileOfRadio("carrier-pigeon"), std::invalid_argument);
}

TEST(OwnInput, IsTheFileOfARecording) {
    EXPECT_EQ(fileOfRecording("shop.jsonl?as=dongles"), "shop.jsonl");
    EXPECT_EQ(fileOfRecording("what\\?.jsonl"), "what?.jsonl");
    EXPECT_THROW((void)fileOfRecording("shop.jsonl?seed=1"), std::invalid_argument);
}

TEST(OwnInput, IsStandardInputOnceAtMost) {
    EXPECT_NO_THROW(refuseStandardInputTwice({"-", "a", "", "./-"}));
    EXPECT_THROW(refuseStandardInputTwice({"-", "a", "-"}), UsageError);
}

TEST(OwnInput, IsRefusedAsStandardInputToo) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "x");
    ASSERT_NE(std::freopen(path.c_str(), "r", stdin), nullptr);
    EXPECT_THROW(refuseOwnInput(path, {"-"}), UsageError);
    EXPECT_NO_THROW(refuseOwnInput(folder.file("other"), {"-"}));
}

}  // namespace
}  // namespace nearcast::cli
