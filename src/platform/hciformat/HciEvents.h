// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hciformat/RawReport.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <vector>

namespace nearcast {

/// Joins advertisements that a controller hands over in pieces. Its memory is bounded: of too many unfinished
/// advertisements the oldest is dropped, and one that grows beyond what can be advertised is cut there.
class ReportFragments {
public:
    using Key = std::array<std::uint8_t, 9>;  ///< whose advertisement it is

    /// The longest advertising data (Core Specification, Volume 6, Part B, 2.3.4.9).
    static constexpr std::size_t longestData = 1650;
    static constexpr std::size_t mostUnfinished = 64;

    /// Keeps a piece until the last one comes.
    void add(const Key& key, std::span<const std::uint8_t> piece);
    /// All pieces kept for `key` and the last one, which is not kept; nothing when none were kept.
    std::optional<std::vector<std::uint8_t>> finish(const Key& key, std::span<const std::uint8_t> last);

private:
    struct Unfinished {
        Key key;
        std::vector<std::uint8_t> data;
    };
    std::deque<Unfinished>::iterator find(const Key& key);

    std::deque<Unfinished> unfinished_;  // oldest first
};

class ByteReader;

/// Reads advertising reports out of HCI events: LE Advertising Report and LE Extended Advertising Report (Core
/// Specification, Volume 4, Part E, 7.7.65.2 and 7.7.65.13), with any number of reports in one event.
///
/// What one report of an event gives is one report here, with one exception: an advertisement that the controller hands
/// over in pieces ("incomplete, more data to come") is one report, at its last piece, with the signal of that piece.
/// One that the controller had to cut is reported with what there is of it.
///
/// It remembers unfinished advertisements from event to event. Not for several threads at once.
class HciEvents {
public:
    enum class Outcome {
        other,    ///< the event carries no advertising reports
        whole,    ///< all reports were read
        damaged,  ///< the event ends inside a report or contradicts itself; the reports before that were read
    };

    /// @param event event code, parameter length, parameters; no packet indicator. What follows the parameters is
    ///              ignored
    /// @param sink  called for each report, in order; what it throws passes through
    Outcome read(std::span<const std::uint8_t> event, const RawReportSink& sink);

private:
    bool extendedReport(ByteReader& parameters, const RawReportSink& sink);

    ReportFragments fragments_;
};

/// The six octets of an address as HCI and the link layer send it, least significant first, as people write it.
DeviceAddress addressFromAir(std::span<const std::uint8_t> octets);

}  // namespace nearcast
