// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>

namespace nearcast::lab {

using Bytes = std::vector<std::uint8_t>;

/// Puts packets together octet by octet; numbers low octet first, as HCI has them.
class Packet {
public:
    Packet() = default;
    Packet(std::initializer_list<std::uint8_t> octets) : bytes_(octets) {}

    Packet& u8(unsigned value) {
        bytes_.push_back(static_cast<std::uint8_t>(value));
        return *this;
    }
    Packet& u16(unsigned value) { return u8(value & 0xffU).u8(value >> 8U); }
    Packet& add(std::span<const std::uint8_t> octets) {
        bytes_.insert(bytes_.end(), octets.begin(), octets.end());
        return *this;
    }
    Packet& zeros(std::size_t count) {
        bytes_.resize(bytes_.size() + count);
        return *this;
    }
    [[nodiscard]] std::size_t size() const { return bytes_.size(); }
    [[nodiscard]] const Bytes& bytes() const { return bytes_; }

private:
    Bytes bytes_;
};

}  // namespace nearcast::lab
