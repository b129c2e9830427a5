// SPDX-License-Identifier: Apache-2.0
#include "support/Trace.h"

#include "unit/support/LogWriterFixture.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>

namespace nearcast {

namespace {

class TraceTest : public testing::Test {
protected:
    void SetUp() override {
        writer.start({[this](const LogRecord& record) { seen.add(record); }, 0, 16, true});
    }
    void TearDown() override { writer.stop(); }

    template <class... Parts>
    std::string textOf(const Parts&... parts) {
        trace.process("", parts...);
        const auto texts = seen.texts();
        return texts.empty() ? "no record" : texts.back();
    }

    LogWriter& writer = LogWriter::sharedInstance();
    SeenRecords seen;
    const Trace trace{this, "-[Class method:]", Trace::Audience::publicAPI};
    const Trace inner{this, "-[Class inner]", Trace::Audience::internal};
};

TEST_F(TraceTest, GivesEachKindOfRecordItsTypeByAudience) {
    trace.start("");
    trace.end("");
    inner.start("");
    inner.end("");
    inner.process("");
    inner.error("");
    std::vector<int> types;
    for (const auto& record : seen.all()) types.push_back(record.logType);
    EXPECT_EQ(types, (std::vector<int>{0, 1, 2, 3, 6, 7}));
}

TEST_F(TraceTest, NamesTheObjectTheMethodAndTheCallingLine) {
    const auto line = static_cast<std::uint32_t>(__LINE__) + 1;
    trace.error("x == nil");
    const auto record = seen.all().at(0);
    EXPECT_EQ(record.objectAddress, this);
    EXPECT_EQ(record.methodName, "-[Class method:]");
    EXPECT_EQ(record.logLevel, 0);
    EXPECT_EQ(record.lineNumber, line);
    EXPECT_EQ(record.fileName, "tests/unit/support/TraceTest.cpp");
}

TEST_F(TraceTest, JoinsTheLeadAndThePartsInOrder) {
    trace.process("rawRSSIQueue.count < self.samplingNumber, ", 3u, ", ", std::uint64_t{7});
    EXPECT_EQ(seen.texts().at(0), "rawRSSIQueue.count < self.samplingNumber, 3, 7");
}

TEST_F(TraceTest, RendersTextsAsTheyAre) {
    const char* const none = nullptr;
    EXPECT_EQ(textOf("literal"), "literal");
    EXPECT_EQ(textOf(std::string("string\n")), "string\n");
    EXPECT_EQ(textOf(std::string_view("view")), "view");
    EXPECT_EQ(textOf(none), "(null)");
}

TEST_F(TraceTest, RendersAnAbsentTextAsNull) {
    EXPECT_EQ(textOf(std::optional<std::string_view>()), "(null)");
    EXPECT_EQ(textOf(std::optional<std::string_view>("")), "");
    EXPECT_EQ(textOf(std::optional<std::string>()), "(null)");
    EXPECT_EQ(textOf(std::optional<std::string>("text")), "text");
    EXPECT_EQ(textOf(std::optional<std::int32_t>(-65)), "-65");
}

TEST_F(TraceTest, RendersNumbersInDecimal) {
    EXPECT_EQ(textOf(true), "1");
    EXPECT_EQ(textOf(false), "0");
    EXPECT_EQ(textOf(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(textOf(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
    EXPECT_EQ(textOf(std::uint8_t{65}), "65");
    EXPECT_EQ(textOf(std::int8_t{-1}), "-1");
    EXPECT_EQ(textOf(QXLogTypeError), "7");
}

TEST_F(TraceTest, RendersPointersInLowerCaseHexadecimal) {
    EXPECT_EQ(textOf(Pointer{}), "0x0");
    EXPECT_EQ(textOf(Pointer{reinterpret_cast<const void*>(std::uintptr_t{0xABCDEF01})}), "0xabcdef01");
    EXPECT_EQ(textOf(Pointer{reinterpret_cast<const void*>(std::numeric_limits<std::uintptr_t>::max())}),
              "0xffffffffffffffff");
}

TEST_F(TraceTest, AsksACallableForItsText) {
    EXPECT_EQ(textOf([] { return std::string("made"); }, [] { return 3; }, [] { return Pointer{}; }), "made30x0");
}

TEST_F(TraceTest, PassesOnWhatACallableThrows) {
    const auto throws = []() -> int { throw std::runtime_error("no"); };
    EXPECT_THROW(trace.process("", throws), std::runtime_error);
    EXPECT_TRUE(seen.texts().empty());
}

TEST_F(TraceTest, BuildsNothingWhileTheWriterIsOff) {
    writer.stop();
    bool asked = false;
    trace.start("", [&] { return asked = true; });
    EXPECT_FALSE(asked);
}

TEST_F(TraceTest, BuildsNothingWhenLevelZeroIsNotWanted) {
    bool asked = false;
    const auto part = [&] { return asked = true; };
    writer.start({[this](const LogRecord& record) { seen.add(record); }, -1, 16, true});
    trace.start("", part);
    EXPECT_FALSE(asked);
    writer.start({[this](const LogRecord& record) { seen.add(record); }, 0, 16, true});
    trace.start("", part);
    EXPECT_TRUE(asked);
}

}  // namespace

}  // namespace nearcast
