// SPDX-License-Identifier: Apache-2.0
#include "doubles/TemporaryFolder.h"
#include "platform/system/AtomicFile.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <csignal>
#include <filesystem>
#include <system_error>

namespace nearcast {
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

namespace fs = std::filesystem;

struct stat statusOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status;
}

void writeWhole(const std::string& path, const char* content) {
    AtomicFile file(path);
    file.write(content);
    file.commit();
}

TEST(AtomicFile, KeepsTheModeOfTheFileThatWasThere) {
    const TemporaryFolder folder;
    const std::string path = folder.write("out", "before");
    for (const mode_t mode : {0600U, 0640U, 0755U, 0444U, 0666U}) {
        ASSERT_EQ(chmod(path.c_str(), mode), 0);
        writeWhole(path, "after");
        EXPECT_EQ(statusOf(path).st_mode & 07777U, mode);
        EXPECT_EQ(folder.read("out"), "after");
    }
}

TEST(AtomicFile, KeepsTheOwnerOfTheFileThatWasThere) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give a file away";
    const TemporaryFolder folder;
    const std::string path = folder.write("out", "before");
    ASSERT_EQ(chown(path.c_str(), 1234, 4321), 0);
    ASSERT_EQ(chmod(path.c_str(), 06755), 0);
    writeWhole(path, "after");
    EXPECT_EQ(folder.read("out"), "after");
    EXPECT_EQ(statusOf(path).st_uid, 1234U);
    EXPECT_EQ(statusOf(path).st_gid, 4321U);
    EXPECT_EQ(statusOf(path).st_mode & 07777U, 06755U) << "a change of the owner takes these bits away";
}

/// Who may not give the new file its owner writes into the old one. In a process of its own, which gives up its rights.
TEST(AtomicFile, KeepsAnOwnerThatItCannotGive) {
    if (geteuid() != 0) GTEST_SKIP() << "it takes a file of somebody else's";
    const TemporaryFolder folder;
    const std::string path = folder.write("out", "before");
    ASSERT_EQ(chmod(path.c_str(), 0666), 0);
    ASSERT_EQ(chmod(fs::path(path).parent_path().c_str(), 0777), 0);
    EXPECT_EXIT(
        {
            if (setgid(4321) != 0 || setuid(1234) != 0) _exit(1);
            writeWhole(path, "after");
            _exit(0);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_EQ(folder.read("out"), "after");
    EXPECT_EQ(statusOf(path).st_uid, 0U);
    EXPECT_EQ(folder.files(), 1U);
}

TEST(AtomicFile, RefusesAFileOfAnothersThatItMayNotWrite) {
    if (geteuid() != 0) GTEST_SKIP() << "it takes a file of somebody else's";
    const TemporaryFolder folder;
    const std::string path = folder.write("out", "before");
    ASSERT_EQ(chmod(fs::path(path).parent_path().c_str(), 0777), 0);
    EXPECT_EXIT(
        {
            if (setgid(4321) != 0 || setuid(1234) != 0) _exit(1);
            try {
                writeWhole(path, "after");
            } catch (const std::system_error& error) {
                _exit(error.code() == std::errc::permission_denied ? 0 : 2);
            }
            _exit(3);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_EQ(folder.read("out"), "before");
    EXPECT_EQ(folder.files(), 1U);
}

TEST(AtomicFile, WritesWhereASymbolicLinkLeads) {
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "before");
    fs::create_symlink("file", folder.file("near"));
    fs::create_symlink(folder.file("near"), folder.file("far"));
    writeWhole(folder.file("far"), "after");
    EXPECT_EQ(folder.read("file"), "after");
    EXPECT_TRUE(fs::is_symlink(folder.file("near")));
    EXPECT_TRUE(fs::is_symlink(folder.file("far")));
    EXPECT_EQ(folder.files(), 3U);
}

TEST(AtomicFile, MakesTheFileThatASymbolicLinkMisses) {
    const TemporaryFolder folder;
    fs::create_directory(folder.file("deep"));
    fs::create_symlink("../file", folder.file("deep/link"));
    writeWhole(folder.file("deep/link"), "content");
    EXPECT_EQ(folder.read("file"), "content");
    EXPECT_TRUE(fs::is_symlink(folder.file("deep/link")));
}

TEST(AtomicFile, FollowsNoLinksInACircle) {
    const TemporaryFolder folder;
    fs::create_symlink("one", folder.file("other"));
    fs::create_symlink("other", folder.file("one"));
    EXPECT_THROW(AtomicFile(folder.file("one")), std::system_error);
    EXPECT_EQ(folder.files(), 2U);
}

TEST(AtomicFile, LeavesNothingBesideWhenASignalEndsTheProcess) {
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGXFSZ}) {
        const TemporaryFolder folder;
        const std::string path = folder.write("out", "before");
        EXPECT_EXIT(
            {
                TemporaryName::removeOnSignals();
                AtomicFile file(path);
                AtomicFile another(folder.file("another"));
                file.write("after");
                raise(signal);
            },
            testing::KilledBySignal(signal), "");
        EXPECT_EQ(folder.files(), 1U) << signal;
        EXPECT_EQ(folder.read("out"), "before");
    }
}

TEST(AtomicFile, LeavesASignalIgnoredThatWasIgnored) {
    const TemporaryFolder folder;
    EXPECT_EXIT(
        {
            std::signal(SIGHUP, SIG_IGN);  // NOLINT(cert-err33-c)
            TemporaryName::removeOnSignals();
            AtomicFile file(folder.file("out"));
            file.write("content");
            raise(SIGHUP);
            file.commit();
            _exit(0);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_EQ(folder.read("out"), "content");
}

}  // namespace
}  // namespace nearcast
