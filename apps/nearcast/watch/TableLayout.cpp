// SPDX-License-Identifier: Apache-2.0
#include "watch/TableLayout.h"

#include "common/Words.h"
#include "watch/WatchView.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace nearcast::cli {

namespace {

constexpr int weakest = -100;   ///< dBm, an empty bar
constexpr int strongest = -40;  ///< dBm, a full bar

constexpr std::size_t portWidth = 18;
constexpr std::size_t widestPort = 40;
constexpr std::size_t typeWidth = 8;
constexpr std::size_t addressWidth = 17;
constexpr std::size_t signalWidth = 8;  // "-127 dBm"
constexpr std::size_t narrowestBar = 5;
constexpr std::size_t widestBar = 20;
constexpr std::size_t ageWidth = 8;  // "9999.9 s"

std::string barOf(std::int32_t RSSI, std::size_t width) {
    const int level = std::clamp(RSSI, weakest, strongest) - weakest;
    const auto full = static_cast<std::size_t>(level) * width / (strongest - weakest);
    return std::string(full, '#').append(width - full, '.');
}

template <class Value>
std::string formatted(const char* format, Value value) {
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

}  // namespace

TableLayout::TableLayout(std::size_t width) : width_(width) {
    // The more important ones take their room first, each with a space in front.
    std::size_t left = width - std::min(width, portWidth + 1 + signalWidth);
    const auto take = [&left](std::size_t& column, std::size_t wanted) {
        if (left <= wanted) return;
        column = wanted;
        left -= wanted + 1;
    };
    take(age_, ageWidth);
    if (age_ != 0) take(address_, addressWidth);
    if (address_ != 0) take(type_, typeWidth);
    if (type_ != 0 && left > narrowestBar) take(bar_, std::min(left - 1, widestBar));
    port_ = std::min(portWidth, width - std::min(width, 1 + signalWidth));
    port_ += std::min(left, widestPort - portWidth);
}

std::string TableLayout::joined(std::string_view port, std::string_view type, std::string_view address,
                                std::string_view signal, std::string_view bar, std::string_view age) const {
    std::string line;
    const auto append = [&line](std::string_view text, std::size_t width) {
        if (width != 0) line.append(line.empty() ? "" : " ").append(column(text, width));
    };
    append(port, port_);
    append(type, type_);
    append(address, address_);
    append(signal, std::min(signalWidth, width_));
    append(bar, bar_);
    append(age, age_);
    return line;
}

std::string TableLayout::heading() const { return joined("PORT", "TYPE", "ADDRESS", "  SIGNAL", "", "     AGE"); }

std::string TableLayout::row(const TableRow& row) const {
    const std::string_view unnamed = address_ == 0 ? row.MACAddr : "-";
    const std::string_view port = row.portName.empty() ? unnamed : row.portName;
    if (!row.RSSI) return joined(port, typeName(row.deviceType), row.MACAddr, "silent", "", "");
    return joined(port, typeName(row.deviceType), row.MACAddr, formatted("%4d dBm", *row.RSSI), barOf(*row.RSSI, bar_),
                  formatted("%6.1f s", std::max(0.0, row.age)));
}

}  // namespace nearcast::cli
