// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/RecordingWriter.h"
#include "unit/platform/replay/CaptureBytes.h"
#include "unit/platform/replay/ReplayFixture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nearcast::replay {
namespace {

using std::chrono::microseconds;

/// Writes items, and reads what came of it.
class Written {
public:
    enum class Form { jsonLines, btsnoop, pcapng };
    explicit Written(Form form) {
        const auto out = [this](std::string_view some) {
            bytes_ += some;
            ends_.push_back(bytes_.size());
        };
        const microseconds begin(1'700'000'000'000'000);
        switch (form) {
            case Form::jsonLines: writer_ = makeJsonLinesWriter(out); break;
            case Form::btsnoop: writer_ = makeBtsnoopWriter(out, begin); break;
            case Form::pcapng: writer_ = makePcapngWriter(out, begin); break;
        }
    }
    void write(const RecordedItem& item) { writer_->write(item); }
    [[nodiscard]] const std::string& bytes() const { return bytes_; }
    /// How long the output was after each time something was handed out.
    [[nodiscard]] const std::vector<std::size_t>& ends() const { return ends_; }

    [[nodiscard]] std::vector<RecordedItem> readBack() const { return readBack(bytes_.size()); }
    [[nodiscard]] std::vector<RecordedItem> readBack(std::size_t length) const {
        const Contents contents = readAll(octetsOf(std::string_view(bytes_).substr(0, length)));
        EXPECT_EQ(contents.damage, "");
        return contents.items;
    }

private:
    std::string bytes_;
    std::vector<std::size_t> ends_;
    std::unique_ptr<RecordingWriter> writer_;
};

RecordedReport shopReport(std::int64_t at, int RSSI) {
    RecordedReport item = dongleReport(at, RSSI);
    item.report.address = alice;
    item.report.name = "QX024E43000001";
    item.report.manufacturerData = hex("FFFF 024E43000001");
    return item;
}

void expectSame(const RecordedReport& read, const RecordedReport& written) {
    EXPECT_EQ(read.at, written.at);
    EXPECT_EQ(read.report.name, written.report.name);
    EXPECT_EQ(read.report.manufacturerData, written.report.manufacturerData);
    EXPECT_EQ(read.report.services, written.report.services);
    EXPECT_EQ(read.report.RSSI, written.report.RSSI);
}

class RecordingWriterTest : public testing::TestWithParam<Written::Form> {
protected:
    Written written_{GetParam()};
};

TEST_P(RecordingWriterTest, ReportsAreReadAgainAtTheirTimes) {
    std::vector<RecordedReport> reports{shopReport(250'000, -60), shopReport(250'000, 127),
                                        shopReport(61'000'001, -128)};
    reports[1].report.name.reset();
    reports[1].report.services = {CBUUID::UUIDWithShort(0x180F), dongleUUID()};
    reports[2].report.manufacturerData.reset();
    reports[2].report.services.clear();
    for (const auto& report : reports) written_.write(report);
    const auto items = written_.readBack();
    ASSERT_EQ(items.size(), reports.size());
    for (std::size_t place = 0; place < items.size(); ++place) {
        ASSERT_TRUE(std::holds_alternative<RecordedReport>(items[place]));
        expectSame(std::get<RecordedReport>(items[place]), reports[place]);
    }
}

TEST_P(RecordingWriterTest, ChangesOfStateAndTheEndAreReadAgain) {
    written_.write(RecordedState{microseconds(1'000), CBManagerStatePoweredOff});
    written_.write(RecordedEnd{microseconds(2'000)});
    const auto items = written_.readBack();
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(std::get<RecordedState>(items[0]).state, CBManagerStatePoweredOff);
    EXPECT_EQ(std::get<RecordedState>(items[0]).at, microseconds(1'000));
    EXPECT_EQ(std::get<RecordedEnd>(items[1]).at, microseconds(2'000));
}

TEST_P(RecordingWriterTest, WhatBreaksOffAfterAnyItemIsAWholeRecording) {
    for (int at = 0; at < 3; ++at) written_.write(shopReport(at, -60));
    const auto& ends = written_.ends();
    const std::size_t before = ends.size() - 3;  // items; a header may precede them
    for (std::size_t items = 1; items <= 3; ++items) {
        EXPECT_EQ(written_.readBack(ends[before + items - 1]).size(), items);
    }
}

std::string nameOf(const testing::TestParamInfo<Written::Form>& form) {
    switch (form.param) {
        case Written::Form::jsonLines: return "JsonLines";
        case Written::Form::btsnoop: return "Btsnoop";
        case Written::Form::pcapng: break;
    }
    return "Pcapng";
}

INSTANTIATE_TEST_SUITE_P(Forms, RecordingWriterTest,
                         testing::Values(Written::Form::jsonLines, Written::Form::btsnoop, Written::Form::pcapng),
                         nameOf);

TEST(BtsnoopWriter, WritesTheHeaderAndTheBeginAtOnce) {
    const Written written(Written::Form::btsnoop);
    const Octets expected =
        btsnoopHeader(2001) +
        btsnoopRecord(1'700'000'000'000'000, octetsOf(std::string_view("nearcast: begin\0", 16)), 0xFFFF'000C);
    EXPECT_EQ(Octets(written.bytes().begin(), written.bytes().end()), expected);
}

TEST(PcapngWriter, WritesWhatDescribesTheFileAndTheBeginAtOnce) {
    const Written written(Written::Form::pcapng);
    const Pcapng form;
    const Octets note = hex("FFFF 000C") + octetsOf(std::string_view("nearcast: begin\0", 16));
    const Octets expected = form.section() + form.interface(254, form.option(9, {6}) + form.option(0, {})) +
                            form.enhanced(1'700'000'000'000'000, note);
    EXPECT_EQ(Octets(written.bytes().begin(), written.bytes().end()), expected);
}

TEST(PcapngWriter, WritesEventsOfTheFirstAdapter) {
    Written written(Written::Form::pcapng);
    const std::size_t before = written.bytes().size();
    written.write(shopReport(250'000, -60));
    const Octets block(written.bytes().begin() + static_cast<std::ptrdiff_t>(before), written.bytes().end());
    ByteReader reader(block);
    EXPECT_EQ(reader.u32(), 6U);
    EXPECT_EQ(reader.u32(), block.size());
    EXPECT_EQ(reader.u32(), 0U) << "the interface";
    const std::uint64_t high = reader.u32();
    EXPECT_EQ(high << 32 | reader.u32(), 1'700'000'000'250'000U);
    const std::size_t length = reader.u32();
    EXPECT_EQ(reader.u32(), length);
    EXPECT_LE(length, block.size() - 32);
    EXPECT_EQ(reader.u32(), 0x0300'0000U) << "adapter 0, opcode 3, both with the high octet first";
    EXPECT_EQ(reader.u8(), 0x3E) << "an LE event";
}

TEST(PcapngWriter, PutsATimeBefore1970AtItsBegin) {
    std::string bytes;
    const auto writer = makePcapngWriter([&](std::string_view some) { bytes += some; }, {});
    writer->write(dongleReport(-5, -60));
    writer->write(dongleReport(7, -61));
    EXPECT_EQ(readAll(octetsOf(bytes)).times(), (std::vector<std::int64_t>{0, 7}));
}

TEST(CaptureWriters, KeepTheSenderAndTheDate) {
    for (const auto form : {Written::Form::btsnoop, Written::Form::pcapng}) {
        Written written(form);
        written.write(shopReport(0, -60));
        const auto items = written.readBack();
        EXPECT_EQ(std::get<RecordedReport>(items.at(0)).report.address, alice);
        const auto reader = openRecording(sourceOf(octetsOf(written.bytes())), "test");
        reader->next();
        EXPECT_EQ(reader->begin(), microseconds(1'700'000'000'000'000));
    }
}

TEST(RecordingNotes, OfOthersAreNoItems) {
    for (const std::string_view note :
         {"nearcast: radio", "nearcast: radio five", "nearcast: radio 4 now", "Linux version", ""}) {
        std::string bytes(note);
        bytes.push_back('\0');
        const Octets capture = btsnoopHeader(2001) + btsnoopRecord(0, octetsOf(bytes), 0xFFFF'000C);
        EXPECT_TRUE(readAll(capture).items.empty()) << note;
        const Pcapng form;
        const Octets packet = hex("FFFF 000C") + octetsOf(bytes);
        EXPECT_TRUE(readAll(form.section() + form.interface(254) + form.enhanced(0, packet)).items.empty()) << note;
    }
}

}  // namespace
}  // namespace nearcast::replay
