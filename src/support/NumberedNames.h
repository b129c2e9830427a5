// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/AddressText.h"
#include "support/SecretHash.h"

#include <functional>
#include <string>
#include <unordered_map>

namespace nearcast {

/// A number for each address text: addresses as we spell them have theirs, and any other text is given one that no
/// address has. Not for several threads at once.
class NumberedNames {
public:
    [[nodiscard]] static bool isName(PackedAddress number) noexcept { return number >= first; }

    /// `noAddress` where the text is no address and was not entered.
    [[nodiscard]] PackedAddress find(const AddressKey& key) const {
        if (key.packed() != noAddress) return key.packed();
        const auto found = numbers_.find(key.text());
        return found == numbers_.end() ? noAddress : found->second;
    }
    /// As `find`, and enters the text where it needs to be. Where there is no memory for that, nothing has changed.
    PackedAddress enter(const AddressKey& key) {
        if (const PackedAddress known = find(key); known != noAddress) return known;
        const auto place = numbers_.emplace(key.text(), next_).first;
        try {
            names_.emplace(next_, &place->first);
        } catch (...) {
            numbers_.erase(place);
            throw;
        }
        return next_++;
    }
    /// Of a number that is a name's. Valid until it is removed.
    [[nodiscard]] const std::string& name(PackedAddress number) const { return *names_.at(number); }
    /// Forgets the text behind a number, where there is one.
    void remove(PackedAddress number) {
        const auto name = names_.find(number);
        if (name == names_.end()) return;
        numbers_.erase(numbers_.find(*name->second));
        names_.erase(name);
    }

private:
    static constexpr PackedAddress first = PackedAddress{1} << (8 * AddressText::octets);

    std::unordered_map<std::string, PackedAddress, SecretHash, std::equal_to<>> numbers_;
    std::unordered_map<PackedAddress, const std::string*> names_;  ///< into `numbers_`
    PackedAddress next_ = first;
};

}  // namespace nearcast
