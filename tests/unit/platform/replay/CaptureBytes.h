// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hciformat/ByteReader.h"
#include "platform/replay/RecordingReader.h"
#include "unit/platform/hciformat/HciBytes.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Capture files for tests, made by hand, and what is read out of them.

namespace nearcast::replay {

using Order = ByteReader::Order;

inline Octets number(std::uint64_t value, int octets, Order order) {
    return order == Order::big ? big(value, octets) : little(value, octets);
}

/// An HCI event as H4 carries it.
inline Octets H4(const Octets& event) { return hex("04") + event; }

inline constexpr std::uint64_t btsnoop1970 = 0x00DCDDB30F2F8000;

inline Octets btsnoopHeader(std::uint32_t datalink, std::uint32_t version = 1) {
    return octetsOf(std::string_view("btsnoop\0", 8)) + big(version, 4) + big(datalink, 4);
}
inline Octets btsnoopRecord(std::uint64_t microseconds, const Octets& packet, std::uint32_t flags = 3) {
    return big(packet.size(), 4) + big(packet.size(), 4) + big(flags, 4) + big(0, 4) +
           big(btsnoop1970 + microseconds, 8) + packet;
}

inline constexpr std::uint32_t pcapMicroseconds = 0xA1B2C3D4;
inline constexpr std::uint32_t pcapNanoseconds = 0xA1B23C4D;

inline Octets pcapHeader(std::uint32_t linkType, Order order = Order::little, std::uint32_t magic = pcapMicroseconds) {
    return number(magic, 4, order) + number(2, 2, order) + number(4, 2, order) + number(0, 8, order) +
           number(65535, 4, order) + number(linkType, 4, order);
}
inline Octets pcapRecord(std::uint32_t seconds, std::uint32_t fraction, const Octets& packet,
                         Order order = Order::little) {
    return number(seconds, 4, order) + number(fraction, 4, order) + number(packet.size(), 4, order) +
           number(packet.size(), 4, order) + packet;
}

/// The blocks of a pcapng file in one byte order.
struct Pcapng {
    Order order = Order::little;

    [[nodiscard]] Octets block(std::uint32_t type, Octets body) const {
        body.resize((body.size() + 3) / 4 * 4);
        const Octets length = number(body.size() + 12, 4, order);
        return number(type, 4, order) + length + body + length;
    }
    [[nodiscard]] Octets section(std::uint16_t major = 1) const {
        return block(0x0A0D0D0A, number(0x1A2B3C4D, 4, order) + number(major, 2, order) + number(0, 2, order) +
                                     number(~std::uint64_t{0}, 8, order));
    }
    [[nodiscard]] Octets option(std::uint16_t code, Octets value) const {
        const Octets head = number(code, 2, order) + number(value.size(), 2, order);
        value.resize((value.size() + 3) / 4 * 4);
        return head + value;
    }
    [[nodiscard]] Octets interface(std::uint16_t linkType, const Octets& options = {}, std::uint32_t snap = 0) const {
        return block(1, number(linkType, 2, order) + number(0, 2, order) + number(snap, 4, order) + options);
    }
    [[nodiscard]] Octets enhanced(std::uint64_t ticks, const Octets& packet, std::uint32_t interface = 0) const {
        return block(6, number(interface, 4, order) + stamp(ticks, packet));
    }
    [[nodiscard]] Octets obsolete(std::uint64_t ticks, const Octets& packet, std::uint16_t interface = 0) const {
        return block(2, number(interface, 2, order) + number(0xFFFF, 2, order) + stamp(ticks, packet));
    }
    [[nodiscard]] Octets simple(const Octets& packet, std::size_t originalLength) const {
        return block(3, number(originalLength, 4, order) + packet);
    }

private:
    [[nodiscard]] Octets stamp(std::uint64_t ticks, Octets packet) const {
        const Octets length = number(packet.size(), 4, order);
        packet.resize((packet.size() + 3) / 4 * 4);
        return number(ticks >> 32, 4, order) + number(ticks & 0xFFFFFFFF, 4, order) + length + length + packet;
    }
};

/// Gives bytes in pieces of `step`.
inline ByteSource sourceOf(Octets bytes, std::size_t step = SIZE_MAX) {
    auto held = std::make_shared<const Octets>(std::move(bytes));
    return [held, step, place = std::size_t{0}](std::span<std::uint8_t> room) mutable {
        const std::size_t count = std::min({room.size(), step, held->size() - place});
        std::copy_n(held->begin() + static_cast<std::ptrdiff_t>(place), count, room.begin());
        place += count;
        return count;
    };
}

/// All that a recording holds, up to its end or its damage.
struct Contents {
    std::vector<RecordedItem> items;
    std::optional<std::uint64_t> damagedAt;
    std::string damage;

    [[nodiscard]] std::vector<RecordedReport> reports() const {
        std::vector<RecordedReport> found;
        for (const RecordedItem& item : items) {
            if (const auto* report = std::get_if<RecordedReport>(&item)) found.push_back(*report);
        }
        return found;
    }
    /// Times of the reports in microseconds.
    [[nodiscard]] std::vector<std::int64_t> times() const {
        std::vector<std::int64_t> found;
        for (const RecordedReport& report : reports()) found.push_back(report.at.count());
        return found;
    }
};

inline Contents readAll(RecordingReader& reader) {
    Contents contents;
    try {
        while (auto item = reader.next()) contents.items.push_back(*std::move(item));
    } catch (const RecordingDamage& damage) {
        contents.damagedAt = damage.offset();
        contents.damage = damage.what();
    }
    return contents;
}

inline Contents readAll(const Octets& file, std::size_t step = SIZE_MAX) {
    return readAll(*openRecording(sourceOf(file, step), "test"));
}

}  // namespace nearcast::replay
