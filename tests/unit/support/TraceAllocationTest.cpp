// SPDX-License-Identifier: Apache-2.0
#include "allocation/Allocations.h"
#include "support/Trace.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include <string>
#include <vector>

namespace nearcast {
namespace {

const std::string something = "a text that is too long to be held in place";

/// A writer whose sink keeps the texts.
class TraceAllocation : public testing::TestWithParam<bool> {
protected:
    TraceAllocation() {
        LogWriter::Options options;
        options.sink = [this](const LogRecord& record) { texts_.emplace_back(record.anyString); };
        options.synchronous = GetParam();
        LogWriter::sharedInstance().start(std::move(options));
    }
    ~TraceAllocation() override { LogWriter::sharedInstance().stop(); }
    TraceAllocation(const TraceAllocation&) = delete;
    TraceAllocation& operator=(const TraceAllocation&) = delete;

    const Trace trace_{this, "-[Shop open]", Trace::Audience::publicAPI};
    std::vector<std::string> texts_;
};

TEST_P(TraceAllocation, ARecordForWhichThereIsNoMemoryIsDroppedCountedAndToldAndDoesNotThrow) {
    {
        const allocation::Failure failure(1);
        EXPECT_NO_THROW(trace_.end("", something, ", -> ", true));
        EXPECT_TRUE(allocation::Failure::end());
    }
    EXPECT_EQ(LogWriter::sharedInstance().dropped(), 1U);
    trace_.end("then");
    LogWriter::sharedInstance().stop();
    EXPECT_EQ(texts_.size(), 2U);
    EXPECT_EQ(std::count(texts_.begin(), texts_.end(), "1 records were dropped"), 1);
    EXPECT_EQ(std::count(texts_.begin(), texts_.end(), "then"), 1);
}

TEST_P(TraceAllocation, WhatAPartThrowsOtherwisePassesToTheCaller) {
    EXPECT_THROW(trace_.process("", []() -> int { throw std::runtime_error("no such part"); }), std::runtime_error);
    EXPECT_EQ(LogWriter::sharedInstance().dropped(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Each, TraceAllocation, testing::Bool(),
                         [](const auto& one) { return one.param ? "Synchronous" : "Queued"; });

}  // namespace
}  // namespace nearcast
