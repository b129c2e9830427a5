// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nearcast {

/// A service identifier. Two are equal when they stand for the same 128 bits: 16- and 32-bit forms are completed with
/// the Bluetooth Base UUID (Core Specification, Volume 3, Part B, 2.5.1). A text that is no UUID equals the same text
/// in any letter case.
class CBUUID {
public:
    using Bytes = std::array<std::uint8_t, 16>;  ///< most significant octet first, as the text is read

    static CBUUID UUIDWithString(std::string_view text);
    static CBUUID UUIDWithBytes(const Bytes& bytes);
    static CBUUID UUIDWithShort(std::uint32_t value);  ///< the 16- or 32-bit form
    /// The same with the shortest canonical text that says it; what is no UUID stays as it is.
    [[nodiscard]] CBUUID shortest() const;

    /// The text it was made from, or the canonical upper-case one.
    [[nodiscard]] const std::string& UUIDString() const noexcept { return text_; }
    /// Its 128 bits; nothing where the text is no UUID.
    [[nodiscard]] const std::optional<Bytes>& bytes() const noexcept { return bytes_; }

    friend bool operator==(const CBUUID& left, const CBUUID& right) noexcept {
        return left.bytes_ == right.bytes_ && (left.bytes_ || left.folded_ == right.folded_);
    }

private:
    std::string text_;
    std::string folded_;  ///< lower case; used only where the text is no UUID
    std::optional<Bytes> bytes_;
};

}  // namespace nearcast
