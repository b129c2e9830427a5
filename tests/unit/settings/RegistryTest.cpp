// SPDX-License-Identifier: Apache-2.0
#include "settings/Registry.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>

namespace nearcast {
namespace {

SettingRecordPointer recordOf(const std::string& address, std::int32_t deviceType = 1) {
    return std::make_shared<const SettingRecord>(
        SettingRecord{{std::string(kQXDongleMACAddr), address}, {std::string(kQXDeviceType), deviceType}});
}

std::optional<std::string> nameFor(const Registry& registry, const std::string& address) {
    const FoundPort found = registry.find(AddressKey(address));
    return found.port ? std::optional(std::string(found.port->name.view())) : std::nullopt;
}

/// What a walk through the records in their order finds.
std::optional<std::string> nameByWalk(const Registry& registry, const std::string& address) {
    for (const auto& [portName, record] : registry.records()) {
        const auto held = record->find(kQXDongleMACAddr);
        if (held != record->end() && held->second == SettingValue(address)) return portName;
    }
    return std::nullopt;
}

TEST(Registry, OfSeveralRecordsWithOneAddressTheFirstInOrderIsFound) {
    Registry registry;
    for (const char* const name : {"B", "A", "C"}) registry.insert(name, recordOf("Z"));
    EXPECT_EQ(nameFor(registry, "Z"), "A");
    registry.remove("A");
    EXPECT_EQ(nameFor(registry, "Z"), "B");
    registry.remove("C");
    EXPECT_EQ(nameFor(registry, "Z"), "B");
    registry.remove("B");
    EXPECT_EQ(nameFor(registry, "Z"), std::nullopt);
}

TEST(Registry, ARecordThatIsReplacedIsNotFoundByItsOldAddress) {
    Registry registry;
    registry.insert("A", recordOf("Z", 1));
    registry.insert("A", recordOf("Y", 3));
    EXPECT_EQ(nameFor(registry, "Z"), std::nullopt);
    EXPECT_EQ(registry.find(AddressKey("Y")).port->deviceType, 3);
    EXPECT_EQ(registry.deviceTypeOf("A"), 3);
}

/// A registry with one port, and what it said of it before the test changes it.
class FoundPortTest : public testing::Test {
protected:
    FoundPortTest() {
        registry_.insert("A", recordOf("Z", 1));
        found_ = registry_.find(AddressKey("Z"));
    }
    [[nodiscard]] std::int32_t typeNow() const { return registry_.deviceTypeNow(found_); }

    Registry registry_;
    FoundPort found_;
};

TEST_F(FoundPortTest, HasTheTypeThatWasFoundWhileNothingChanges) {
    EXPECT_EQ(found_.nameOrNone(), "A");
    EXPECT_FALSE(registry_.remove("B"));
    EXPECT_EQ(typeNow(), 1);
}

TEST_F(FoundPortTest, HasTheTypeOfARecordThatReplacedItsOwn) {
    registry_.insert("A", recordOf("Z", 3));
    EXPECT_EQ(typeNow(), 3);
}

TEST_F(FoundPortTest, HasTheTypeOfItsRecordWhateverAddressThatHasNow) {
    registry_.insert("A", recordOf("Y", 3));
    registry_.insert("B", recordOf("Z", 2));
    EXPECT_EQ(typeNow(), 3);
}

TEST_F(FoundPortTest, HasNoTypeOnceItsRecordIsGone) {
    registry_.remove("A");
    EXPECT_EQ(typeNow(), 0);
}

TEST_F(FoundPortTest, HasTheTypeThatALoadedRegistryGivesIt) {
    Registry loaded(Settings{{"A", recordOf("Z", 2)}});
    registry_.swap(loaded);
    EXPECT_EQ(typeNow(), 2);
}

TEST_F(FoundPortTest, IsNoneForAnAddressThatNobodyHolds) {
    EXPECT_FALSE(registry_.find(AddressKey("Y")).port);
    EXPECT_EQ(registry_.find(AddressKey("Y")).nameOrNone(), "");
}

TEST(Registry, AgreesWithAWalkThroughItsRecordsWhateverHappensToIt) {
    std::mt19937 random(7);
    const auto someAddress = [&random] {
        return random() % 2 == 0 ? std::string(AddressText(random() % 5).view())
                                 : "name " + std::to_string(random() % 5);
    };
    Registry registry;
    for (int step = 0; step < 5000; ++step) {
        const std::string name = std::to_string(random() % 12);
        if (random() % 3 == 0) {
            registry.remove(name);
        } else {
            registry.insert(name,
                            random() % 8 == 0 ? std::make_shared<const SettingRecord>() : recordOf(someAddress()));
        }
        if (random() % 50 == 0) {
            Registry loaded(registry.records());
            registry.swap(loaded);
        }
        const std::string address = someAddress();
        ASSERT_EQ(nameFor(registry, address), nameByWalk(registry, address)) << step;
    }
}

TEST(SharedText, IsTheSameShortAndLong) {
    for (const std::size_t size : {std::size_t{0}, SharedText::nearSize, SharedText::nearSize + 1, std::size_t{1000}}) {
        const std::string text(size, 'x');
        SharedText copy;
        {
            const SharedText shared(text);
            copy = shared;
        }
        EXPECT_EQ(copy.view(), text) << size;
    }
}

}  // namespace
}  // namespace nearcast
