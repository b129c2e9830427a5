// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Platform.h>

#include "doubles/Journal.h"
#include "platform/factory/PlatformFactory.h"
#include "platform/json/JSONSerialization.h"
#include "platform/virtual/VirtualPlatform.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <utility>

namespace nearcast {
namespace {

// Each test runs in a process of its own: the choice is the process's.

const JSONSerialization serialization;

/// Calls `asked` while it is asked for the date, and notes its end.
class WatchedPlatform : public VirtualPlatform {
public:
    WatchedPlatform(Console& console, bool& gone, std::function<void()> asked)
        : VirtualPlatform(console, serialization), gone_(gone), asked_(std::move(asked)) {}
    ~WatchedPlatform() override { gone_ = true; }

    [[nodiscard]] NSDate date() const override {
        asked_();
        return VirtualPlatform::date();
    }

private:
    bool& gone_;
    const std::function<void()> asked_;
};

/// Calls `run` while it is driven, and notes its end and whether it was interrupted.
class WatchedDrive : public Drive {
public:
    struct Notes {
        bool gone = false;
        bool interrupted = false;
        std::function<void()> run = [] {};
    };
    explicit WatchedDrive(Notes& notes) : notes_(notes) {}
    ~WatchedDrive() override { notes_.gone = true; }

    int descriptor() override { return -1; }
    void dispatch() override {}
    bool runFor(std::chrono::microseconds /*duration*/) override {
        notes_.run();
        return true;
    }
    void interrupt() override { notes_.interrupted = true; }
    [[nodiscard]] std::string failure() const override { return {}; }

private:
    Notes& notes_;
};

class CurrentPlatform : public testing::Test {
protected:
    std::unique_ptr<PlatformServices> virtualPlatform() {
        return std::make_unique<VirtualPlatform>(journal_, serialization);
    }
    OpenedPlatform drivenPlatform(WatchedDrive::Notes& notes) {
        return {nullptr, virtualPlatform(), std::make_unique<WatchedDrive>(notes), nullptr};
    }

    doubles::Journal journal_;
};

TEST_F(CurrentPlatform, ThatIsReplacedOutlivesWhoAsksItForTheTime) {
    bool gone = false;
    bool goneWhileAsked = true;
    setCurrentPlatform(std::make_unique<WatchedPlatform>(journal_, gone, [&] {
        setCurrentPlatform(virtualPlatform());
        goneWhileAsked = gone;
    }));
    Platform::now();
    EXPECT_FALSE(goneWhileAsked);
    EXPECT_TRUE(gone) << "nobody keeps it afterwards";
}

TEST_F(CurrentPlatform, ThatIsReplacedOutlivesWhoRunsIt) {
    WatchedDrive::Notes notes;
    bool goneWhileRun = true;
    notes.run = [&] {
        setCurrentPlatform(virtualPlatform());
        goneWhileRun = notes.gone;
    };
    choosePlatform(drivenPlatform(notes));
    EXPECT_TRUE(Platform::runFor(1));
    EXPECT_FALSE(goneWhileRun);
    EXPECT_TRUE(notes.gone) << "nobody keeps it afterwards";
}

TEST_F(CurrentPlatform, ThatIsReplacedEndsTheRunThatIsUnderWay) {
    WatchedDrive::Notes notes;
    notes.run = [&] { setCurrentPlatform(virtualPlatform()); };
    choosePlatform(drivenPlatform(notes));
    Platform::runFor(1);
    EXPECT_TRUE(notes.interrupted);
}

TEST_F(CurrentPlatform, IsFixedOnceTheManagerStandsOnIt) {
    bool gone = false;
    setCurrentPlatform(std::make_unique<WatchedPlatform>(journal_, gone, [] {}));
    currentPlatform();
    EXPECT_THROW(setCurrentPlatform(virtualPlatform()), std::logic_error);
    EXPECT_FALSE(gone);
}

}  // namespace
}  // namespace nearcast
