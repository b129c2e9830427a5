// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/AddressText.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace nearcast {

/// Texts that are no address as we spell them, each under a number that no address has. Not for several threads at
/// once.
class NumberedNames {
public:
    [[nodiscard]] static bool isName(PackedAddress number) noexcept { return number >= first; }

    [[nodiscard]] std::optional<PackedAddress> find(std::string_view name) const {
        const auto found = numbers_.find(name);
        return found == numbers_.end() ? std::nullopt : std::optional(found->second);
    }
    /// One that is not there yet.
    PackedAddress add(std::string_view name) {
        const auto place = numbers_.emplace(name, next_).first;
        names_.emplace(next_, &place->first);
        return next_++;
    }
    /// Of a number that `add` gave. Valid until it is removed.
    [[nodiscard]] const std::string& operator[](PackedAddress number) const { return *names_.at(number); }
    void remove(PackedAddress number) {
        const auto name = names_.find(number);
        numbers_.erase(numbers_.find(*name->second));
        names_.erase(name);
    }

private:
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>{}(text); }
    };
    static constexpr PackedAddress first = PackedAddress{1} << (8 * AddressText::octets);

    std::unordered_map<std::string, PackedAddress, TextHash, std::equal_to<>> numbers_;
    std::unordered_map<PackedAddress, const std::string*> names_;  ///< into `numbers_`
    PackedAddress next_ = first;
};

}  // namespace nearcast
