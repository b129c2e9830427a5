// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONSerialization.h"
#include "support/Printable.h"
#include "support/Utf8.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

namespace nearcast {

namespace {

using Library = nlohmann::json;

/// Octets of the well-formed character at `place`; 0 where there is none.
std::size_t wellFormed(std::string_view text, std::size_t place) {
    if (static_cast<unsigned char>(text[place]) < 0x80) return 1;
    const std::size_t length = characterLength(text.substr(place));
    return length == 1 ? 0 : length;
}

bool isUTF8(std::string_view text) {
    for (std::size_t place = 0; place < text.size();) {
        const std::size_t length = wellFormed(text, place);
        if (length == 0) return false;
        place += length;
    }
    return true;
}

/// Whether the text stands between quotation marks as it is.
bool isPlain(std::string_view text) {
    for (std::size_t place = 0; place < text.size();) {
        const auto octet = static_cast<unsigned char>(text[place]);
        if (octet < 0x20 || octet == '"' || octet == '\\') return false;
        const std::size_t length = wellFormed(text, place);
        if (length == 0) return false;
        place += length;
    }
    return true;
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

void appendAsItIs(std::string& out, std::string_view text) {
    if (isPlain(text)) {
        out.push_back('"');
        out.append(text);
        out.push_back('"');
    } else {
        out += Library(text).dump(-1, ' ', false, Library::error_handler_t::replace);
    }
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

/// Writes a value as the library would, but without a tree of the library's own, which costs more than the text. What
/// JSON cannot hold becomes text, for people.
class Writer {
public:
    /// @param indented two spaces a level, or else all on one line
    explicit Writer(bool indented) : indented_(indented) {}

    void operator()(std::nullptr_t) { out_ += "null"; }
    void operator()(bool truth) { out_ += truth ? "true" : "false"; }
    void operator()(std::int64_t number) { appendInteger(number); }
    void operator()(std::uint64_t number) { appendInteger(number); }
    void operator()(double number) {
        if (std::isfinite(number)) {
            out_ += Library(number).dump();
        } else {
            appendAsItIs(out_, std::isnan(number) ? "nan" : number > 0 ? "inf" : "-inf");
        }
    }
    void operator()(const std::string& text) { appendAsItIs(out_, text); }
    void operator()(const SettingValue::Bytes& bytes) { appendAsItIs(out_, inHexadecimal(bytes)); }
    void operator()(const SettingValue::Array& elements) {
        list('[', ']', elements, [this](const SettingValue& element) { std::visit(*this, element.storage()); });
    }
    void operator()(const SettingValue::Dictionary& members) {
        list('{', '}', members, [this](const auto& member) {
            appendAsItIs(out_, member.first);
            out_ += indented_ ? ": " : ":";
            std::visit(*this, member.second.storage());
        });
    }

    [[nodiscard]] std::string text() && { return std::move(out_); }

private:
    template <class Integer>
    void appendInteger(Integer number) {
        std::array<char, 24> digits;  // a sign and the 20 digits of the largest
        out_.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
    }

    template <class Container, class Write>
    void list(char begin, char end, const Container& container, Write write) {
        out_ += begin;
        ++depth_;
        const char* separator = "";
        for (const auto& each : container) {
            out_ += separator;
            beginLine();
            write(each);
            separator = ",";
        }
        --depth_;
        if (!container.empty()) beginLine();
        out_ += end;
    }

    void beginLine() {
        if (indented_) out_.append(1, '\n').append(2 * depth_, ' ');
    }

    std::string out_;
    std::size_t depth_ = 0;
    bool indented_;
};

std::string written(const SettingValue& value, bool indented) {
    Writer writer(indented);
    std::visit(writer, value.storage());
    return std::move(writer).text();
}

}  // namespace

bool JSONSerialization::isValidJSONObject(const SettingValue& value) const { return writable(value, 0); }

std::string JSONSerialization::dataWithJSONObject(const SettingValue& value) const { return written(value, true); }

std::string JSONSerialization::description(const SettingValue& value) const { return compact(value); }

std::string JSONSerialization::compact(const SettingValue& value) { return written(value, false); }

void appendQuoted(std::string& out, std::string_view text) {
    if (isPrintable(text)) return appendAsItIs(out, text);
    std::string quoted;
    appendAsItIs(quoted, text);
    out += printableJSON(quoted);
}

}  // namespace nearcast
