// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/AddressText.h"
#include "support/PackedAddressMap.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace nearcast {

/// A table of pointers by address text, compared letter by letter. Nearly all texts are addresses as we spell them
/// ourselves; they are kept as numbers, which takes less memory and fewer steps.
/// @tparam Pointer raw or smart; null stands for none
template <class Pointer>
class AddressMap {
public:
    /// Null where there is none. Valid until the table changes.
    [[nodiscard]] const Pointer* find(const AddressKey& key) const {
        if (key.packed()) return addresses_.find(*key.packed());
        const auto found = names_.find(key.text());
        return found == names_.end() ? nullptr : &found->second;
    }

    /// Keeps the pointer under that address, in place of one that was there.
    void assign(const AddressKey& key, Pointer pointer) {
        if (key.packed()) {
            addresses_.assign(*key.packed(), std::move(pointer));
        } else {
            names_.insert_or_assign(std::string(key.text()), std::move(pointer));
        }
    }

    void erase(const AddressKey& key) {
        if (key.packed()) return addresses_.erase(*key.packed());
        if (const auto found = names_.find(key.text()); found != names_.end()) names_.erase(found);
    }

    /// Room for so many, so that they need not be moved when they come.
    void reserve(std::size_t count) { addresses_.reserve(count); }

private:
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>{}(text); }
    };

    PackedAddressMap<Pointer> addresses_;
    std::unordered_map<std::string, Pointer, TextHash, std::equal_to<>> names_;
};

}  // namespace nearcast
