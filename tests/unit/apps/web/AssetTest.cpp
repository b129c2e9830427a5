// SPDX-License-Identifier: Apache-2.0
#include "web/Asset.h"

#include <gtest/gtest.h>

#include <array>

namespace nearcast::cli {
namespace {

TEST(AssetTest, IsFoundByItsName) {
    constexpr std::array assets{Asset{"a.js", "1", ""}, Asset{"b.js", "2", ""}};
    EXPECT_EQ(assetNamed(assets, "b.js").content, "2");
    EXPECT_THROW(assetNamed(assets, "c.js"), std::logic_error);
}

// printf '' | openssl dgst -sha256 -binary | base64
TEST(AssetTest, APolicyNamesTheHashInBase64) {
    const Asset empty{"", "", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"};
    EXPECT_EQ(policySource(empty), "'sha256-47DEQpj8HBSa+/TImW+5JCeuQeRkm5NMpJWZG3hSuFU='");
}

TEST(AssetTest, HashesOfEveryLengthArePadded) {
    const auto source = [](std::string_view hexadecimal) { return policySource({"", "", hexadecimal}); };
    EXPECT_EQ(source("666f6f"), "'sha256-Zm9v'");
    EXPECT_EQ(source("666f6f62"), "'sha256-Zm9vYg=='");
    EXPECT_EQ(source("666f6f6261"), "'sha256-Zm9vYmE='");
}

}  // namespace
}  // namespace nearcast::cli
