// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/AddressText.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace nearcast {

/// The address of the dongle that an advertisement came from: six octets, without a heap, or made from a name.
class DongleAddress {
public:
    static constexpr std::size_t octets = AddressText::octets;

    /// Takes six octets, the first one first.
    void take(std::span<const std::uint8_t, octets> address) noexcept {
        PackedAddress packed = 0;
        for (const std::uint8_t octet : address) packed = packed << 8 | octet;
        text_.assign(packed);  // in place: a copy right behind the single bytes would wait for them
        key_ = AddressKey(packed, text_.view());
    }
    void take(std::string name) {
        name_ = std::move(name);
        key_ = AddressKey(name_);
    }

    DongleAddress() = default;
    DongleAddress(const DongleAddress&) = delete;
    DongleAddress& operator=(const DongleAddress&) = delete;

    [[nodiscard]] std::string_view text() const noexcept { return key_.text(); }
    /// Valid as long as this object stays as it is.
    [[nodiscard]] const AddressKey& key() const noexcept { return key_; }

private:
    AddressText text_;
    std::string name_;
    AddressKey key_{std::string_view()};
};

}  // namespace nearcast
