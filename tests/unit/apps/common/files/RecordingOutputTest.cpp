// SPDX-License-Identifier: Apache-2.0
#include "common/files/RecordingOutput.h"

#include "common/UsageError.h"
#include "doubles/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace nearcast::cli {

void PrintTo(const RecordingForm& form, std::ostream* out) {
    *out << static_cast<int>(form.format) << (form.packed ? ".gz" : "");
}

namespace {

using Format = RecordingForm::Format;

std::string problemOf(const std::string& output, const std::string& format = "") {
    try {
        recordingFormOf(output, format);
    } catch (const UsageError& error) {
        return error.what();
    }
    return "";
}

struct Case {
    const char* output;
    const char* format;
    RecordingForm form;
};

TEST(RecordingForm, IsThatOfTheEndingOrTheOption) {
    const Case cases[] = {
        {"a.jsonl", "", {Format::jsonLines, false}},
        {"a.btsnoop", "", {Format::btsnoop, false}},
        {"a.pcapng", "", {Format::pcapng, false}},
        {"a.jsonl.gz", "", {Format::jsonLines, true}},
        {"a.btsnoop.gz", "", {Format::btsnoop, true}},
        {"a.pcapng.gz", "", {Format::pcapng, true}},
        {"A.JSONL.Gz", "", {Format::jsonLines, true}},
        {"A.BtSnoop", "", {Format::btsnoop, false}},
        {".pcapng", "", {Format::pcapng, false}},
        {"monday.txt.pcapng", "", {Format::pcapng, false}},
        {"folder.txt/a.pcapng", "", {Format::pcapng, false}},
        {"folder.btsnoop/plain", "", {Format::jsonLines, false}},
        {"plain", "", {Format::jsonLines, false}},
        {"plain", "pcapng", {Format::pcapng, false}},
        {"", "", {Format::jsonLines, false}},
        {"-", "", {Format::jsonLines, false}},
        {"-", "jsonl", {Format::jsonLines, false}},
        {"a.btsnoop", "BTSNOOP", {Format::btsnoop, false}},
        {"a.btsnoop.gz", "btsnoop.gz", {Format::btsnoop, true}},
        {"/dev/null", "pcapng.gz", {Format::pcapng, true}},
        {"/dev/null", "", {Format::jsonLines, false}},
    };
    for (const Case& one : cases) EXPECT_EQ(recordingFormOf(one.output, one.format), one.form) << one.output;
}

TEST(RecordingForm, IsRefusedWhereTheEndingSaysNone) {
    for (const char* output : {"a.txt", "a.pcap", "a.json", "a.gz", "plain.gz", "a.", "a.jsonl.bz2", "a.jsonl.gz.gz",
                               "a.btsnoopx", "a.jsonl~", ".gz"}) {
        EXPECT_EQ(problemOf(output), std::string(output) +
                                         ": its ending says no format (known: .jsonl, .btsnoop and "
                                         ".pcapng, each also with .gz)");
        EXPECT_NE(problemOf(output, "jsonl"), "") << "the option does not make the ending known";
    }
}

TEST(RecordingForm, IsRefusedWhereEndingAndOptionContradict) {
    EXPECT_EQ(problemOf("a.btsnoop", "jsonl"), "a.btsnoop: its ending says another format than 'jsonl'");
    EXPECT_NE(problemOf("a.jsonl", "jsonl.gz"), "");
    EXPECT_NE(problemOf("a.jsonl.gz", "jsonl"), "");
}

TEST(RecordingForm, IsRefusedWhereTheOptionIsNotKnown) {
    EXPECT_EQ(problemOf("-", "pcap"),
              "there is no format 'pcap' (known: jsonl, btsnoop or pcapng, each also with .gz)");
    for (const char* format : {"gz", ".gz", ".jsonl", "jsonl ", "jsonl.gz.gz"}) EXPECT_NE(problemOf("", format), "");
}

TEST(RecordingForm, OfAFileThatIsADeviceIsNotItsEnding) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("/dev/null", folder.file("null.btsnoop"));
    EXPECT_EQ(recordingFormOf(folder.file("null.btsnoop"), "jsonl"), RecordingForm());
}

TEST(RecordingOutput, WritesEachFormWithItsOwnBegin) {
    const std::pair<RecordingForm, std::string> begins[] = {
        {{Format::jsonLines, false}, "{\"at\""},
        {{Format::btsnoop, false}, std::string("btsnoop\0", 8)},
        {{Format::pcapng, false}, "\x0A\x0D\x0D\x0A"},
        {{Format::jsonLines, true}, "\x1F\x8B"},
    };
    for (const auto& [form, begin] : begins) {
        std::string bytes;
        RecordingOutput output(
            form, [&bytes](std::string_view some) { bytes += some; }, false);
        output.writer({})->write(replay::RecordedEnd{std::chrono::microseconds(1)});
        output.finish();
        EXPECT_EQ(bytes.substr(0, begin.size()), begin);
    }
}

}  // namespace
}  // namespace nearcast::cli
