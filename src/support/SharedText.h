// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace nearcast {

/// A text that is copied without a heap: a short one is held in place, a long one is shared by its copies. Immutable.
class SharedText {
public:
    /// The longest text that is held in place, in bytes.
    static constexpr std::size_t nearSize = 31;

    SharedText() = default;
    explicit SharedText(std::string_view text) {
        if (text.size() <= nearSize) {
            text.copy(near_.data(), text.size());
            size_ = static_cast<std::uint8_t>(text.size());
        } else {
            far_ = std::make_shared<const std::string>(text);
        }
    }

    /// Valid as long as this object, or for a long text as one of its copies.
    [[nodiscard]] std::string_view view() const noexcept {
        return far_ != nullptr ? std::string_view(*far_) : std::string_view(near_.data(), size_);
    }

private:
    std::array<char, nearSize> near_{};
    std::uint8_t size_ = 0;
    std::shared_ptr<const std::string> far_;
};

}  // namespace nearcast
