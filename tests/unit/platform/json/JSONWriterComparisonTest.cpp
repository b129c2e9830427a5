// SPDX-License-Identifier: Apache-2.0
// The writer makes no tree of the library's; what it writes is still, octet by octet, what the library writes.
#include "platform/json/JSONSerialization.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

namespace nearcast {
namespace {

using Library = nlohmann::json;

struct ToLibrary {
    Library operator()(const SettingValue::Array& elements) const {
        Library result = Library::array();
        for (const auto& element : elements) result.push_back(std::visit(*this, element.storage()));
        return result;
    }
    Library operator()(const SettingValue::Dictionary& members) const {
        Library result = Library::object();
        for (const auto& [key, value] : members) result[key] = std::visit(*this, value.storage());
        return result;
    }
    Library operator()(const SettingValue::Bytes& /*bytes*/) const { throw std::logic_error("not JSON"); }
    template <class Plain>
    Library operator()(const Plain& plain) const {
        return plain;
    }
};

/// Makes values of everything that JSON can hold, and texts that are not UTF-8.
class Maker {
public:
    explicit Maker(bool broken) : broken_(broken) {}

    SettingValue value(int depth) {
        switch (below(depth > 0 ? 8 : 6)) {
            case 0: return nullptr;
            case 1: return below(2) == 0;
            case 2: return static_cast<long long>(random_() >> below(64));
            case 3: return static_cast<unsigned long long>(random_());
            case 4: return number();
            case 5: return text();
            case 6: return array(depth);
            default: return dictionary(depth);
        }
    }

    SettingValue dictionary(int depth) {
        SettingValue::Dictionary members;
        for (std::uint64_t left = below(5); left > 0; --left) members.insert_or_assign(text(), value(depth - 1));
        return members;
    }

private:
    std::uint64_t below(std::uint64_t end) { return random_() % end; }

    SettingValue array(int depth) {
        SettingValue::Array elements;
        for (std::uint64_t left = below(5); left > 0; --left) elements.push_back(value(depth - 1));
        return elements;
    }

    double number() {
        const auto any = std::bit_cast<double>(random_());
        return std::isfinite(any) && below(2) == 0 ? any : static_cast<double>(below(2000)) / 8 - 100;
    }

    std::string text() {
        static constexpr const char* pieces[] = {"a",
                                                 "BT:",
                                                 " ",
                                                 "\"",
                                                 "\\",
                                                 "/",
                                                 "\n",
                                                 "\x01",
                                                 "\x1f",
                                                 "\x7f",
                                                 "\xC2\x80",
                                                 "\xDF\xBF",
                                                 "\xE0\xA0\x80",
                                                 "\xED\x9F\xBF",
                                                 "é",
                                                 "\xE2\x80\xA8",
                                                 "\xEE\x80\x80",
                                                 "\xF0\x90\x80\x80",
                                                 "\xF4\x8F\xBF\xBF"};
        static constexpr const char* brokenPieces[] = {"\x80",     "\xC3", "\xE2\x82",        "\xED\xA0\x80",
                                                       "\xC0\xAF", "\xFF", "\xF4\x90\x80\x80"};
        std::string result;
        for (std::uint64_t left = below(6); left > 0; --left) {
            result += broken_ && below(4) == 0 ? brokenPieces[below(std::size(brokenPieces))]
                                               : pieces[below(std::size(pieces))];
        }
        return result;
    }

    std::mt19937_64 random_{20};
    bool broken_;
};

TEST(JSONWriterComparison, WritesAsTheLibraryDoesIndentedAndOnOneLine) {
    Maker maker(false);
    const JSONSerialization JSON;
    for (int round = 0; round < 3000; ++round) {
        const SettingValue value = maker.dictionary(4);
        const Library library = std::visit(ToLibrary{}, value.storage());
        ASSERT_TRUE(JSON.isValidJSONObject(value)) << library;
        ASSERT_EQ(JSON.dataWithJSONObject(value), library.dump(2));
        ASSERT_EQ(JSONSerialization::compact(value), library.dump());
    }
}

TEST(JSONWriterComparison, KnowsUTF8AndReplacesTheRestAsTheLibraryDoes) {
    Maker maker(true);
    const JSONSerialization JSON;
    for (int round = 0; round < 3000; ++round) {
        const SettingValue value = maker.dictionary(2);
        const Library library = std::visit(ToLibrary{}, value.storage());
        const auto writable = [&] {
            try {
                return !library.dump().empty();
            } catch (const Library::type_error&) {
                return false;
            }
        };
        const std::string replaced = library.dump(-1, ' ', false, Library::error_handler_t::replace);
        ASSERT_EQ(JSON.isValidJSONObject(value), writable()) << replaced;
        ASSERT_EQ(JSONSerialization::compact(value), replaced);
    }
}

}  // namespace
}  // namespace nearcast
