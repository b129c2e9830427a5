// SPDX-License-Identifier: Apache-2.0
#include "common/Arguments.h"

#include "common/UsageError.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <utility>

namespace nearcast::cli {

namespace {

constexpr double longestTime = 1e9;  // seconds, more than a working life

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
    try {
        settings.validate();
    } catch (const std::invalid_argument& error) {
        throw UsageError(error.what());
    }
}

/// "5m": the same time without its unit, as an example to follow.
std::string withoutUnit(double number, std::string_view unit) {
    constexpr std::pair<std::string_view, double> units[] = {
        {"s", 1},        {"sec", 1},  {"seconds", 1},  {"m", 60},     {"min", 60},
        {"minutes", 60}, {"h", 3600}, {"hours", 3600}, {"ms", 0.001},
    };
    const auto* const found =
        std::find_if(std::begin(units), std::end(units), [&](const auto& one) { return one.first == unit; });
    if (found == std::end(units)) return "";
    const double seconds = number * found->second;
    if (!(seconds >= 0 && seconds <= longestTime)) return "";
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.10g", seconds);
    return std::string("; a time has no unit: ") + text.data();
}

}  // namespace

std::string problemWithEmpty(const std::string& text) { return text.empty() ? "is empty" : ""; }

std::string problemWithSeconds(const std::string& text) {
    if (text.empty()) return problemWithEmpty(text);
    char* end = nullptr;
    const double seconds = std::strtod(text.c_str(), &end);
    const bool good = end != text.c_str() && *end == '\0' && seconds >= 0 && seconds <= longestTime;
    if (good) return "";
    const std::string hint = end != text.c_str() ? withoutUnit(seconds, end) : "";
    return "'" + text + "' is no number of seconds from 0 to 1000000000" + hint;
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
