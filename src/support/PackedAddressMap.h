// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/AddressText.h"

#include <bit>
#include <cstddef>
#include <vector>

namespace nearcast {

/// A table of pointers by address, for look-ups that touch one line of memory.
///
/// A node for each address, as the standard library keeps them, is three lines of memory away, one after the other:
/// with more dongles than the caches hold, that is most of what an advertisement costs. Here the addresses and their
/// pointers stand in one array, each at the place that its address says or at the next free one after it.
template <class Value>
class PackedAddressMap {
public:
    /// Null where there is none.
    [[nodiscard]] Value* find(PackedAddress address) const noexcept { return slots_[placeOf(address)].value; }

    /// Keeps the pointer under that address, in place of one that was there.
    /// @param value not null
    void assign(PackedAddress address, Value* value) {
        if ((size_ + 1) * 3 > slots_.size() * 2) grow();
        Slot& slot = slots_[placeOf(address)];
        if (slot.value == nullptr) ++size_;
        slot = {address, value};
    }

    void erase(PackedAddress address) noexcept {
        std::size_t hole = placeOf(address);
        if (slots_[hole].value == nullptr) return;
        // Those behind it that would no longer be found across the hole move into it.
        for (std::size_t place = next(hole); slots_[place].value != nullptr; place = next(place)) {
            const std::size_t wanted = home(slots_[place].address);
            if (distance(wanted, place) < distance(hole, place)) continue;
            slots_[hole] = slots_[place];
            hole = place;
        }
        slots_[hole] = Slot();
        --size_;
    }

    [[nodiscard]] std::size_t size() const noexcept { return size_; }

private:
    struct Slot {
        PackedAddress address = 0;
        Value* value = nullptr;  ///< null: the place is free
    };
    static constexpr std::size_t fewest = 16;

    [[nodiscard]] std::size_t next(std::size_t place) const noexcept { return (place + 1) & (slots_.size() - 1); }
    [[nodiscard]] std::size_t distance(std::size_t from, std::size_t to) const noexcept {
        return (to - from) & (slots_.size() - 1);
    }
    /// Where an address belongs. Dongles of one maker count up in the last octets; the multiplication takes every bit
    /// to the highest ones.
    [[nodiscard]] std::size_t home(PackedAddress address) const noexcept {
        constexpr std::uint64_t odd = 0x9E3779B97F4A7C15;
        return static_cast<std::size_t>((address * odd) >> shift_);
    }
    /// Where it is, or the free place for it.
    [[nodiscard]] std::size_t placeOf(PackedAddress address) const noexcept {
        std::size_t place = home(address);
        while (slots_[place].value != nullptr && slots_[place].address != address) place = next(place);
        return place;
    }
    void grow() {
        std::vector<Slot> old(slots_.size() * 2);
        old.swap(slots_);
        --shift_;
        for (const Slot& slot : old) {
            if (slot.value != nullptr) slots_[placeOf(slot.address)] = slot;
        }
    }
    std::vector<Slot> slots_ = std::vector<Slot>(fewest);  ///< a power of two of them, at most two thirds taken
    std::size_t size_ = 0;
    unsigned shift_ = 64 - std::countr_zero(fewest);
};

}  // namespace nearcast
