// SPDX-License-Identifier: Apache-2.0
#include "record/RecordSession.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace nearcast::cli {
namespace {

using std::chrono::microseconds;

struct Kept {
    std::vector<replay::RecordedItem> items;
    bool full = false;
};

class KeepingWriter : public replay::RecordingWriter {
public:
    explicit KeepingWriter(Kept& kept) : kept_(kept) {}
    void write(const replay::RecordedItem& item) override {
        if (kept_.full) throw std::runtime_error("the disk is full");
        kept_.items.push_back(item);
    }

private:
    Kept& kept_;
};

RadioHealth healthWith(CBManagerState state, std::string why = {}) {
    RadioHealth health;
    health.state = state;
    health.why = std::move(why);
    return health;
}

class RecordSessionTest : public testing::Test {
protected:
    Kept kept_;
    int broke_ = 0;
    RecordSession session_{std::make_unique<KeepingWriter>(kept_), [this] { ++broke_; }};
};

TEST_F(RecordSessionTest, ARadioThatIsPoweredOnFromTheBeginningNeedsNoWord) {
    session_.begin(CBManagerStatePoweredOn);
    EXPECT_TRUE(kept_.items.empty());
}

TEST_F(RecordSessionTest, ARadioThatIsNotPoweredOnSaysSoFirst) {
    session_.begin(CBManagerStatePoweredOff);
    ASSERT_EQ(kept_.items.size(), 1U);
    EXPECT_EQ(std::get<replay::RecordedState>(kept_.items[0]).state, CBManagerStatePoweredOff);
    EXPECT_EQ(std::get<replay::RecordedState>(kept_.items[0]).at, microseconds(0));
}

TEST_F(RecordSessionTest, AnotherReasonOfTheSameStateIsNoChange) {
    session_.begin(CBManagerStatePoweredOn);
    session_.changed(healthWith(CBManagerStatePoweredOff, "switched off"), microseconds(5));
    session_.changed(healthWith(CBManagerStatePoweredOff, "blocked"), microseconds(6));
    EXPECT_EQ(kept_.items.size(), 1U);
}

TEST_F(RecordSessionTest, TimesNeverGoBack) {
    session_.heard({}, microseconds(9));
    session_.changed(healthWith(CBManagerStateUnknown), microseconds(8));
    session_.end(microseconds(7));
    ASSERT_EQ(kept_.items.size(), 3U);
    for (const replay::RecordedItem& item : kept_.items) EXPECT_EQ(timeOf(item), microseconds(9));
}

TEST_F(RecordSessionTest, ADiskThatIsFullEndsItWithItsReason) {
    session_.heard({}, microseconds(1));
    kept_.full = true;
    session_.heard({}, microseconds(2));
    EXPECT_EQ(broke_, 1);
    kept_.full = false;
    session_.heard({}, microseconds(3));
    EXPECT_EQ(kept_.items.size(), 1U);
    EXPECT_EQ(broke_, 1);
    EXPECT_THROW(session_.end(microseconds(4)), std::runtime_error);
}

}  // namespace
}  // namespace nearcast::cli
