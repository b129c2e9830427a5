// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/AddressText.h"

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace nearcast {

/// A table by number, for look-ups that wait for one line of memory.
///
/// A node for each number, as the standard library keeps them, is three lines of memory away, one after the other: with
/// more dongles than the caches hold, that is most of what an advertisement costs. Here numbers and values stand in one
/// array, each at the place that its number says or at the next free one after it. Not for several threads at once,
/// but for `prefetch`.
/// @tparam Value small, cheap to move, and with a default
template <class Value>
class PackedAddressMap {
public:
    PackedAddressMap() { publish(); }
    PackedAddressMap(const PackedAddressMap&) = delete;
    PackedAddressMap& operator=(const PackedAddressMap&) = delete;

    /// Asks for the line of memory that a look-up will read, without waiting for it. From any thread at any time: it
    /// reads nothing of the table. What changes meanwhile makes it useless, not wrong.
    void prefetch(PackedAddress number) const noexcept {
        const std::size_t place = mixed(number) >> publishedShift_.load(std::memory_order_relaxed);
        const std::uintptr_t line = publishedSlots_.load(std::memory_order_relaxed) + place * sizeof(Slot);
        __builtin_prefetch(reinterpret_cast<const void*>(line));  // NOLINT(performance-no-int-to-ptr)
    }

    /// Null where there is none, as of `noAddress`. Valid until the table changes.
    [[nodiscard]] const Value* find(PackedAddress number) const noexcept {
        const Slot& slot = slots_[placeOf(number)];
        return slot.number == noAddress ? nullptr : &slot.value;
    }

    /// Makes sure that one more number finds room.
    void makeRoom() {
        if ((size_ + 1) * 3 > slots_.size() * 2) grow();
    }

    /// Keeps the value under that number, in place of one that was there.
    void assign(PackedAddress number, Value value) {
        makeRoom();
        Slot& slot = slots_[placeOf(number)];
        if (slot.number == noAddress) ++size_;
        slot.number = number;
        slot.value = std::move(value);
    }

    void erase(PackedAddress number) noexcept {
        std::size_t hole = placeOf(number);
        if (slots_[hole].number == noAddress) return;
        // Those behind it that would no longer be found across the hole move into it.
        for (std::size_t place = next(hole); slots_[place].number != noAddress; place = next(place)) {
            const std::size_t wanted = home(slots_[place].number);
            if (distance(wanted, place) < distance(hole, place)) continue;
            slots_[hole] = std::move(slots_[place]);
            hole = place;
        }
        slots_[hole] = Slot();
        --size_;
    }

    void swap(PackedAddressMap& other) noexcept {
        slots_.swap(other.slots_);
        std::swap(size_, other.size_);
        std::swap(shift_, other.shift_);
        publish();
        other.publish();
    }

    [[nodiscard]] std::size_t size() const noexcept { return size_; }

private:
    /// Never across two lines.
    struct alignas(std::bit_ceil(sizeof(PackedAddress) + sizeof(Value))) Slot {
        PackedAddress number = noAddress;  ///< `noAddress`: the place is free
        Value value{};
    };
    static constexpr std::size_t fewest = 16;

    [[nodiscard]] std::size_t next(std::size_t place) const noexcept { return (place + 1) & (slots_.size() - 1); }
    [[nodiscard]] std::size_t distance(std::size_t from, std::size_t to) const noexcept {
        return (to - from) & (slots_.size() - 1);
    }
    /// Dongles of one maker count up in the last octets: the first multiplication makes them lie anywhere. The second
    /// is by a secret, so that nobody on the air can choose addresses that all fall on one place.
    [[nodiscard]] std::uint64_t mixed(PackedAddress number) const noexcept {
        constexpr std::uint64_t golden = 0x9E3779B97F4A7C15;
        const std::uint64_t anywhere = number * golden;
        return (anywhere ^ anywhere >> 32) * factor_;
    }
    /// Where a number belongs.
    [[nodiscard]] std::size_t home(PackedAddress number) const noexcept {
        return static_cast<std::size_t>(mixed(number) >> shift_);
    }
    /// Where it is, or the free place for it.
    [[nodiscard]] std::size_t placeOf(PackedAddress number) const noexcept {
        std::size_t place = home(number);
        while (slots_[place].number != noAddress && slots_[place].number != number) place = next(place);
        return place;
    }
    void grow() {
        std::vector<Slot> old(slots_.size() * 2);
        old.swap(slots_);
        --shift_;
        publish();
        for (Slot& slot : old) {
            if (slot.number != noAddress) slots_[placeOf(slot.number)] = std::move(slot);
        }
    }
    void publish() noexcept {
        publishedSlots_.store(reinterpret_cast<std::uintptr_t>(slots_.data()), std::memory_order_relaxed);
        publishedShift_.store(shift_, std::memory_order_relaxed);
    }

    const std::uint64_t factor_ = hashFactor();            // the same in all, so that two can be swapped
    std::vector<Slot> slots_ = std::vector<Slot>(fewest);  ///< a power of two of them, at most two thirds taken
    std::size_t size_ = 0;
    unsigned shift_ = 64 - std::countr_zero(fewest);
    std::atomic<std::uintptr_t> publishedSlots_{0};
    std::atomic<unsigned> publishedShift_{0};
};

}  // namespace nearcast
