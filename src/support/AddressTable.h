// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/AddressText.h"
#include "support/PackedAddressMap.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <memory_resource>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace nearcast {

/// Values by address text, compared letter by letter. Nearly all texts are addresses as we spell them ourselves; they
/// are kept as numbers, which takes less memory and fewer steps.
///
/// Values stand in the order in which they were added, until one is erased: the last one takes its place. Not for
/// several threads at once.
template <class Value>
class AddressTable {
public:
    AddressTable() = default;
    AddressTable(const AddressTable&) = delete;
    AddressTable& operator=(const AddressTable&) = delete;

    /// Null where there is none. Valid until one is erased.
    [[nodiscard]] Value* find(const AddressKey& key) const {
        Entry* const entry = entryOf(key);
        return entry == nullptr ? nullptr : &entry->value;
    }

    /// One whose address has none yet.
    void add(const AddressKey& key, Value value) {
        Entry& entry = entries_.emplace_back(Entry{std::move(value), 0, nullptr});
        if (key.packed()) {
            entry.packed = *key.packed();
            addresses_.assign(entry.packed, &entry);
        } else {
            entry.name = &names_.emplace(key.text(), &entry).first->first;
        }
    }

    void erase(const AddressKey& key) {
        if (Entry* const entry = entryOf(key)) erase(*entry);
    }
    /// By place, below `size()`.
    void eraseAt(std::size_t place) { erase(entries_[place]); }

    [[nodiscard]] std::size_t size() const noexcept { return entries_.size(); }
    [[nodiscard]] bool empty() const noexcept { return entries_.empty(); }
    /// By place, below `size()`.
    [[nodiscard]] const Value& operator[](std::size_t place) const { return entries_[place].value; }
    /// The address of the value at a place; its text lies in `space` where it has no place of its own.
    [[nodiscard]] AddressKey addressAt(std::size_t place, AddressText& space) const {
        const Entry& entry = entries_[place];
        if (entry.name != nullptr) return AddressKey(*entry.name);
        space = AddressText(entry.packed);
        return {entry.packed, space.view()};
    }

private:
    struct Entry {
        Value value;
        PackedAddress packed;
        const std::string* name;  ///< in place of the number, where the address has none
    };
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>{}(text); }
    };

    [[nodiscard]] Entry* entryOf(const AddressKey& key) const {
        if (key.packed()) return addresses_.find(*key.packed());
        const auto found = names_.find(key.text());
        return found == names_.end() ? nullptr : found->second;
    }

    void erase(Entry& gone) {
        if (gone.name != nullptr) {
            names_.erase(names_.find(*gone.name));
        } else {
            addresses_.erase(gone.packed);
        }
        if (&gone != &entries_.back()) {
            gone = std::move(entries_.back());
            if (gone.name != nullptr) {
                names_.find(*gone.name)->second = &gone;
            } else {
                addresses_.assign(gone.packed, &gone);
            }
        }
        entries_.pop_back();
    }

    // In blocks, so that one more moves nothing. Theirs is a pool: a look-up among many waits less for memory that lies
    // close together than for blocks that lie between everything else.
    std::pmr::unsynchronized_pool_resource pool_;
    std::pmr::deque<Entry> entries_{&pool_};
    PackedAddressMap<Entry> addresses_;
    std::unordered_map<std::string, Entry*, TextHash, std::equal_to<>> names_;
};

}  // namespace nearcast
