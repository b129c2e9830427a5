// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/AdvertisingReport.h"

#include <cstdint>
#include <iosfwd>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::contract {

/// What the handler gets of an advertisement. Of services it gets none, but its filter asks whether they are there:
/// their order and how often they are said mean nothing.
struct Said {
    std::optional<std::string> name;
    std::optional<std::vector<std::uint8_t>> manufacturerData;
    std::vector<std::string> services;  ///< in alphabetical order, each once

    static Said of(const AdvertisingReport& report);
    friend bool operator==(const Said&, const Said&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Said& said);
};

/// One advertisement of the table in reports.json: what is on the air, and what becomes of it through every radio. It
/// is known by its reading, which no other row has.
struct AirRow {
    /// Where a radio cannot give what the others give: why, and what it gives instead; nothing: no report.
    struct Exception {
        std::string why;
        std::optional<Said> heard;
        bool later = false;  ///< later versions of bluetoothd give something else, which the table has too
    };
    enum class Type { connectable, scannable, nonConnectable };

    std::string what;
    DeviceAddress address{};
    bool random = false;
    Type type = Type::nonConnectable;
    bool extended = false;
    std::int32_t RSSI = 0;
    std::vector<std::uint8_t> data;                     ///< AD structures
    std::optional<std::vector<std::uint8_t>> response;  ///< to a scan request
    Said heard;
    std::map<std::string, Exception, std::less<>> but;  ///< by the radio's name
    std::string simulatorAddress;                       ///< a dongle of the simulator that says the same; or empty
    std::string simulatorPayload;

    /// @param radio as `but` names it
    [[nodiscard]] std::optional<Said> heardThrough(std::string_view radio) const;
};

/// The whole table. The lab puts the same on a real kernel's air.
std::vector<AirRow> readReportTable();

}  // namespace nearcast::contract
