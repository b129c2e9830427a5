// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/NSDate.h"
#include "proximity/Smoothing.h"
#include "support/AddressMap.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <utility>

namespace nearcast {

/// What is known of one dongle that is in range.
class Signal {
public:
    Signal(const AddressKey& address, NSDate date, Smoothing begun)
        : lastUpdate(date), smoothing(std::move(begun)), packed_(address.packed().value_or(0)) {
        if (!address.packed()) name_ = std::make_unique<const std::string>(address.text());
    }

    NSDate lastUpdate;
    Smoothing smoothing;

    /// Its address text, in `space` where it has no place of its own.
    [[nodiscard]] AddressKey address(AddressText& space) const {
        if (name_ != nullptr) return AddressKey(*name_);
        space = AddressText(packed_);
        return {packed_, space.view()};
    }

private:
    PackedAddress packed_;
    std::unique_ptr<const std::string> name_;  ///< in place of the number, where the address has none
};

/// The dongles in range, in the order in which they were first heard, until one goes: the last one takes its place.
/// Not for several threads at once.
class SignalTable {
public:
    /// Null where it is not known. Valid until one is erased.
    [[nodiscard]] Signal* find(const AddressKey& address) const {
        Signal* const* const signal = index_.find(address);
        return signal == nullptr ? nullptr : *signal;
    }
    /// One that is not known yet.
    void add(const AddressKey& address, NSDate date, Smoothing smoothing) {
        signals_.emplace_back(address, date, std::move(smoothing));
        index_.assign(address, &signals_.back());
    }
    void erase(std::size_t place);

    [[nodiscard]] std::size_t size() const noexcept { return signals_.size(); }
    [[nodiscard]] bool empty() const noexcept { return signals_.empty(); }
    /// By place, below `size()`.
    [[nodiscard]] const Signal& operator[](std::size_t place) const { return signals_[place]; }

private:
    std::deque<Signal> signals_;  ///< in blocks: a dongle more moves nothing, and nothing is taken in advance
    AddressMap<Signal*> index_;
};

}  // namespace nearcast
