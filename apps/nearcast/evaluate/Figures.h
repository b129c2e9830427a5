// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/NearestSettings.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace nearcast::cli {

// Figures and tables of them, as text and as JSON.

/// A table for people: columns as wide as their widest cell, the first flush left, the others flush right.
class Table {
public:
    explicit Table(std::vector<std::string> header) { rows_.push_back(std::move(header)); }

    /// @param cells one for each column of the header
    void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
    /// The lines, each indented by two spaces and with a line end.
    [[nodiscard]] std::string text() const;

private:
    std::vector<std::vector<std::string>> rows_;
};

/// "-" where there is no value.
std::string decimals(std::optional<double> value, int places);
/// A share from 0 to 1 in percent with one decimal place.
std::string percent(std::optional<double> share);
/// A setting's value, as short as a person would write it.
std::string shortest(double value);

using JSON = nlohmann::ordered_json;

/// A figure with four decimal places; null where there is none.
JSON roundedJSON(std::optional<double> value);
/// A share from 0 to 1 in percent.
JSON percentJSON(std::optional<double> share);
/// Settings by their names.
JSON settingsJSON(const NearestSettings& settings);

}  // namespace nearcast::cli
