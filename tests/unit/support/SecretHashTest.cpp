// SPDX-License-Identifier: Apache-2.0
#include "support/SecretHash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast {
namespace {

constexpr std::size_t places = 1031;  // as many as a table of the standard library has for several hundred entries

/// How many of the keys fall on the fullest place.
template <class Keys>
std::size_t fullestPlace(const Keys& keys) {
    std::map<std::size_t, std::size_t> loads;
    std::size_t fullest = 0;
    for (const auto& key : keys) fullest = std::max(fullest, ++loads[SecretHash{}(key) % places]);
    return fullest;
}

TEST(SecretHash, SpreadsTextsThatWereChosenToFallOnOnePlace) {
    std::vector<std::string> texts;
    for (std::uint64_t number = 0; texts.size() < 200; ++number) {
        const std::string text = "shelf " + std::to_string(number);
        if (std::hash<std::string_view>{}(text) % places == 0) texts.push_back(text);
    }
    EXPECT_LE(fullestPlace(texts), 12U);
}

TEST(SecretHash, SpreadsNumbersThatWereChosenToFallOnOnePlace) {
    std::vector<std::uint64_t> numbers;
    for (std::uint64_t number = 0; number < 200; ++number) numbers.push_back(number * places);
    EXPECT_LE(fullestPlace(numbers), 12U);
}

TEST(SecretHash, TellsTextsOfAnyLengthApartByEveryOctet) {
    std::set<std::size_t> hashes;
    std::size_t texts = 0;
    for (std::size_t length = 0; length <= 33; ++length) {
        hashes.insert(SecretHash{}(std::string(length, '\0')));
        ++texts;
        for (std::size_t place = 0; place < length; ++place) {
            std::string text(length, '\0');
            text[place] = 'A';
            hashes.insert(SecretHash{}(text));
            ++texts;
        }
    }
    EXPECT_EQ(hashes.size(), texts);
}

TEST(SecretHash, IsTheSameForTheSameText) {
    const std::string text = "a text of some length, and another octet";
    EXPECT_EQ(SecretHash{}(text), SecretHash{}(std::string(text)));
    EXPECT_EQ(SecretHash{}(std::string_view(text).substr(3)), SecretHash{}(text.substr(3)));
}

}  // namespace
}  // namespace nearcast
