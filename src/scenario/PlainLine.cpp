// SPDX-License-Identifier: Apache-2.0
#include "scenario/PlainLine.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace nearcast::scenario {

namespace {

// Up to here a time read as a double names the same microsecond as its digits do.
constexpr std::size_t mostSecondDigits = 9;
constexpr std::size_t mostFractionDigits = 6;
constexpr std::size_t mostRSSIDigits = 3;

bool isDigit(char letter) { return letter >= '0' && letter <= '9'; }

int hexadecimal(char letter) {
    if (isDigit(letter)) return letter - '0';
    if (letter >= 'a' && letter <= 'f') return letter - 'a' + 10;
    if (letter >= 'A' && letter <= 'F') return letter - 'A' + 10;
    return -1;
}

/// Takes a line apart from the left. Each step fails for good once one has failed.
class Taker {
public:
    explicit Taker(std::string_view rest) : rest_(rest) {}

    [[nodiscard]] bool succeeded() const { return good_ && rest_.empty(); }

    /// Whether the text comes next; it is passed over then.
    bool accept(std::string_view text) {
        if (!good_ || rest_.substr(0, text.size()) != text) return false;
        rest_.remove_prefix(text.size());
        return true;
    }
    void expect(std::string_view text) { good_ = accept(text); }

    /// Digits without needless zeros in front.
    std::int64_t number(std::size_t mostDigits) {
        const std::string_view digits = takeDigits();
        good_ = good_ && !digits.empty() && digits.size() <= mostDigits && (digits.size() == 1 || digits[0] != '0');
        return good_ ? valueOf(digits) : 0;
    }

    Time seconds() {
        const std::int64_t whole = number(mostSecondDigits);
        if (!accept(".")) return Time(whole * 1'000'000);
        const std::string_view digits = takeDigits();
        good_ = good_ && !digits.empty() && digits.size() <= mostFractionDigits;
        if (!good_) return {};
        std::int64_t fraction = valueOf(digits);
        for (std::size_t place = digits.size(); place < mostFractionDigits; ++place) fraction *= 10;
        return Time(whole * 1'000'000 + fraction);
    }

    /// A quoted text of printable ASCII without escapes.
    std::string_view text() {
        expect("\"");
        std::size_t length = 0;
        while (length < rest_.size() && isPlain(rest_[length])) ++length;
        const std::string_view result = rest_.substr(0, length);
        rest_.remove_prefix(length);
        expect("\"");
        return result;
    }

    std::vector<std::uint8_t> octets() {
        const std::string_view digits = text();
        good_ = good_ && digits.size() % 2 == 0;
        std::vector<std::uint8_t> result;
        if (!good_) return result;
        result.reserve(digits.size() / 2);
        for (std::size_t place = 0; place < digits.size(); place += 2) {
            const int octet = hexadecimal(digits[place]) * 16 + hexadecimal(digits[place + 1]);
            good_ = good_ && hexadecimal(digits[place]) >= 0 && hexadecimal(digits[place + 1]) >= 0;
            result.push_back(static_cast<std::uint8_t>(octet));
        }
        return result;
    }

private:
    static bool isPlain(char letter) { return letter >= ' ' && letter <= '~' && letter != '"' && letter != '\\'; }

    static std::int64_t valueOf(std::string_view digits) {
        std::int64_t value = 0;
        for (const char digit : digits) value = value * 10 + (digit - '0');
        return value;
    }

    std::string_view takeDigits() {
        std::size_t length = 0;
        while (length < rest_.size() && isDigit(rest_[length])) ++length;
        const std::string_view digits = rest_.substr(0, length);
        rest_.remove_prefix(length);
        return digits;
    }

    std::string_view rest_;
    bool good_ = true;
};

std::vector<std::string> textsOf(Taker& taker) {
    std::vector<std::string> texts;
    taker.expect("[");
    if (taker.accept("]")) return texts;
    do {
        texts.emplace_back(taker.text());
    } while (taker.accept(", "));
    taker.expect("]");
    return texts;
}

}  // namespace

std::optional<Line> readPlainLine(std::string_view text) {
    Taker taker(text);
    Line line;
    Advertise action;
    taker.expect(R"({"at": )");
    line.at = taker.seconds();
    taker.expect(R"(, "do": "advertise")");
    if (taker.accept(R"(, "name": )") && !taker.accept("null")) action.name.emplace(taker.text());
    if (taker.accept(R"(, "manufacturerData": )") && !taker.accept("null")) action.manufacturerData = taker.octets();
    taker.expect(R"(, "RSSI": )");
    const bool negative = taker.accept("-");
    const auto magnitude = static_cast<std::int32_t>(taker.number(mostRSSIDigits));
    action.RSSI = negative ? -magnitude : magnitude;
    if (taker.accept(R"(, "services": )")) action.services = textsOf(taker);
    taker.expect("}");
    if (!taker.succeeded() || (negative && magnitude == 0)) return std::nullopt;
    line.action = std::move(action);
    return line;
}

}  // namespace nearcast::scenario
