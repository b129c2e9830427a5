// SPDX-License-Identifier: Apache-2.0
#include "lines/PlainLine.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace nearcast::lines {

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

/// Takes a line apart from the left, token by token, with or without blanks between them. Once a step has failed, all
/// later ones fail.
class Taker {
public:
    explicit Taker(std::string_view rest) : rest_(rest) {}

    /// Whether every step succeeded and nothing is left.
    [[nodiscard]] bool succeeded() {
        skipBlanks();
        return good_ && rest_.empty();
    }
    void fail() { good_ = false; }

    /// Whether the token comes next; if so it is consumed.
    bool accept(std::string_view token) {
        skipBlanks();
        return acceptHere(token);
    }
    void expect(std::string_view token) { good_ = accept(token); }

    /// Digits without leading zeros.
    std::int64_t number(std::size_t mostDigits) {
        skipBlanks();
        return numberHere(mostDigits);
    }

    Time seconds() {
        const std::int64_t whole = number(mostSecondDigits);
        if (!acceptHere(".")) return Time(whole * 1'000'000);
        const std::string_view digits = takeDigits();
        good_ = good_ && !digits.empty() && digits.size() <= mostFractionDigits;
        if (!good_) return {};
        std::int64_t fraction = valueOf(digits);
        for (std::size_t place = digits.size(); place < mostFractionDigits; ++place) fraction *= 10;
        return Time(whole * 1'000'000 + fraction);
    }

    std::int32_t RSSI() {
        const bool negative = accept("-");
        const auto magnitude =
            static_cast<std::int32_t>(negative ? numberHere(mostRSSIDigits) : number(mostRSSIDigits));
        good_ = good_ && !(negative && magnitude == 0);
        return negative ? -magnitude : magnitude;
    }

    /// A quoted text of printable ASCII without escapes.
    std::string_view text() {
        expect("\"");
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), isPlain);
        const std::string_view result(rest_.begin(), end);
        rest_.remove_prefix(result.size());
        good_ = acceptHere("\"");
        return result;
    }

    std::vector<std::uint8_t> octets() {
        const std::string_view digits = text();
        good_ = good_ && digits.size() % 2 == 0;
        std::vector<std::uint8_t> result;
        if (!good_) return result;
        result.reserve(digits.size() / 2);
        for (std::size_t place = 0; place < digits.size(); place += 2) {
            const int high = hexadecimal(digits[place]);
            const int low = hexadecimal(digits[place + 1]);
            good_ = good_ && high >= 0 && low >= 0;
            result.push_back(static_cast<std::uint8_t>(high * 16 + low));
        }
        return result;
    }

    std::vector<std::string> texts() {
        std::vector<std::string> result;
        expect("[");
        if (accept("]")) return result;
        do {
            result.emplace_back(text());
        } while (accept(","));
        expect("]");
        return result;
    }

private:
    static bool isPlain(char letter) { return letter >= ' ' && letter <= '~' && letter != '"' && letter != '\\'; }

    static std::int64_t valueOf(std::string_view digits) {
        std::int64_t value = 0;
        for (const char digit : digits) value = value * 10 + (digit - '0');
        return value;
    }

    void skipBlanks() {
        while (!rest_.empty() && (rest_[0] == ' ' || rest_[0] == '\t' || rest_[0] == '\r')) rest_.remove_prefix(1);
    }

    bool acceptHere(std::string_view token) {
        if (!good_ || rest_.substr(0, token.size()) != token) return false;
        rest_.remove_prefix(token.size());
        return true;
    }

    std::int64_t numberHere(std::size_t mostDigits) {
        const std::string_view digits = takeDigits();
        good_ = good_ && !digits.empty() && digits.size() <= mostDigits && (digits.size() == 1 || digits[0] != '0');
        return good_ ? valueOf(digits) : 0;
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

/// The members of an `advertise` line, in any order.
class Members {
public:
    explicit Members(Time previous) { line_.at = previous; }

    /// Takes the value of the member; the taker fails where the value is not plain.
    void take(std::string_view name, Taker& taker) {
        if (name == "at" && isFirst(at)) {
            line_.at = taker.seconds();
        } else if (name == "do" && isFirst(what)) {
            if (taker.text() != "advertise") taker.fail();
        } else if (name == "name" && isFirst(localName)) {
            if (!taker.accept("null")) action_.name.emplace(taker.text());
        } else if (name == "manufacturerData" && isFirst(data)) {
            if (!taker.accept("null")) action_.manufacturerData = taker.octets();
        } else if (name == "RSSI" && isFirst(RSSI)) {
            action_.RSSI = taker.RSSI();
        } else if (name == "services" && isFirst(services)) {
            action_.services = taker.texts();
        } else {
            taker.fail();
        }
    }

    [[nodiscard]] bool complete() const { return (seen_ & what) != 0 && (seen_ & RSSI) != 0; }

    [[nodiscard]] Line line() && {
        line_.action = std::move(action_);
        return std::move(line_);
    }

private:
    enum Member : unsigned { at = 1, what = 2, localName = 4, data = 8, RSSI = 16, services = 32 };

    bool isFirst(Member member) {
        const bool first = (seen_ & member) == 0;
        seen_ |= member;
        return first;
    }

    Line line_;
    Advertise action_;
    unsigned seen_ = 0;
};

}  // namespace

std::optional<Line> readPlainLine(std::string_view text, Time previous) {
    Taker taker(text);
    Members members(previous);
    taker.expect("{");
    do {
        const std::string_view name = taker.text();
        taker.expect(":");
        members.take(name, taker);
    } while (taker.accept(","));
    taker.expect("}");
    if (!taker.succeeded() || !members.complete()) return std::nullopt;
    return std::move(members).line();
}

}  // namespace nearcast::lines
