// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Figures.h"

#include "support/Printable.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace nearcast::cli {

namespace {

std::string formatted(const char* format, int places, double value) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), format, places, value);
    return text.data();
}

}  // namespace

std::string Table::text() const {
    std::vector<std::size_t> widths(rows_.front().size());
    for (const auto& row : rows_) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], widthOf(row[column]));
        }
    }
    std::string text;
    for (const auto& row : rows_) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            const std::string padding(widths[column] - widthOf(row[column]), ' ');
            text += "  ";
            text += column == 0 ? row[column] + padding : padding + row[column];
        }
        text += '\n';
    }
    return text;
}

std::string decimals(std::optional<double> value, int places) {
    return value ? formatted("%.*f", places, *value) : std::string("-");
}

std::string percent(std::optional<double> share) {
    constexpr double hundred = 100;
    return share ? decimals(*share * hundred, 1) : std::string("-");
}

std::string shortest(double value) {
    constexpr int digits = 6;
    return formatted("%.*g", digits, value);
}

JSON roundedJSON(std::optional<double> value) {
    constexpr double places = 1e4;
    return value ? JSON(std::round(*value * places) / places) : JSON();
}

JSON percentJSON(std::optional<double> share) {
    constexpr double hundred = 100;
    return share ? roundedJSON(*share * hundred) : JSON();
}

JSON settingsJSON(const NearestSettings& settings) {
    JSON result = JSON::object();
    for (const NearestSetting& setting : nearestSettings()) {
        result[std::string(setting.name)] = settings.*setting.value;
    }
    return result;
}

}  // namespace nearcast::cli
