// SPDX-License-Identifier: Apache-2.0
// Any bytes as saved settings: loaded, saved and loaded again; and the registry's index against a walk through its
// records. An octet says how many changes of the registry follow; what is left is the text.
#include "Expect.h"
#include "platform/hciformat/ByteReader.h"
#include "platform/json/JSONSerialization.h"
#include "settings/Registry.h"
#include "settings/SavedSettings.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace nearcast::fuzz {

namespace {

const JSONSerialization JSON;

bool same(const Settings& left, const Settings& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const auto& a, const auto& b) { return a.first == b.first && *a.second == *b.second; });
}

/// The settings that the text holds; nothing where it holds none.
std::optional<Settings> loaded(std::string_view text) {
    try {
        return loadedSettings(text, JSON);
    } catch (const std::invalid_argument& problem) {
        expect(std::string_view(problem.what()).starts_with("settings: "), "the message says what is wrong");
        return std::nullopt;
    }
}

void checkSaving(const Settings& settings) {
    const auto text = savedSettings(settings, JSON);
    expect(text.has_value(), "what was loaded can be saved");
    const auto again = loaded(*text);
    expect(again && same(*again, settings), "what is saved is loaded as it was");
    expect(savedSettings(*again, JSON) == text, "what is saved again is the same text");
}

/// Compares the index with a walk through the records, for each address that one of them holds.
void checkIndex(const Registry& registry) {
    std::map<std::string, std::string> walked;
    for (const auto& [portName, record] : registry.records()) {
        const auto address = record->find(kQXDongleMACAddr);
        const auto* const text = address == record->end() ? nullptr : address->second.as<std::string>();
        if (text != nullptr) walked.emplace(*text, portName);
    }
    for (const auto& [address, portName] : walked) {
        const FoundPort found = registry.find(AddressKey(address));
        expect(found.port && found.nameOrNone() == portName, "an address is found in the first of its records");
        expect(registry.deviceTypeNow(found) == registry.deviceTypeOf(portName), "a port has its record's type");
    }
    for (const std::string_view address : {"", "00:11:22:AA:BB:CC", "(null)"}) {
        const bool held = walked.contains(std::string(address));
        expect(held == registry.find(AddressKey(address)).port.has_value(), "no address is found that none holds");
    }
}

/// Changes the registry: an even octet removes a record, an odd one enters it once more under a name before or after
/// its own.
void change(Registry& registry, std::uint8_t what) {
    const auto& records = registry.records();
    if (records.empty()) return;
    const auto place = std::next(records.begin(), static_cast<std::ptrdiff_t>(what / 4 % records.size()));
    const std::string name = place->first;
    const SettingRecordPointer record = place->second;
    if (what % 2 == 0) {
        expect(registry.remove(name), "what is there can be removed");
        expect(!registry.contains(name), "what was removed is gone");
        return;
    }
    const std::string other = what % 4 == 1 ? name + "+" : name.substr(0, name.size() / 2);
    registry.insert(other, record);
    expect(registry.contains(other), "what was entered is there");
}

void checkSettings(std::span<const std::uint8_t> bytes) {
    ByteReader input(bytes);
    const std::size_t changes = input.u8();
    const auto steps = input.take(std::min(changes, input.left()));
    const auto octets = input.rest();
    const auto settings = loaded({reinterpret_cast<const char*>(octets.data()), octets.size()});
    if (!settings) return;
    checkSaving(*settings);
    Registry registry(*settings);
    checkIndex(registry);
    for (const std::uint8_t step : steps) {
        change(registry, step);
        checkIndex(registry);
    }
    Registry whole(registry.records());
    checkIndex(whole);
    whole.swap(registry);
    checkIndex(whole);
}

}  // namespace

}  // namespace nearcast::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    nearcast::fuzz::checkSettings({data, size});
    return 0;
}
