// SPDX-License-Identifier: Apache-2.0
#include <nearcast/LogWriter.h>
#include <nearcast/QXNearcastManager.h>

#include "doubles/Journal.h"
#include "platform/json/JSONSerialization.h"
#include "platform/virtual/VirtualPlatform.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace nearcast {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

// The one manager lives as long as the process, and so does what it stands on.
doubles::Journal& journal() {
    static auto* const one = new doubles::Journal;
    return *one;
}

class CountingPlatform : public VirtualPlatform {
public:
    CountingPlatform(Console& console, const NSJSONSerialization& JSON) : VirtualPlatform(console, JSON, &journal()) {}
    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& delegate) override {
        ++radios;
        if (radios <= failures) throw std::runtime_error("no radio");
        return VirtualPlatform::centralManager(delegate);
    }
    int radios = 0;
    int failures = 0;
};

/// Chooses a virtual platform before the manager is made.
CountingPlatform& choosePlatform() {
    static const JSONSerialization JSON;
    auto platform = std::make_unique<CountingPlatform>(journal(), JSON);
    CountingPlatform& chosen = *platform;
    setCurrentPlatform(std::move(platform));
    return chosen;
}

const Lines creation{
    "trace 0 sharedManager: ",
    "trace 6 sharedManager: sharedInstance == nil, <ptr>",
    "trace 2 allocWithZone:: <ptr>",
    "trace 6 allocWithZone:: sharedInstance == nil, <ptr>",
    "trace 3 allocWithZone:: <ptr>, -> <ptr>",
    "trace 2 init: ",
    "trace 6 init: self != nil: <ptr>",
    "trace 3 init: -> <ptr>",
    "trace 1 sharedManager: -> <ptr>",
};

TEST(Singleton, GivesTheSameObjectTwiceAndInitialisesItOnce) {
    const CountingPlatform& platform = choosePlatform();
    auto& first = QXNearcastManager::sharedManager();
    EXPECT_EQ(&first, &QXNearcastManager::sharedManager());
    EXPECT_EQ(platform.radios, 1);
}

TEST(Singleton, TracesItsCreationOnceAndEachCall) {
    choosePlatform();
    journal().watchTraces();
    QXNearcastManager::sharedManager();
    EXPECT_EQ(journal().lines(), creation);
    journal().clear();
    QXNearcastManager::sharedManager();
    EXPECT_EQ(journal().lines(), (Lines{creation.front(), creation.back()}));
    LogWriter::sharedInstance().stop();
}

TEST(Singleton, AllocationAfterCreationYieldsNone) {
    choosePlatform();
    auto& manager = QXNearcastManager::sharedManager();
    journal().watchTraces();
    EXPECT_EQ(QXNearcastManager::allocWithZone(nullptr), nullptr);
    EXPECT_EQ(journal().lines(), (Lines{"trace 2 allocWithZone:: <ptr>", "trace 3 allocWithZone:: <ptr>, -> <ptr>"}));
    LogWriter::sharedInstance().stop();
    EXPECT_EQ(&manager, &QXNearcastManager::sharedManager());
}

TEST(Singleton, AllocationBeforeAnybodyAskedMakesTheOneInstance) {
    const CountingPlatform& platform = choosePlatform();
    auto* const allocated = QXNearcastManager::allocWithZone(nullptr);
    ASSERT_NE(allocated, nullptr);
    EXPECT_EQ(QXNearcastManager::allocWithZone(nullptr), nullptr);
    EXPECT_EQ(&QXNearcastManager::sharedManager(), allocated);
    EXPECT_EQ(platform.radios, 0) << "sharedManager finds an instance and does not initialise another";
    EXPECT_EQ(allocated->init(), allocated);
    EXPECT_EQ(platform.radios, 1);
    EXPECT_EQ(allocated->samplingNumber(), 7U);
}

TEST(Singleton, AnsweredWithoutInitialisationIsAnEmptyManagerWithoutARadio) {
    CountingPlatform& platform = choosePlatform();
    auto& manager = *QXNearcastManager::allocWithZone(nullptr);
    EXPECT_FALSE(manager.startScan());
    EXPECT_EQ(platform.date().sinceStart(), 1s) << "a radio that is not there never knows its state";
    EXPECT_EQ(manager.calibrateActionArea("A"), 127);
    EXPECT_EQ(platform.date().sinceStart(), 8s);
    manager.stopScan();
    EXPECT_EQ(manager.getRSSI("A"), 127);
    EXPECT_TRUE(manager.getSettings()->empty());
    EXPECT_EQ(manager.serializedSettings(), "{}");
    EXPECT_EQ(manager.delegate(), nullptr);
    EXPECT_EQ(journal().lines(), Lines{"console Bluetooth Low Energy is not supported."});
}

TEST(Singleton, CanBeNeitherCopiedNorReleased) {
    choosePlatform();
    auto& manager = QXNearcastManager::sharedManager();
    EXPECT_EQ(manager.copyWithZone(nullptr), &manager);
    EXPECT_EQ(manager.retain(), &manager);
    EXPECT_EQ(manager.autorelease(), &manager);
    EXPECT_EQ(manager.retainCount(), 4294967295U);
    for (int times = 0; times < 5; ++times) manager.release();
    EXPECT_EQ(manager.retainCount(), 4294967295U);
    EXPECT_TRUE(manager.startScan());
    manager.stopScan();
}

TEST(Singleton, TracesTheOperationsOnReferences) {
    choosePlatform();
    auto& manager = QXNearcastManager::sharedManager();
    journal().watchTraces();
    manager.copyWithZone(nullptr);
    manager.retain();
    manager.retainCount();
    manager.release();
    manager.autorelease();
    LogWriter::sharedInstance().stop();
    EXPECT_EQ(
        journal().lines(),
        (Lines{"trace 2 copyWithZone:: <ptr>", "trace 3 copyWithZone:: <ptr>, -> <ptr>",
               "trace 2 retain: ", "trace 3 retain: -> <ptr>", "trace 2 retainCount: ", "trace 3 retainCount: -> -1",
               "trace 2 release: ", "trace 3 release: ", "trace 2 autorelease: ", "trace 3 autorelease: -> <ptr>"}));
}

TEST(Singleton, IsEmptyDirectlyAfterCreation) {
    choosePlatform();
    auto& manager = QXNearcastManager::sharedManager();
    EXPECT_EQ(manager.samplingNumber(), 7U);
    EXPECT_EQ(manager.delegate(), nullptr);
    EXPECT_TRUE(manager.getSettings()->empty());
    EXPECT_EQ(manager.getRSSI("00:11:22:AA:BB:CC"), 127);
    EXPECT_EQ(journal().lines(), Lines{}) << "creation starts and stops nothing";
}

TEST(Singleton, KeepsItsDelegateAliveUntilAnotherOrNoneIsSet) {
    choosePlatform();
    auto& manager = QXNearcastManager::sharedManager();
    auto first = std::make_shared<QXNearcastManagerDelegate>();
    const std::weak_ptr<QXNearcastManagerDelegate> watched = first;
    manager.setDelegate(std::move(first));
    EXPECT_FALSE(watched.expired());
    EXPECT_EQ(manager.delegate(), watched.lock());
    auto second = std::make_shared<QXNearcastManagerDelegate>();
    const std::weak_ptr<QXNearcastManagerDelegate> secondWatched = second;
    manager.setDelegate(std::move(second));
    EXPECT_TRUE(watched.expired());
    EXPECT_FALSE(secondWatched.expired());
    manager.setDelegate(nullptr);
    EXPECT_TRUE(secondWatched.expired());
}

TEST(Singleton, LeavesItsMonitorWhenCreationThrowsAndCanBeInitialisedLater) {
    CountingPlatform& platform = choosePlatform();
    platform.failures = 1;
    EXPECT_THROW(QXNearcastManager::sharedManager(), std::runtime_error);
    auto& manager = QXNearcastManager::sharedManager();
    EXPECT_EQ(platform.radios, 1) << "the storage is there, so nothing is made anew";
    EXPECT_EQ(manager.init(), &manager);
    EXPECT_EQ(platform.radios, 2);
    EXPECT_TRUE(manager.startScan());
    manager.stopScan();
}

TEST(Singleton, FixesThePlatform) {
    choosePlatform();
    QXNearcastManager::sharedManager();
    EXPECT_THROW(setCurrentPlatform(nullptr), std::logic_error);
}

}  // namespace
}  // namespace nearcast
