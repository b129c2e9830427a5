// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/AddressText.h"
#include "support/NumberedNames.h"
#include "support/PackedAddressMap.h"

#include <cstddef>
#include <deque>
#include <memory_resource>
#include <utility>

namespace nearcast {

/// Values by address text, compared letter by letter. Nearly all texts are addresses as we spell them ourselves; they
/// are kept as numbers, and the others are given numbers that no address has.
///
/// Values stand in the order in which they were added, until one is erased: the last one takes its place. Not for
/// several threads at once.
template <class Value>
class AddressTable {
public:
    AddressTable() = default;
    AddressTable(const AddressTable&) = delete;
    AddressTable& operator=(const AddressTable&) = delete;

    /// Prepares a look-up of an address; see `PackedAddressMap::prefetch`. From any thread at any time.
    void prefetch(PackedAddress address) const noexcept { index_.prefetch(address); }

    /// Null where there is none. Valid until one is erased.
    [[nodiscard]] Value* find(const AddressKey& key) const {
        Entry* const* const entry = index_.find(names_.find(key));
        return entry == nullptr ? nullptr : valueOf(**entry);
    }

    /// One whose address has none yet. Where there is no memory for it, nothing has changed.
    void add(const AddressKey& key, Value value) {
        index_.makeRoom();  // so that nothing can fail once the value is there
        const PackedAddress number = names_.enter(key);
        try {
            entries_.emplace_back(Entry{std::move(value), number});
        } catch (...) {
            names_.remove(number);
            throw;
        }
        index_.assign(number, &entries_.back());
    }

    /// By place, below `size()`.
    void eraseAt(std::size_t place) { erase(entries_[place]); }

    [[nodiscard]] std::size_t size() const noexcept { return entries_.size(); }
    [[nodiscard]] bool empty() const noexcept { return entries_.empty(); }
    /// By place, below `size()`.
    [[nodiscard]] const Value& operator[](std::size_t place) const { return entries_[place].value; }
    /// The address of the value at a place; its text lies in `space` where it has no place of its own.
    [[nodiscard]] AddressKey addressAt(std::size_t place, AddressText& space) const {
        const PackedAddress number = entries_[place].number;
        if (NumberedNames::isName(number)) return AddressKey(names_.name(number));
        space.assign(number);
        return {number, space.view()};
    }

private:
    static constexpr std::size_t cacheLine = 64;
    struct alignas(cacheLine) Entry {
        Value value;
        PackedAddress number;
    };

    /// Among many values none is in a cache: what an entry has beyond its first line is asked for together with that.
    static Value* valueOf(Entry& entry) noexcept {
        for (std::size_t line = cacheLine; line < sizeof(Entry); line += cacheLine) {
            __builtin_prefetch(reinterpret_cast<const char*>(&entry) + line);
        }
        return &entry.value;
    }

    void erase(Entry& gone) {
        index_.erase(gone.number);
        names_.remove(gone.number);
        if (&gone != &entries_.back()) {
            gone = std::move(entries_.back());
            index_.assign(gone.number, &gone);
        }
        entries_.pop_back();
    }

    // In blocks, so that one more moves nothing. Theirs is a pool: a look-up among many waits less for memory that lies
    // close together than for blocks that lie between everything else.
    std::pmr::unsynchronized_pool_resource pool_;
    std::pmr::deque<Entry> entries_{&pool_};
    PackedAddressMap<Entry*> index_;
    NumberedNames names_;
};

}  // namespace nearcast
