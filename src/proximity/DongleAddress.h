// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/Manager.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace nearcast {

/// The address text of a dongle: written from six octets, without a heap, or made from a name.
struct Manager::DongleAddress {
    static constexpr std::size_t octets = 6;

    void format(std::span<const std::uint8_t, octets> address) {
        constexpr std::string_view digits = "0123456789ABCDEF";
        char* place = formatted_.data();
        for (const std::uint8_t octet : address) {
            *place++ = digits[octet >> 4];
            *place++ = digits[octet & 15];
            *place++ = ':';
        }
        view_ = std::string_view(formatted_.data(), formatted_.size() - 1);
    }
    void take(std::string name) {
        name_ = std::move(name);
        view_ = name_;
    }
    [[nodiscard]] std::string_view text() const { return view_; }

private:
    std::array<char, octets * 3> formatted_{};
    std::string name_;
    std::string_view view_;
};

}  // namespace nearcast
