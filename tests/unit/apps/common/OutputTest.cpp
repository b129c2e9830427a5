// SPDX-License-Identifier: Apache-2.0
#include "common/Output.h"
#include "doubles/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <system_error>

namespace nearcast::cli {
namespace {

TEST(AtomicFile, AppearsOnlyWhenItIsCommitted) {
    const TemporaryFolder folder;
    AtomicFile file(folder.file("out"));
    file.write("content");
    EXPECT_EQ(folder.read("out"), "");
    file.commit();
    EXPECT_EQ(folder.read("out"), "content");
}

TEST(AtomicFile, LeavesWhatWasThereWithoutACommit) {
    const TemporaryFolder folder;
    const std::string path = folder.write("out", "before");
    {
        AtomicFile file(path);
        file.write("after");
    }
    EXPECT_EQ(folder.read("out"), "before");
    EXPECT_EQ(folder.files(), 1U) << "the temporary file is gone";
}

TEST(AtomicFile, ReplacesWhatWasThereAndLeavesNothingBeside) {
    const TemporaryFolder folder;
    const std::string path = folder.write("out", "before");
    AtomicFile file(path);
    file.write("after");
    file.commit();
    EXPECT_EQ(folder.read("out"), "after");
    EXPECT_EQ(folder.files(), 1U);
}

TEST(AtomicFile, CanBeReadAsAnyNewFileCan) {
    const TemporaryFolder folder;
    AtomicFile file(folder.file("out"));
    file.commit();
    std::ofstream(folder.file("plain")) << "x";
    EXPECT_EQ(std::filesystem::status(folder.file("out")).permissions(),
              std::filesystem::status(folder.file("plain")).permissions());
}

TEST(AtomicFile, WritesADeviceInPlace) {
    AtomicFile file("/dev/null");
    file.write("nothing");
    EXPECT_NO_THROW(file.commit());
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(AtomicFile, NamesTheFileThatCannotBeMade) {
    try {
        AtomicFile file("/no/such/folder/out");
        FAIL() << "it was made";
    } catch (const std::system_error& error) {
        EXPECT_NE(std::string(error.what()).find("/no/such/folder/out: cannot be made"), std::string::npos);
    }
}

TEST(AtomicFile, SaysWhenTheDiskIsFull) {
    AtomicFile file("/dev/full");
    EXPECT_THROW(
        {
            file.write(std::string(1 << 20, 'x'));
            file.commit();
        },
        std::system_error);
}

TEST(GrowingFile, HoldsEachPieceAsSoonAsItIsWritten) {
    const TemporaryFolder folder;
    GrowingFile file(folder.write("out", "before"));
    EXPECT_EQ(folder.read("out"), "") << "what was there is gone";
    file.write("one ");
    EXPECT_EQ(folder.read("out"), "one ");
    file.write("two");
    EXPECT_EQ(folder.read("out"), "one two");
}

TEST(GrowingFile, ThatCannotBeWrittenIsNamed) {
    GrowingFile file("/dev/full");
    EXPECT_THROW(file.write("x"), std::system_error);
    EXPECT_THROW(GrowingFile("/nowhere/x"), std::system_error);
}

}  // namespace
}  // namespace nearcast::cli
