// SPDX-License-Identifier: Apache-2.0
#include <nearcast/LogWriter.h>
#include <nearcast/Platform.h>
#include <nearcast/QXNearcastManager.h>

#include "doubles/Crossing.h"
#include "doubles/KeptLines.h"
#include "platform/factory/PlatformFactory.h"
#include "platform/json/JSONSerialization.h"
#include "platform/system/Consoles.h"
#include "platform/virtual/VirtualPlatform.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <semaphore>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace nearcast {
namespace {

using Lines = std::vector<std::string>;
using doubles::Crosser;

const JSONSerialization serialization;

/// Calls `opening` when its radio is opened.
class MadePlatform : public VirtualPlatform {
public:
    MadePlatform(Console& console, std::function<void()> opening)
        : VirtualPlatform(console, serialization), opening_(std::move(opening)) {}
    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& delegate) override {
        ++radios;
        if (opening_) opening_();
        return VirtualPlatform::centralManager(delegate);
    }
    int radios = 0;

private:
    const std::function<void()> opening_;
};

/// Each test in a process of its own: the manager is the process's.
class SingletonMaking : public testing::Test {
protected:
    ~SingletonMaking() override { LogWriter::sharedInstance().stop(); }

    /// @param options whose console and listener count
    MadePlatform& choose(std::function<void()> opening = {}, const PlatformOptions& options = {}) {
        OpenedPlatform opened;
        const auto keep = [this](std::string_view line) { lines.emplace_back(line); };
        opened.console = std::make_unique<CallbackConsole>(options.console ? options.console : keep);
        auto platform = std::make_unique<MadePlatform>(*opened.console, std::move(opening));
        MadePlatform& made = *platform;
        opened.monitor = &platform->monitor();
        opened.monitor->setHealthChanged(options.radioHealthChanged);
        opened.services = std::move(platform);
        choosePlatform(std::move(opened));
        return made;
    }
    /// Calls `inside` in a synchronous sink, at the first record of that operation and type.
    static void trace(QXLogType type, std::string_view method, std::function<void()> inside) {
        LogWriter::Options options;
        options.synchronous = true;
        options.sink = [type, method, once = std::move(inside)](const LogRecord& record) mutable {
            if (record.logType != type || record.methodName != method) return;
            if (const auto call = std::exchange(once, nullptr)) call();
        };
        LogWriter::sharedInstance().start(std::move(options));
    }

    Lines lines;
};

TEST_F(SingletonMaking, GivesASinkAnErrorBeforeThereIsAnObject) {
    const MadePlatform& platform = choose();
    int refused = 0;
    const auto ask = [&] {
        try {
            QXNearcastManager::sharedManager();
        } catch (const std::logic_error&) {
            ++refused;
        }
    };
    trace(QXLogTypeProcess, "+[QXNearcastManager sharedManager]", ask);
    auto& manager = QXNearcastManager::sharedManager();
    EXPECT_EQ(refused, 1);
    EXPECT_EQ(platform.radios, 1);
    EXPECT_EQ(&manager, &QXNearcastManager::sharedManager());
    EXPECT_EQ(manager.samplingNumber(), 7U);
}

TEST_F(SingletonMaking, GivesASinkAnErrorUntilTheObjectIsAllocated) {
    choose();
    bool refused = false;
    trace(QXLogTypeProcess, "+[QXNearcastManager allocWithZone:]", [&] {
        EXPECT_EQ(QXNearcastManager::allocWithZone(nullptr), nullptr);
        EXPECT_THROW(QXNearcastManager::sharedManager(), std::logic_error);
        refused = true;
    });
    EXPECT_EQ(QXNearcastManager::sharedManager().samplingNumber(), 7U);
    EXPECT_TRUE(refused);
}

TEST_F(SingletonMaking, GivesASinkAnErrorWhileTheObjectIsAllocatedByItself) {
    const MadePlatform& platform = choose();
    bool refused = false;
    trace(QXLogTypeProcess, "+[QXNearcastManager allocWithZone:]", [&] {
        EXPECT_THROW(QXNearcastManager::sharedManager(), std::logic_error);
        refused = true;
    });
    EXPECT_NE(QXNearcastManager::allocWithZone(nullptr), nullptr);
    EXPECT_TRUE(refused);
    EXPECT_EQ(platform.radios, 0);
}

TEST_F(SingletonMaking, GivesASinkTheObjectOnceItIsAllocated) {
    choose();
    QXNearcastManager* given = nullptr;
    std::uint64_t samplingNumber = 1;
    trace(QXLogTypeInternalMethodStart, "-[QXNearcastManager init]", [&] {
        given = &QXNearcastManager::sharedManager();
        samplingNumber = given->samplingNumber();
    });
    EXPECT_EQ(&QXNearcastManager::sharedManager(), given);
    EXPECT_EQ(samplingNumber, 0U) << "not initialised yet";
    EXPECT_EQ(given->samplingNumber(), 7U);
}

TEST_F(SingletonMaking, InitialisesTheObjectThatASinkAllocatedMeanwhile) {
    const MadePlatform& platform = choose();
    QXNearcastManager* allocated = nullptr;
    trace(QXLogTypeProcess, "+[QXNearcastManager sharedManager]",
          [&] { allocated = QXNearcastManager::allocWithZone(nullptr); });
    EXPECT_EQ(&QXNearcastManager::sharedManager(), allocated);
    EXPECT_NE(allocated, nullptr);
    EXPECT_EQ(platform.radios, 1);
}

TEST_F(SingletonMaking, RefusesASinkThatWouldWaitForTheThreadThatMakesIt) {
    std::binary_semaphore sinking(0);
    std::binary_semaphore making(0);
    choose([&] {
        making.release();
        sinking.acquire();
    });
    bool refused = false;
    // The other thread's sink asks when this one is in the midst of making the manager, and traces next.
    Crosser maker([] { QXNearcastManager::sharedManager(); });
    making.acquire();
    trace(QXLogTypePavixAPIStart, "+[QXNearcastManager sharedManager]", [&] {
        sinking.release();
        EXPECT_THROW(QXNearcastManager::sharedManager(), std::system_error);
        refused = true;
    });
    Crosser asker([] { QXNearcastManager::sharedManager(); });
    maker.join();
    asker.join();
    EXPECT_TRUE(refused);
}

TEST_F(SingletonMaking, LetsTheConsoleAskForTheManagerWhileAnotherThreadMakesIt) {
    std::binary_semaphore inside(0);
    std::binary_semaphore making(0);
    Console* console = nullptr;
    PlatformOptions options;
    QXNearcastManager* given = nullptr;
    options.console = [&](std::string_view line) {
        if (line != "first") return;
        inside.release();
        making.acquire();
        given = &QXNearcastManager::sharedManager();
    };
    MadePlatform& platform = choose(
        [&] {
            making.release();
            console->NSLog("second");
        },
        options);
    console = &platform;
    Crosser first([&] { console->NSLog("first"); });
    inside.acquire();
    Crosser maker([] { QXNearcastManager::sharedManager(); });
    first.join();
    maker.join();
    EXPECT_EQ(given, &QXNearcastManager::sharedManager());
}

TEST_F(SingletonMaking, ThatFailsLeavesAnEmptyManagerAndSaysWhyOnTheConsoleAndInTheHealth) {
    RadioHealth told;
    PlatformOptions options;
    options.console = [&](std::string_view line) {
        lines.emplace_back(line);
        EXPECT_EQ(QXNearcastManager::sharedManager().samplingNumber(), 0U) << "no monitor is in its way";
    };
    options.radioHealthChanged = [&](const RadioHealth& health) { told = health; };
    choose([] { throw std::runtime_error("the dongle melted"); }, options);
    EXPECT_THROW(QXNearcastManager::sharedManager(), std::runtime_error);
    EXPECT_EQ(lines, Lines{"The radio cannot be opened: the dongle melted"});
    EXPECT_EQ(Platform::radioHealth().state, CBManagerStateUnknown);
    EXPECT_EQ(Platform::radioHealth().why, "the radio cannot be opened: the dongle melted");
    EXPECT_EQ(told.why, Platform::radioHealth().why);
    EXPECT_FALSE(QXNearcastManager::sharedManager().startScan());
    EXPECT_TRUE(QXNearcastManager::sharedManager().getSettings()->empty());
}

TEST_F(SingletonMaking, ThatFailsOnceIsForgottenWhenTheRadioOpensLater) {
    bool fails = true;
    choose([&] {
        if (std::exchange(fails, false)) throw 7;
    });
    EXPECT_ANY_THROW(QXNearcastManager::sharedManager());
    EXPECT_EQ(lines, Lines{"The radio cannot be opened: an exception of an unknown kind"});
    QXNearcastManager::sharedManager().init();
    EXPECT_EQ(Platform::radioHealth().state, CBManagerStatePoweredOn);
    EXPECT_EQ(Platform::radioHealth().why, "");
}

}  // namespace
}  // namespace nearcast
