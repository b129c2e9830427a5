// SPDX-License-Identifier: Apache-2.0
#include "core/HandlerFloor.h"

#include <algorithm>
#include <bit>
#include <ctime>

namespace nearcast::bench {

namespace {

std::chrono::nanoseconds now() noexcept {
    timespec time{};
    clock_gettime(CLOCK_BOOTTIME, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace

HandlerFloor::HandlerFloor(const std::vector<std::uint64_t>& dongles, Listener listener) : listener_(listener) {
    const std::size_t slots = std::bit_ceil(dongles.size() * 2);
    shift_ = 64 - static_cast<unsigned>(std::countr_zero(slots));
    table_.resize(slots);
    ports_.resize(slots);
    names_.reserve(dongles.size());
    for (const std::uint64_t address : dongles) {
        slotOf(table_, address).address = address;
        names_.push_back("BT:Printer " + std::to_string(names_.size()));
        slotOf(ports_, address) = {address, &names_.back(), 1};
    }
}

/// The slot with that address, or the free one where it belongs; 0 marks a free one.
template <class Slot>
Slot& HandlerFloor::slotOf(std::vector<Slot>& table, std::uint64_t address) const {
    constexpr std::uint64_t odd = 0x9E3779B97F4A7C15;
    std::size_t place = (address * odd) >> shift_;
    while (table[place].address != address && table[place].address != 0) place = (place + 1) & (table.size() - 1);
    return table[place];
}

std::int32_t HandlerFloor::smooth(std::uint64_t address, std::int32_t RSSI) {
    const std::lock_guard lock(tableLock_);
    Dongle& dongle = slotOf(table_, address);
    dongle.ring[dongle.next] = RSSI;
    dongle.next = dongle.next + 1 == window ? 0 : dongle.next + 1;
    if (dongle.count < window) ++dongle.count;
    std::int32_t strongest = RSSI;
    for (const std::int32_t reading : dongle.ring) strongest = std::max(strongest, reading);
    dongle.output = strongest;
    dongle.lastUpdate = now();
    return dongle.count == window ? strongest : 0;
}

void HandlerFloor::hear(std::span<const std::uint8_t> payload, std::int32_t RSSI) {
    if (payload.size() < 2 + octets || payload[0] != 0xFF || payload[1] != 0xFF) return;
    std::uint64_t address = 0;
    for (std::size_t octet = 0; octet < octets; ++octet) address = address << 8 | payload[2 + octet];
    {
        const std::lock_guard lock(calibrationLock_);
        if (calibrating_) return;
    }
    const std::int32_t output = smooth(address, RSSI);
    if (output == 0) return;
    const Port* port = nullptr;
    {
        const std::lock_guard lock(registryLock_);
        port = &slotOf(ports_, address);
    }
    std::int32_t deviceType = 0;
    {
        const std::lock_guard lock(registryLock_);
        deviceType = port->deviceType;
    }
    listener_(*port->name, deviceType, address, output);
}

}  // namespace nearcast::bench
