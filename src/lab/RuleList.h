// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/Rule.h"

#include <nearcast/NearestSettings.h>
#include <nearcast/SettingRecord.h>

#include <memory>
#include <span>
#include <string_view>

namespace nearcast::lab {

/// A rule by its name.
struct NamedRule {
    std::string_view name;
    std::string_view description;  ///< one line for people
    std::unique_ptr<Rule> (*make)(const Settings& registry, const NearestSettings& settings);
};

/// The rule that `Nearest` follows; the others are for comparison.
inline constexpr std::string_view nearestRuleName = "nearest";

/// All of them, `nearest` last. `make` throws std::invalid_argument for settings that are not valid, which only
/// `nearest` looks at.
std::span<const NamedRule> rules() noexcept;
/// Null: there is none of that name.
const NamedRule* findRule(std::string_view name) noexcept;

}  // namespace nearcast::lab
