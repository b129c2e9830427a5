// SPDX-License-Identifier: Apache-2.0
#include "common/Arguments.h"

#include "common/UsageError.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <utility>

namespace nearcast::cli {

namespace {

const NearestSetting& settingNamed(std::string_view name) {
    const auto settings = nearestSettings();
    const auto found =
        std::find_if(settings.begin(), settings.end(), [&](const auto& one) { return one.name == name; });
    if (found != settings.end()) return *found;
    std::string known;
    for (const NearestSetting& one : settings) known.append(known.empty() ? "" : ", ").append(one.name);
    throw UsageError("there is no setting '" + std::string(name) + "' (known: " + known + ")");
}

template <class Number>
std::optional<Number> numberOf(std::string_view text) {
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

/// "KEY=REST" in two.
std::pair<std::string_view, std::string_view> split(std::string_view argument, const char* form) {
    const auto equals = argument.find('=');
    if (equals == std::string_view::npos) {
        throw UsageError("'" + std::string(argument) + "' is not of the form " + form);
    }
    return {argument.substr(0, equals), argument.substr(equals + 1)};
}

/// Whether one value of a setting is good does not depend on the others.
void requireValid(const NearestSetting& setting, double value) {
    NearestSettings settings;
    settings.*setting.value = value;
    settings.validate();
}

}  // namespace

std::string problemWithSeconds(const std::string& text) {
    constexpr double longest = 1e9;  // more than a working life
    char* end = nullptr;
    const double seconds = std::strtod(text.c_str(), &end);
    const bool good = end != text.c_str() && *end == '\0' && seconds >= 0 && seconds <= longest;
    return good ? "" : "'" + text + "' is no number of seconds from 0 to 1000000000";
}

void applySetting(NearestSettings& settings, std::string_view argument) {
    const auto [name, text] = split(argument, "KEY=VALUE");
    const NearestSetting& setting = settingNamed(name);
    const auto value = numberOf<double>(text);
    if (!value) throw UsageError("'" + std::string(argument) + "': '" + std::string(text) + "' is no number");
    requireValid(setting, *value);
    settings.*setting.value = *value;
}

NearestSettings settingsOf(const std::vector<std::string>& arguments) {
    NearestSettings settings;
    for (const std::string& argument : arguments) applySetting(settings, argument);
    return settings;
}

SettingSweep sweepOf(std::string_view argument) {
    constexpr const char* form = "KEY=FROM..TO or KEY=FROM..TO:STEPS";
    const auto refuse = [&] { throw UsageError("'" + std::string(argument) + "' is not of the form " + form); };
    const auto [name, range] = split(argument, form);
    SettingSweep sweep;
    sweep.setting = &settingNamed(name);
    const auto dots = range.find("..");
    if (dots == std::string_view::npos) refuse();
    const auto colon = range.find(':', dots);
    const auto from = numberOf<double>(range.substr(0, dots));
    const auto to =
        numberOf<double>(range.substr(dots + 2, colon == std::string_view::npos ? colon : colon - dots - 2));
    const auto steps = colon == std::string_view::npos ? ordinarySteps : numberOf<std::size_t>(range.substr(colon + 1));
    if (!from || !to || !steps) refuse();
    if (*steps < 2 || *steps > mostSteps) {
        throw UsageError("'" + std::string(argument) + "': 2 to " + std::to_string(mostSteps) + " steps");
    }
    requireValid(*sweep.setting, *from);
    requireValid(*sweep.setting, *to);
    for (std::size_t step = 0; step < *steps; ++step) {
        const double part = static_cast<double>(step) / static_cast<double>(*steps - 1);
        sweep.values.push_back(std::lerp(*from, *to, part));  // which ends at its end exactly
    }
    return sweep;
}

}  // namespace nearcast::cli
