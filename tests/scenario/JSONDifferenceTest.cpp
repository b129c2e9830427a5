// SPDX-License-Identifier: Apache-2.0
#include "doubles/StrictJSON.h"
#include "platform/json/JSONSerialization.h"
#include "scenario/BlobGenerator.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

namespace nearcast {
namespace {

/// Whether the two are the same value of the same kind.
struct Same {
    const nlohmann::json& other;

    bool operator()(std::nullptr_t) const { return other.is_null(); }
    bool operator()(bool value) const { return other.is_boolean() && other.get<bool>() == value; }
    bool operator()(std::int64_t value) const {
        return other.is_number_integer() && other == value && (value < 0) == (other < 0);
    }
    bool operator()(std::uint64_t value) const {
        return other.is_number_unsigned() && other.get<std::uint64_t>() == value;
    }
    bool operator()(double value) const { return other.is_number_float() && other.get<double>() == value; }
    bool operator()(const std::string& value) const { return other.is_string() && other.get<std::string>() == value; }
    bool operator()(const SettingValue::Bytes&) const { return false; }
    bool operator()(const SettingValue::Array& value) const {
        if (!other.is_array() || other.size() != value.size()) return false;
        for (std::size_t place = 0; place < value.size(); ++place) {
            if (!std::visit(Same{other[place]}, value[place].storage())) return false;
        }
        return true;
    }
    bool operator()(const SettingValue::Dictionary& value) const {
        if (!other.is_object() || other.size() != value.size()) return false;
        for (const auto& [key, member] : value) {
            if (!other.contains(key) || !std::visit(Same{other[key]}, member.storage())) return false;
        }
        return true;
    }
};

TEST(JSONDifference, AgreesWithAPlainReaderOnTextsMadeByChance) {
    const JSONSerialization JSON;
    scenario::Random random(1);
    scenario::BlobGenerator blobs(random);
    int good = 0;
    constexpr int all = 20000;
    for (int count = 0; count < all; ++count) {
        const std::string text = blobs.blob();
        const auto value = JSON.JSONObjectWithData(text);
        const auto expected = doubles::readStrictJSON(text);
        ASSERT_EQ(value.has_value(), expected.has_value()) << text;
        if (!value) continue;
        ++good;
        ASSERT_TRUE(std::visit(Same{*expected}, value->storage())) << text;
        ASSERT_TRUE(JSON.isValidJSONObject(*value));
        ASSERT_EQ(JSON.JSONObjectWithData(JSON.dataWithJSONObject(*value)), value) << text;
    }
    EXPECT_GT(good, all / 4);
    EXPECT_LT(good, all - all / 8);
}

}  // namespace
}  // namespace nearcast
