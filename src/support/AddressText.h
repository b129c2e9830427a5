// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

namespace nearcast {

/// The six octets of an address as one number, the first octet the highest.
using PackedAddress = std::uint64_t;

/// The text of an address: "00:11:22:AA:BB:CC". A plain value without a heap.
class AddressText {
public:
    static constexpr std::size_t octets = 6;
    static constexpr std::size_t length = octets * 3 - 1;

    AddressText() = default;
    explicit AddressText(PackedAddress address) noexcept { assign(address); }
    void assign(PackedAddress address) noexcept;

    [[nodiscard]] std::string_view view() const noexcept { return {text_.data(), length}; }

private:
    std::array<char, octets * 3 + 1> text_;
};

/// Stands for no address.
inline constexpr PackedAddress noAddress = std::numeric_limits<PackedAddress>::max();

/// The address behind a text that is spelt exactly as `AddressText` spells it; of any other text `noAddress`.
PackedAddress packedAddress(std::string_view text) noexcept;

/// A factor to spread addresses over a table by: odd, and chosen by chance once in a process.
/// @param wanted in place of chance, where it is not 0 and this is the first call; for measurements that have to be
///               repeatable
std::uint64_t hashFactor(std::uint64_t wanted = 0) noexcept;

/// An address as tables are asked for it: a text, and its number where it has one. A view; the text lives longer.
class AddressKey {
public:
    explicit AddressKey(std::string_view text) noexcept : text_(text), packed_(packedAddress(text)) {}
    /// @param text how `AddressText` spells `packed`
    AddressKey(PackedAddress packed, std::string_view text) noexcept : text_(text), packed_(packed) {}

    [[nodiscard]] std::string_view text() const noexcept { return text_; }
    /// `noAddress` where the text is spelt otherwise.
    [[nodiscard]] PackedAddress packed() const noexcept { return packed_; }

private:
    std::string_view text_;
    PackedAddress packed_;
};

}  // namespace nearcast
