// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/AddressText.h"

#include <bit>
#include <cstddef>
#include <utility>
#include <vector>

namespace nearcast {

/// A table of pointers by address, for look-ups that touch one line of memory.
///
/// A node for each address, as the standard library keeps them, is three lines of memory away, one after the other:
/// with more dongles than the caches hold, that is most of what an advertisement costs. Here the addresses and their
/// pointers stand in one array, each at the place that its address says or at the next free one after it.
/// @tparam Pointer raw or smart; a null one marks a free place, so none can be kept
template <class Pointer>
class PackedAddressMap {
public:
    /// Null where there is none. Valid until the table changes.
    [[nodiscard]] const Pointer* find(PackedAddress address) const noexcept {
        if (size_ == 0) return nullptr;
        const Slot& slot = slots_[placeOf(address)];
        return slot.pointer == nullptr ? nullptr : &slot.pointer;
    }

    /// Keeps the pointer under that address, in place of one that was there.
    void assign(PackedAddress address, Pointer pointer) {
        if (needsRoom(size_ + 1)) rehash(slots_.size() * 2);
        Slot& slot = slots_[placeOf(address)];
        if (slot.pointer == nullptr) ++size_;
        slot = {address, std::move(pointer)};
    }

    void erase(PackedAddress address) noexcept {
        if (size_ == 0) return;
        std::size_t hole = placeOf(address);
        if (slots_[hole].pointer == nullptr) return;
        // Those behind it that would no longer be found across the hole move into it.
        for (std::size_t place = next(hole); slots_[place].pointer != nullptr; place = next(place)) {
            const std::size_t wanted = home(slots_[place].address);
            if (distance(wanted, place) < distance(hole, place)) continue;
            slots_[hole] = std::move(slots_[place]);
            hole = place;
        }
        slots_[hole] = Slot();
        --size_;
    }

    [[nodiscard]] std::size_t size() const noexcept { return size_; }

    void reserve(std::size_t count) {
        std::size_t slots = slots_.size();
        while (count * 3 > slots * 2) slots *= 2;
        if (slots != slots_.size()) rehash(slots);
    }

private:
    struct Slot {
        PackedAddress address = 0;
        Pointer pointer = nullptr;
    };
    static constexpr std::size_t fewest = 16;

    [[nodiscard]] bool needsRoom(std::size_t count) const noexcept { return count * 3 > slots_.size() * 2; }
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
        while (slots_[place].pointer != nullptr && slots_[place].address != address) place = next(place);
        return place;
    }
    void rehash(std::size_t count) {
        std::vector<Slot> old(count);
        old.swap(slots_);
        shift_ = shiftFor(count);
        for (Slot& slot : old) {
            if (slot.pointer != nullptr) slots_[placeOf(slot.address)] = std::move(slot);
        }
    }
    static unsigned shiftFor(std::size_t slots) noexcept { return 64 - static_cast<unsigned>(std::countr_zero(slots)); }

    std::vector<Slot> slots_ = std::vector<Slot>(fewest);  ///< a power of two of them, at most two thirds taken
    std::size_t size_ = 0;
    unsigned shift_ = shiftFor(fewest);
};

}  // namespace nearcast
