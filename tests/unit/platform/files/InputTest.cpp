// SPDX-License-Identifier: Apache-2.0
#include "doubles/TemporaryFolder.h"
#include "platform/files/ByteSource.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <array>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>

namespace nearcast {
namespace {

std::string take(const ByteSource& source) {
    std::array<std::uint8_t, 100> room{};
    const std::size_t count = source(room);
    return {room.begin(), room.begin() + static_cast<std::ptrdiff_t>(count)};
}

TEST(Input, GivesTheBytesOfAFile) {
    const TemporaryFolder folder;
    const ByteSource source = openInput(folder.write("file", "bytes"));
    EXPECT_EQ(take(source), "bytes");
    EXPECT_EQ(take(source), "");
}

TEST(Input, OfAPipeGivesWhatHasComeWithoutWaitingForMore) {
    const TemporaryFolder folder;
    const std::string path = folder.file("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const int writer = open(path.c_str(), O_RDWR);  // which does not wait for a reader
    ASSERT_GE(writer, 0);
    const ByteSource source = openInput(path);
    for (const std::string_view some : {"one", "two"}) {
        ASSERT_EQ(write(writer, some.data(), some.size()), static_cast<ssize_t>(some.size()));
        EXPECT_EQ(take(source), some);
    }
    close(writer);
    EXPECT_EQ(take(source), "");
}

TEST(Input, IsStandardInputForAHyphen) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    ASSERT_EQ(dup2(ends[0], STDIN_FILENO), STDIN_FILENO);
    ASSERT_EQ(write(ends[1], "some", 4), 4);
    EXPECT_EQ(take(openInput("-")), "some");
    ASSERT_EQ(write(ends[1], "more", 4), 4);
    EXPECT_EQ(take(openInput("-")), "more") << "it is not closed";
    EXPECT_EQ(nameOfInput("-"), "standard input");
    EXPECT_EQ(nameOfInput("./-"), "./-");
}

/// In a process of its own, for it is for good.
TEST(Input, ThatSomebodyWaitsForEndsWithAllInputs) {
    const TemporaryFolder folder;
    const std::string path = folder.file("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const std::string file = folder.write("file", "bytes");
    EXPECT_EXIT(
        {
            const ByteSource nobodyWrites = openInput(path);
            std::thread ending(endInputs);
            const bool ended = take(nobodyWrites).empty() && inputsEnded();
            ending.join();
            _exit(ended && take(openInput(file)) == "bytes" ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_FALSE(inputsEnded());
}

TEST(Input, ThatIsMissingOrCannotBeReadIsNamed) {
    const auto problemOf = [](const std::string& path) -> std::string {
        try {
            return take(openInput(path));
        } catch (const std::system_error& error) {
            return error.what();
        }
    };
    EXPECT_EQ(problemOf("/nowhere/x"), "/nowhere/x: No such file or directory");
    EXPECT_EQ(problemOf("/"), "/: Is a directory");
}

}  // namespace
}  // namespace nearcast
