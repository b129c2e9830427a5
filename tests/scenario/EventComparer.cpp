// SPDX-License-Identifier: Apache-2.0
#include "scenario/EventComparer.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <tuple>
#include <utility>

namespace nearcast::scenario {

namespace {

constexpr std::string_view pointer = "<ptr>";
constexpr std::string_view registryLock = "_lockMutableSettingsFlag";
constexpr std::string_view tableLock = "_lockRssiDataFlag";
constexpr std::string_view sweep = "-[QXNearcastManager eventRepeatTimer]";
constexpr std::string_view keysHeld = "[mutableSettings.allKeys containsObject:portName], ";

std::string_view textOf(const Event& event, const char* member) {
    const auto found = event.find(member);
    return found != event.end() && found->is_string() ? std::string_view(found->get_ref<const std::string&>())
                                                      : std::string_view();
}

bool has(const Event& event, const char* member, const Event& value) {
    const auto found = event.find(member);
    return found != event.end() && *found == value;
}

bool isTrace(const Event& event, int type) { return textOf(event, "event") == "trace" && has(event, "type", type); }

bool isLock(const Event& event, std::string_view name, bool held) {
    return textOf(event, "event") == "lock" && has(event, "held", held) &&
           (name.empty() || textOf(event, "name") == name);
}

bool isRegistrationStart(const Event& event) {
    return isTrace(event, 0) && textOf(event, "method").starts_with("-[QXNearcastManager addSetting");
}

bool followsLookAtKeys(const Event& event) {
    return (isTrace(event, 2) && textOf(event, "method") == "-[QXNearcastManager isValidateMACAddr:]") ||
           (isTrace(event, 7) && textOf(event, "text").starts_with(keysHeld));
}

void dropLooksAtKeys(Events& events) {
    for (std::size_t place = 0; place + 3 < events.size(); ++place) {
        if (isRegistrationStart(events[place]) && isLock(events[place + 1], registryLock, true) &&
            isLock(events[place + 2], registryLock, false) && followsLookAtKeys(events[place + 3])) {
            const auto first = events.begin() + static_cast<std::ptrdiff_t>(place) + 1;
            events.erase(first, first + 2);
        }
    }
}

void putReleasesFirst(Events& events) {
    for (std::size_t place = 0; place + 1 < events.size(); ++place) {
        const bool exit = isTrace(events[place], 1) || isTrace(events[place], 3);
        if (exit && isLock(events[place + 1], "", false)) std::swap(events[place], events[place + 1]);
    }
}

/// Puts the reports of the sweep that holds the table from `first` on in an order of their own.
void sortReports(Events& events, std::size_t first) {
    std::vector<std::pair<std::tuple<std::string, std::string>, Events>> reports;
    std::size_t begin = first;
    for (std::size_t place = first; place < events.size() && !isLock(events[place], tableLock, false); ++place) {
        const Event& event = events[place];
        if (textOf(event, "event") != "didUpdateState") continue;
        const auto at = [&](std::size_t index) { return events.begin() + static_cast<std::ptrdiff_t>(index); };
        reports.push_back({{std::string(textOf(event, "MACAddr")), std::string(textOf(event, "portName"))},
                           Events(at(begin), at(place + 1))});
        begin = place + 1;
    }
    std::stable_sort(reports.begin(), reports.end(),
                     [](const auto& left, const auto& right) { return left.first < right.first; });
    auto out = events.begin() + static_cast<std::ptrdiff_t>(first);
    for (const auto& [key, report] : reports) out = std::copy(report.begin(), report.end(), out);
}

void sortSweeps(Events& events) {
    for (std::size_t place = 0; place + 1 < events.size(); ++place) {
        if (isTrace(events[place], 2) && textOf(events[place], "method") == sweep &&
            isLock(events[place + 1], tableLock, true)) {
            sortReports(events, place + 2);
        }
    }
}

void straighten(Events& events) {
    dropLooksAtKeys(events);
    putReleasesFirst(events);
    sortSweeps(events);
}

bool isPointerDigit(char letter) { return (letter >= '0' && letter <= '9') || (letter >= 'a' && letter <= 'f'); }

/// Whether `actual` begins with a pointer; cuts it off.
bool takePointer(std::string_view& actual) {
    if (actual.starts_with(pointer)) {
        actual.remove_prefix(pointer.size());
        return true;
    }
    if (!actual.starts_with("0x")) return false;
    std::size_t length = 2;
    while (length < actual.size() && isPointerDigit(actual[length])) ++length;
    if (length == 2) return false;
    actual.remove_prefix(length);
    return true;
}

bool sameText(std::string_view actual, std::string_view expected) {
    while (!expected.empty()) {
        if (expected.starts_with(pointer)) {
            if (!takePointer(actual)) return false;
            expected.remove_prefix(pointer.size());
            continue;
        }
        if (actual.empty() || actual.front() != expected.front()) return false;
        actual.remove_prefix(1);
        expected.remove_prefix(1);
    }
    return actual.empty();
}

/// As `==`, but an integer differs from a floating-point number.
bool sameValue(const Event& actual, const Event& expected) {
    if (actual.is_number() && expected.is_number()) {
        return actual.is_number_float() == expected.is_number_float() && actual == expected;
    }
    if (actual.type() != expected.type() || actual.size() != expected.size()) return false;
    if (actual.is_array()) return std::equal(actual.begin(), actual.end(), expected.begin(), sameValue);
    if (!actual.is_object()) return actual == expected;
    for (const auto& [key, value] : expected.items()) {
        const auto found = actual.find(key);
        if (found == actual.end() || !sameValue(*found, value)) return false;
    }
    return true;
}

bool isIndented(const std::string& text) { return text == "{}" || text.find("\n ") != std::string::npos; }

bool sameBlob(const Event& actual, const Event& expected) {
    if (actual.is_null() || expected.is_null()) return actual == expected;
    if (!actual.is_string() || !isIndented(actual.get_ref<const std::string&>())) return false;
    const Event blob = Event::parse(actual.get_ref<const std::string&>(), nullptr, false);
    return sameValue(blob, expected.is_string() ? Event::parse(expected.get_ref<const std::string&>()) : expected);
}

bool sameTime(const Event& actual, const Event& expected) {
    return actual.is_number() && std::llround(actual.get<double>() * 1e6) == std::llround(expected.get<double>() * 1e6);
}

bool sameMember(const Event& event, const std::string& member, const Event& actual, const Event& expected) {
    const std::string_view kind = textOf(event, "event");
    if (member == "at") return sameTime(actual, expected);
    if (kind == "trace" && member == "text") {
        if (!actual.is_string()) return false;
        return expected.is_null() ||
               sameText(actual.get_ref<const std::string&>(), expected.get_ref<const std::string&>());
    }
    if (kind == "raise" && event.at("name").is_null() && member != "of") {
        return actual.is_string() && (member != "name" || actual != "PortException");
    }
    if (kind == "return" && member == "value" && textOf(event, "of") == "serializedSettings") {
        return sameBlob(actual, expected);
    }
    return sameValue(actual, expected);
}

bool same(const Event& actual, const Event& expected) {
    if (actual.size() != expected.size()) return false;
    for (const auto& [member, value] : expected.items()) {
        const auto found = actual.find(member);
        if (found == actual.end() || !sameMember(expected, member, *found, value)) return false;
    }
    return true;
}

std::string shown(const Events& events, std::size_t place) {
    return place < events.size() ? events[place].dump(-1, ' ', false, Event::error_handler_t::replace) : "nothing more";
}

}  // namespace

Events readEvents(std::string_view lines) {
    Events events;
    while (!lines.empty()) {
        const std::string_view line = lines.substr(0, lines.find('\n'));
        lines.remove_prefix(std::min(line.size() + 1, lines.size()));
        if (!line.empty()) events.push_back(Event::parse(line));
    }
    return events;
}

std::optional<std::string> difference(Events actual, Events expected) {
    straighten(actual);
    straighten(expected);
    for (std::size_t place = 0; place < std::max(actual.size(), expected.size()); ++place) {
        if (place < actual.size() && place < expected.size() && same(actual[place], expected[place])) continue;
        return "event " + std::to_string(place) + " is\n  " + shown(actual, place) + "\nand should be\n  " +
               shown(expected, place);
    }
    return std::nullopt;
}

}  // namespace nearcast::scenario
