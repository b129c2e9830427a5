// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::bench {

/// The least that one advertisement can cost: the work that nobody can leave out, and nothing else. No traces, no
/// names in place of addresses, no calibration but the question whether one runs, a hold rule that is left away, tables
/// that neither grow nor shrink.
class HandlerFloor {
public:
    static constexpr std::size_t window = 7;
    static constexpr std::size_t octets = 6;
    using Listener = void (*)(std::string_view portName, std::int32_t deviceType, std::uint64_t address,
                              std::int32_t RSSI);

    /// @param dongles the addresses, all registered; the tables are at most half full
    HandlerFloor(const std::vector<std::uint64_t>& dongles, Listener listener);

    /// One advertisement, under the four locks of the described scopes. From any thread.
    void hear(std::span<const std::uint8_t> payload, std::int32_t RSSI);

private:
    struct Dongle {
        std::uint64_t address = 0;
        std::chrono::nanoseconds lastUpdate{};
        std::uint32_t next = 0;
        std::uint32_t count = 0;
        std::array<std::int32_t, window> ring{};
        std::int32_t output = 0;
    };
    struct Port {
        std::uint64_t address = 0;
        const std::string* name = nullptr;
        std::int32_t deviceType = 0;
    };

    template <class Slot>
    Slot& slotOf(std::vector<Slot>& table, std::uint64_t address) const;
    std::int32_t smooth(std::uint64_t address, std::int32_t RSSI);

    unsigned shift_ = 0;
    std::mutex calibrationLock_;
    bool calibrating_ = false;
    std::mutex tableLock_;
    std::vector<Dongle> table_;
    std::mutex registryLock_;  // taken twice
    std::vector<Port> ports_;
    std::vector<std::string> names_;
    Listener listener_;
};

}  // namespace nearcast::bench
