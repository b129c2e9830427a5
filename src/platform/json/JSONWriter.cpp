// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONSerialization.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

namespace nearcast {

namespace {

using Library = nlohmann::json;
using OnInvalid = Library::error_handler_t;

bool isUTF8(std::string_view text) {
    const auto ascii = [](char letter) { return static_cast<unsigned char>(letter) < 0x80; };
    if (std::all_of(text.begin(), text.end(), ascii)) return true;
    try {
        (void)Library(text).dump();
        return true;
    } catch (const Library::type_error&) {
        return false;
    }
}

bool writable(const SettingValue& value, int depth);

bool writable(const SettingValue::Array& elements, int depth) {
    return depth <= JSONSerialization::maximumDepth &&
           std::all_of(elements.begin(), elements.end(),
                       [&](const SettingValue& element) { return writable(element, depth); });
}

bool writable(const SettingValue::Dictionary& members, int depth) {
    return depth <= JSONSerialization::maximumDepth &&
           std::all_of(members.begin(), members.end(),
                       [&](const auto& member) { return isUTF8(member.first) && writable(member.second, depth); });
}

/// @param depth of what surrounds the value
bool writable(const SettingValue& value, int depth) {
    if (const auto* number = value.as<double>()) return std::isfinite(*number);
    if (const auto* text = value.as<std::string>()) return isUTF8(*text);
    if (const auto* elements = value.as<SettingValue::Array>()) return writable(*elements, depth + 1);
    if (const auto* members = value.as<SettingValue::Dictionary>()) return writable(*members, depth + 1);
    return value.as<SettingValue::Bytes>() == nullptr;
}

std::string inHexadecimal(const SettingValue::Bytes& bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text = "<";
    for (const std::byte byte : bytes) {
        text.push_back(digits[std::to_integer<std::size_t>(byte) >> 4]);
        text.push_back(digits[std::to_integer<std::size_t>(byte) & 15]);
    }
    return text + ">";
}

/// What the library can write stays as it is; the rest becomes text, for people.
struct ToLibrary {
    Library operator()(std::nullptr_t) const { return nullptr; }
    Library operator()(double number) const {
        if (std::isfinite(number)) return number;
        return std::isnan(number) ? "nan" : number > 0 ? "inf" : "-inf";
    }
    Library operator()(const SettingValue::Bytes& bytes) const { return inHexadecimal(bytes); }
    Library operator()(const SettingValue::Array& elements) const {
        Library result = Library::array();
        for (const auto& element : elements) result.push_back(std::visit(*this, element.storage()));
        return result;
    }
    Library operator()(const SettingValue::Dictionary& members) const {
        Library result = Library::object();
        for (const auto& [key, value] : members) result.emplace(key, std::visit(*this, value.storage()));
        return result;
    }
    template <class Plain>
    Library operator()(const Plain& plain) const {
        return plain;
    }
};

Library toLibrary(const SettingValue& value) { return std::visit(ToLibrary{}, value.storage()); }

}  // namespace

bool JSONSerialization::isValidJSONObject(const SettingValue& value) const { return writable(value, 0); }

std::string JSONSerialization::dataWithJSONObject(const SettingValue& value) const { return toLibrary(value).dump(2); }

std::string JSONSerialization::description(const SettingValue& value) const { return compact(value); }

std::string JSONSerialization::compact(const SettingValue& value) {
    return toLibrary(value).dump(-1, ' ', false, OnInvalid::replace);
}

void appendQuoted(std::string& out, std::string_view text) {
    const auto plain = [](char letter) { return letter >= ' ' && letter <= '~' && letter != '"' && letter != '\\'; };
    if (std::all_of(text.begin(), text.end(), plain)) {
        out.push_back('"');
        out.append(text);
        out.push_back('"');
        return;
    }
    out.append(Library(text).dump(-1, ' ', false, OnInvalid::replace));
}

}  // namespace nearcast
