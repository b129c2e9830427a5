// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace nearcast {

/// The six octets of an address as one number, the first octet the highest.
using PackedAddress = std::uint64_t;

/// The text of an address: "00:11:22:AA:BB:CC". A plain value without a heap.
class AddressText {
public:
    static constexpr std::size_t octets = 6;
    static constexpr std::size_t length = octets * 3 - 1;

    AddressText() = default;
    explicit AddressText(PackedAddress address) noexcept;

    [[nodiscard]] std::string_view view() const noexcept { return {text_.data(), length}; }

private:
    std::array<char, octets * 3> text_{};
};

/// The address behind a text that is spelt exactly as `AddressText` spells it; of any other text nothing.
std::optional<PackedAddress> packedAddress(std::string_view text) noexcept;

/// An address as tables are asked for it: a text, and its number where it has one. A view; the text lives longer.
class AddressKey {
public:
    explicit AddressKey(std::string_view text) noexcept : text_(text), packed_(packedAddress(text)) {}
    /// @param text how `AddressText` spells `packed`
    AddressKey(PackedAddress packed, std::string_view text) noexcept : text_(text), packed_(packed) {}

    [[nodiscard]] std::string_view text() const noexcept { return text_; }
    [[nodiscard]] const std::optional<PackedAddress>& packed() const noexcept { return packed_; }

private:
    std::string_view text_;
    std::optional<PackedAddress> packed_;
};

/// A table by address text, compared letter by letter. Nearly all texts are addresses as we spell them ourselves; they
/// are kept as numbers, which takes less memory and fewer steps. Values stay in their place until they are erased.
template <class Value>
class AddressMap {
    // Dongles of one maker count up in the last octets, and anybody may advertise any address: every bit has to reach
    // the bucket.
    struct PackedHash {
        std::size_t operator()(PackedAddress address) const noexcept {
            constexpr std::uint64_t odd = 0x9E3779B97F4A7C15;
            const std::uint64_t mixed = address * odd;
            return static_cast<std::size_t>(mixed ^ (mixed >> 32));
        }
    };
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>{}(text); }
    };

public:
    using Addresses = std::unordered_map<PackedAddress, Value, PackedHash>;
    using Names = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;

    /// Null where there is none.
    [[nodiscard]] Value* find(const AddressKey& key) {
        return key.packed() ? valueOf(addresses_, *key.packed()) : valueOf(names_, key.text());
    }
    [[nodiscard]] const Value* find(const AddressKey& key) const {
        return key.packed() ? valueOf(addresses_, *key.packed()) : valueOf(names_, key.text());
    }

    /// Makes the value of `parts` where there is none yet.
    /// @return the value, and whether it is new
    template <class... Parts>
    std::pair<Value&, bool> emplace(const AddressKey& key, Parts&&... parts) {
        if (key.packed()) return made(addresses_.try_emplace(*key.packed(), std::forward<Parts>(parts)...));
        return made(names_.try_emplace(std::string(key.text()), std::forward<Parts>(parts)...));
    }

    void erase(const AddressKey& key) {
        if (key.packed()) {
            addresses_.erase(*key.packed());
        } else if (const auto found = names_.find(key.text()); found != names_.end()) {
            names_.erase(found);
        }
    }

    [[nodiscard]] std::size_t size() const noexcept { return addresses_.size() + names_.size(); }
    [[nodiscard]] bool empty() const noexcept { return size() == 0; }
    void reserve(std::size_t count) { addresses_.reserve(count); }

    /// The two halves, for those who walk through all values.
    [[nodiscard]] Addresses& addresses() noexcept { return addresses_; }
    [[nodiscard]] Names& names() noexcept { return names_; }

private:
    template <class Map, class Key>
    static auto valueOf(Map& map, const Key& key) -> decltype(&map.begin()->second) {
        const auto found = map.find(key);
        return found == map.end() ? nullptr : &found->second;
    }
    template <class Made>
    static std::pair<Value&, bool> made(const Made& place) {
        return {place.first->second, place.second};
    }

    Addresses addresses_;
    Names names_;
};

}  // namespace nearcast
