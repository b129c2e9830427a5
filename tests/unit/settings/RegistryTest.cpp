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
    const RegisteredPort* const port = registry.portOf(AddressKey(address));
    return port == nullptr ? std::nullopt : std::optional(std::string(port->name.view()));
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
    EXPECT_EQ(registry.portOf(AddressKey("Y"))->deviceType, 3);
    EXPECT_EQ(registry.deviceTypeOf("A"), 3);
}

TEST(Registry, EveryChangeIsCountedAndNoRefusalIs) {
    Registry registry;
    auto changed = [&registry, last = registry.changes()]() mutable {
        return registry.changes() != std::exchange(last, registry.changes());
    };
    registry.insert("A", recordOf("Z"));
    EXPECT_TRUE(changed());
    EXPECT_FALSE(registry.remove("B"));
    EXPECT_FALSE(changed());
    EXPECT_TRUE(registry.remove("A"));
    EXPECT_TRUE(changed());
    Registry other;
    registry.swap(other);
    EXPECT_TRUE(changed());
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

}  // namespace
}  // namespace nearcast
