// SPDX-License-Identifier: Apache-2.0
#include "doubles/StrictJSON.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace nearcast::doubles {

namespace {

using Json = nlohmann::json;

struct NotJSON : std::runtime_error {
    using std::runtime_error::runtime_error;
};

bool isDigit(int letter) { return letter >= '0' && letter <= '9'; }

class Reader {
public:
    explicit Reader(std::string_view text) : text_(text) {
        if (text_.substr(0, 3) == "\xEF\xBB\xBF") place_ = 3;
    }

    Json whole() {
        space();
        Json result = value(0);
        space();
        require(place_ == text_.size());
        return result;
    }

private:
    static constexpr int deepest = 512;
    static constexpr int end = -1;

    static void require(bool holds) {
        if (!holds) throw NotJSON("not JSON");
    }
    [[nodiscard]] int peek() const { return place_ < text_.size() ? static_cast<unsigned char>(text_[place_]) : end; }
    int take() {
        const int letter = peek();
        require(letter != end);
        ++place_;
        return letter;
    }
    bool takeIf(int letter) {
        if (peek() != letter) return false;
        ++place_;
        return true;
    }
    void word(std::string_view expected) {
        require(text_.substr(place_, expected.size()) == expected);
        place_ += expected.size();
    }
    void space() {
        while (peek() == ' ' || peek() == '\t' || peek() == '\n' || peek() == '\r') ++place_;
    }

    Json value(int depth) {
        switch (peek()) {
            case '{': return object(depth + 1);
            case '[': return array(depth + 1);
            case '"': return string();
            case 't': word("true"); return true;
            case 'f': word("false"); return false;
            case 'n': word("null"); return nullptr;
            default: return number();
        }
    }

    Json object(int depth) {
        require(depth <= deepest);
        Json result = Json::object();
        take();
        space();
        if (takeIf('}')) return result;
        do {
            space();
            require(peek() == '"');
            const std::string key = string();
            space();
            require(take() == ':');
            space();
            result[key] = value(depth);
            space();
        } while (takeIf(','));
        require(take() == '}');
        return result;
    }

    Json array(int depth) {
        require(depth <= deepest);
        Json result = Json::array();
        take();
        space();
        if (takeIf(']')) return result;
        do {
            space();
            result.push_back(value(depth));
            space();
        } while (takeIf(','));
        require(take() == ']');
        return result;
    }

    void digits() {
        require(isDigit(peek()));
        while (isDigit(peek())) ++place_;
    }

    Json number() {
        const std::size_t start = place_;
        takeIf('-');
        if (!takeIf('0')) digits();
        const bool whole = peek() != '.' && peek() != 'e' && peek() != 'E';
        if (takeIf('.')) digits();
        if (takeIf('e') || takeIf('E')) {
            if (!takeIf('+')) takeIf('-');
            digits();
        }
        return numberOf(std::string(text_.substr(start, place_ - start)), whole);
    }

    static Json numberOf(const std::string& text, bool whole) {
        const char* const last = text.data() + text.size();
        std::int64_t integer = 0;
        if (whole && std::from_chars(text.data(), last, integer).ec == std::errc()) return integer;
        std::uint64_t large = 0;
        if (whole && text[0] != '-' && std::from_chars(text.data(), last, large).ec == std::errc()) return large;
        const double number = std::strtod(text.c_str(), nullptr);
        require(std::isfinite(number));
        return number;
    }

    std::string string() {
        std::string result;
        take();
        while (!takeIf('"')) {
            if (takeIf('\\')) {
                escape(result);
            } else {
                character(result);
            }
        }
        return result;
    }

    void escape(std::string& out) {
        const int letter = take();
        if (letter == 'u') return unicodeEscape(out);
        constexpr std::string_view letters = "\"\\/bfnrt";
        constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
        const auto which = letters.find(static_cast<char>(letter));
        require(which != std::string_view::npos);
        out.push_back(meanings[which]);
    }

    std::uint32_t fourDigits() {
        std::uint32_t result = 0;
        for (int count = 0; count < 4; ++count) {
            const auto digit = std::string_view("0123456789abcdefABCDEF").find(static_cast<char>(take()));
            require(digit != std::string_view::npos);
            result = result * 16 + static_cast<std::uint32_t>(digit < 16 ? digit : digit - 6);
        }
        return result;
    }

    void unicodeEscape(std::string& out) {
        std::uint32_t point = fourDigits();
        require(point < 0xDC00 || point > 0xDFFF);
        if (point >= 0xD800 && point <= 0xDBFF) {
            word("\\u");
            const std::uint32_t low = fourDigits();
            require(low >= 0xDC00 && low <= 0xDFFF);
            point = 0x10000 + ((point - 0xD800) << 10) + (low - 0xDC00);
        }
        encode(point, out);
    }

    static void encode(std::uint32_t point, std::string& out) {
        const auto put = [&](std::uint32_t octet) { out.push_back(static_cast<char>(octet)); };
        if (point < 0x80) return put(point);
        if (point < 0x800) {
            put(0xC0 | point >> 6);
        } else if (point < 0x10000) {
            put(0xE0 | point >> 12);
            put(0x80 | (point >> 6 & 0x3F));
        } else {
            put(0xF0 | point >> 18);
            put(0x80 | (point >> 12 & 0x3F));
            put(0x80 | (point >> 6 & 0x3F));
        }
        put(0x80 | (point & 0x3F));
    }

    /// One character outside escapes: decoded, checked and encoded again, so that only the shortest form passes.
    void character(std::string& out) {
        const std::size_t start = place_;
        const auto first = static_cast<std::uint32_t>(take());
        require(first >= 0x20 && (first < 0x80 || (first >= 0xC2 && first <= 0xF4)));
        const int more = first < 0x80 ? 0 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
        std::uint32_t point = more == 0 ? first : first & (0x3FU >> more);
        for (int count = 0; count < more; ++count) {
            const auto next = static_cast<std::uint32_t>(take());
            require((next & 0xC0) == 0x80);
            point = point << 6 | (next & 0x3F);
        }
        require(point <= 0x10FFFF && (point < 0xD800 || point > 0xDFFF));
        std::string shortest;
        encode(point, shortest);
        require(text_.substr(start, place_ - start) == shortest);
        out += shortest;
    }

    std::string_view text_;
    std::size_t place_ = 0;
};

}  // namespace

std::optional<nlohmann::json> readStrictJSON(std::string_view text) {
    try {
        return Reader(text).whole();
    } catch (const NotJSON&) {
        return std::nullopt;
    }
}

}  // namespace nearcast::doubles
