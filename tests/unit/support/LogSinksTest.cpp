// SPDX-License-Identifier: Apache-2.0
#include "unit/support/LogWriterFixture.h"

#include <sys/resource.h>

#include <csignal>
#include <cstdint>
#include <system_error>

namespace nearcast {

namespace {

LogRecord record(std::string_view text) {
    return {QXLogTypeError,     0,   reinterpret_cast<const void*>(std::uintptr_t{0x55d0}), "src/File.cpp", 41,
            "-[Class method:]", text};
}

std::string lineOf(const std::string& text) {
    return "7\t0\t0x55d0\tsrc/File.cpp:41\t-[Class method:]\t" + text + "\n";
}

TEST(FileSink, WritesOneLineARecord) {
    const TemporaryFile file;
    const auto sink = LogWriter::fileSink(file.path());
    sink(record("portName == nil"));
    sink({QXLogTypePavixAPIStart, -2, nullptr, "", 0, "", ""});
    EXPECT_EQ(file.text(), lineOf("portName == nil") + "0\t-2\t0x0\t:0\t\t\n");
}

TEST(FileSink, AppendsToWhatIsThere) {
    const TemporaryFile file;
    LogWriter::fileSink(file.path())(record("first"));
    LogWriter::fileSink(file.path())(record("second"));
    EXPECT_EQ(file.text(), lineOf("first") + lineOf("second"));
}

TEST(FileSink, NamesTheFileThatItCannotOpen) {
    const std::string path = testing::TempDir() + "no such folder/log";
    try {
        LogWriter::fileSink(path);
        FAIL() << "opened " << path;
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
        EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
    }
}

TEST(FileSink, ReportsOnceThatItCannotWrite) {
    const auto sink = LogWriter::fileSink("/dev/full");
    try {
        sink(record("x"));
        FAIL() << "a full device took a line";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::no_space_on_device);
        EXPECT_NE(std::string(error.what()).find("/dev/full"), std::string::npos) << error.what();
    }
    EXPECT_NO_THROW(sink(record("x")));
}

/// Lets files grow to so many bytes and no further, as a full disk does.
class RoomOnDisk {
public:
    explicit RoomOnDisk(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        set(bytes);
    }
    ~RoomOnDisk() { setrlimit(RLIMIT_FSIZE, &before_); }
    void set(rlim_t bytes) {
        const rlimit limit{bytes, before_.rlim_max};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    }

private:
    rlimit before_{};
};

TEST(FileSink, TellsHowManyLinesAreMissingOnceThereIsRoomAgain) {
    const TemporaryFile file;
    const auto sink = LogWriter::fileSink(file.path());
    const std::string first = lineOf("first");
    RoomOnDisk room(first.size() + 10);  // the second line fits in part
    sink(record("first"));
    EXPECT_THROW(sink(record("second")), std::system_error);
    EXPECT_NO_THROW(sink(record("third")));
    room.set(4096);
    sink(record("fourth"));
    const std::string text = file.text();
    EXPECT_EQ(text.substr(0, first.size() + 11), first + lineOf("second").substr(0, 10) + "\n");
    EXPECT_NE(text.find("\t2 records could not be written here\n" + lineOf("fourth")), std::string::npos) << text;
}

TEST(StandardErrorSink, WritesTheSameLines) {
    testing::internal::CaptureStderr();
    LogWriter::standardErrorSink()(record("a\nb"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), lineOf("a\\nb"));
}

struct EscapeCase {
    const char* name;
    std::string text;
    std::string written;
};

class LogLineEscapes : public testing::TestWithParam<EscapeCase> {};

TEST_P(LogLineEscapes, KeepARecordOnItsLine) {
    const TemporaryFile file;
    LogWriter::fileSink(file.path())(record(GetParam().text));
    EXPECT_EQ(file.text(), lineOf(GetParam().written));
}

INSTANTIATE_TEST_SUITE_P(All, LogLineEscapes,
                         testing::Values(EscapeCase{"LineFeed", "a\nb", "a\\nb"},
                                         EscapeCase{"CarriageReturn", "\r", "\\r"}, EscapeCase{"Tab", "\t", "\\t"},
                                         EscapeCase{"Backslash", "a\\nb", "a\\\\nb"},
                                         EscapeCase{"Zero", std::string(1, '\0'), "\\x00"},
                                         EscapeCase{"LastLowControl", "\x1f", "\\x1f"}, EscapeCase{"Space", " ", " "},
                                         EscapeCase{"LastPlain", "~", "~"}, EscapeCase{"Delete", "\x7f", "\\x7f"},
                                         EscapeCase{"FirstHighControl", "\xc2\x80", "\\xc2\\x80"},
                                         EscapeCase{"LastHighControl", "\xc2\x9f", "\\xc2\\x9f"},
                                         EscapeCase{"AfterTheHighControls", "\xc2\xa0", "\xc2\xa0"},
                                         EscapeCase{"HalfALetterAtTheEnd", "\xc2", "\xc2"},
                                         EscapeCase{"Umlaut",
                                                    "K\xc3\xbc"
                                                    "che",
                                                    "K\xc3\xbc"
                                                    "che"}),
                         [](const auto& tested) { return tested.param.name; });

TEST(FileSink, EscapesFileAndMethodToo) {
    const TemporaryFile file;
    LogWriter::fileSink(file.path())({QXLogTypeProcess, 0, nullptr, "a\tb", 1, "c\nd", "e"});
    EXPECT_EQ(file.text(), "6\t0\t0x0\ta\\tb:1\tc\\nd\te\n");
}

}  // namespace

}  // namespace nearcast
