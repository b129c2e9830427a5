// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace nearcast {

/// Reads numbers out of bytes, and never past their end: a read that does not fit gives zeros (or an empty span), uses
/// up what is left, and is remembered by `failed`. So a whole header is read first and judged once.
class ByteReader {
public:
    enum class Order { little, big };

    explicit ByteReader(std::span<const std::uint8_t> bytes, Order order = Order::little)
        : bytes_(bytes), order_(order) {}

    /// Whether any read so far went past the end.
    [[nodiscard]] bool failed() const noexcept { return failed_; }
    [[nodiscard]] std::size_t left() const noexcept { return bytes_.size() - position_; }
    [[nodiscard]] std::size_t position() const noexcept { return position_; }

    std::uint8_t u8() { return static_cast<std::uint8_t>(number(1)); }
    std::int8_t i8() { return static_cast<std::int8_t>(u8()); }
    std::uint16_t u16() { return static_cast<std::uint16_t>(number(2)); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(number(4)); }
    std::uint64_t u64() { return number(8); }

    /// The next `count` bytes.
    std::span<const std::uint8_t> take(std::size_t count) {
        if (count > left()) {
            failed_ = true;
            position_ = bytes_.size();
            return {};
        }
        const auto taken = bytes_.subspan(position_, count);
        position_ += count;
        return taken;
    }
    void skip(std::size_t count) { take(count); }
    /// All that is left.
    std::span<const std::uint8_t> rest() { return take(left()); }

private:
    std::uint64_t number(std::size_t octets) {
        std::uint64_t value = 0;
        const auto taken = take(octets);
        for (std::size_t i = 0; i < taken.size(); ++i) {
            const std::uint64_t octet = order_ == Order::big ? taken[i] : taken[taken.size() - 1 - i];
            value = value << 8 | octet;
        }
        return value;
    }

    std::span<const std::uint8_t> bytes_;
    std::size_t position_ = 0;
    Order order_;
    bool failed_ = false;
};

}  // namespace nearcast
