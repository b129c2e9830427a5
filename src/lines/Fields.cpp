// SPDX-License-Identifier: Apache-2.0
#include "lines/Fields.h"

#include "lines/Line.h"
#include "platform/json/JSONSerialization.h"

#include <cmath>

namespace nearcast::lines {

namespace {

constexpr double latestSeconds = 9.0e9;

[[noreturn]] void illTyped(std::string_view name, std::string_view expected) {
    throw LineError("field \"" + std::string(name) + "\": expected " + std::string(expected));
}

int digit(char letter) {
    if (letter >= '0' && letter <= '9') return letter - '0';
    if (letter >= 'a' && letter <= 'f') return letter - 'a' + 10;
    if (letter >= 'A' && letter <= 'F') return letter - 'A' + 10;
    return -1;
}

}  // namespace

Fields Fields::parse(std::string_view text) {
    auto parsed = JSONSerialization::parse(text);
    if (const auto* problem = std::get_if<JSONProblem>(&parsed)) {
        throw LineError(placeOf(text, problem->offset).column, problem->text);
    }
    auto* members = std::get<SettingValue>(parsed).as<SettingValue::Dictionary>();
    if (members == nullptr) throw LineError("not a JSON object");
    return Fields(std::move(*members));
}

std::optional<SettingValue> Fields::take(std::string_view name) {
    const auto found = fields_.find(name);
    if (found == fields_.end()) return std::nullopt;
    SettingValue value = std::move(fields_.extract(found).mapped());
    if (value.as<std::nullptr_t>() != nullptr) return std::nullopt;
    return value;
}

std::optional<std::string> Fields::text(std::string_view name) {
    auto value = take(name);
    if (!value) return std::nullopt;
    if (auto* text = value->as<std::string>()) return std::move(*text);
    illTyped(name, "a text");
}

std::optional<double> Fields::number(std::string_view name) {
    const auto value = take(name);
    if (!value) return std::nullopt;
    if (const auto* number = value->as<double>()) return *number;
    if (const auto* number = value->as<std::int64_t>()) return static_cast<double>(*number);
    if (const auto* number = value->as<std::uint64_t>()) return static_cast<double>(*number);
    illTyped(name, "a number");
}

std::optional<double> Fields::seconds(std::string_view name) {
    const auto value = number(name);
    if (value && std::abs(*value) > latestSeconds) {
        throw LineError("field \"" + std::string(name) + "\": beyond 9000000000 seconds");
    }
    return value;
}

std::optional<bool> Fields::boolean(std::string_view name) {
    const auto value = take(name);
    if (!value) return std::nullopt;
    if (const auto* truth = value->as<bool>()) return *truth;
    illTyped(name, "true or false");
}

std::optional<std::int64_t> Fields::integer(std::string_view name) {
    const auto value = take(name);
    if (!value) return std::nullopt;
    if (const auto* number = value->as<std::int64_t>()) return *number;
    illTyped(name, "an integer of 64 bits");
}

std::optional<std::uint64_t> Fields::unsignedInteger(std::string_view name) {
    const auto value = take(name);
    if (!value) return std::nullopt;
    if (const auto* number = value->as<std::uint64_t>()) return *number;
    if (const auto* number = value->as<std::int64_t>(); number != nullptr && *number >= 0) {
        return static_cast<std::uint64_t>(*number);
    }
    illTyped(name, "an unsigned integer of 64 bits");
}

std::optional<std::vector<std::string>> Fields::texts(std::string_view name) {
    const auto value = take(name);
    if (!value) return std::nullopt;
    const auto* elements = value->as<SettingValue::Array>();
    if (elements == nullptr) illTyped(name, "a list of texts");
    std::vector<std::string> result;
    for (const SettingValue& element : *elements) {
        const auto* text = element.as<std::string>();
        if (text == nullptr) illTyped(name, "a list of texts");
        result.push_back(*text);
    }
    return result;
}

std::optional<std::vector<std::uint8_t>> Fields::octets(std::string_view name) {
    const auto digits = text(name);
    if (!digits) return std::nullopt;
    if (digits->size() % 2 != 0) illTyped(name, "hexadecimal text, two digits an octet");
    std::vector<std::uint8_t> result;
    result.reserve(digits->size() / 2);
    for (std::size_t place = 0; place < digits->size(); place += 2) {
        const int high = digit((*digits)[place]);
        const int low = digit((*digits)[place + 1]);
        if (high < 0 || low < 0) illTyped(name, "hexadecimal text, two digits an octet");
        result.push_back(static_cast<std::uint8_t>(high * 16 + low));
    }
    return result;
}

std::optional<SettingValue::Dictionary> Fields::object(std::string_view name) {
    auto value = take(name);
    if (!value) return std::nullopt;
    if (auto* members = value->as<SettingValue::Dictionary>()) return std::move(*members);
    illTyped(name, "an object");
}

void Fields::requireNoMore() const {
    if (!fields_.empty()) throw LineError("unknown field \"" + fields_.begin()->first + "\"");
}

}  // namespace nearcast::lines
