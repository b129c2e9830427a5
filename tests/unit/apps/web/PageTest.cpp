// SPDX-License-Identifier: Apache-2.0
#include "web/Page.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>
#include <string>
#include <vector>

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

TEST(PageTest, NamesAreFilledInOnce) {
    const auto twice = [](std::string_view name) { return name == "a" ? "{{b}}" : "!"; };
    EXPECT_EQ(filledIn("<{{a}}> {{b}}", twice), "<{{b}}> !");
    EXPECT_EQ(filledIn("nothing", twice), "nothing");
    EXPECT_THROW(filledIn("{{a", twice), std::logic_error);
}

TEST(PageTest, TextBecomesMarkupThatShowsIt) {
    EXPECT_EQ(markupOf("<b title=\"x\">&amp;\x01\xFF"),
              "&lt;b title=&quot;x&quot;&gt;&amp;amp;\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(PageTest, DataAreTheSameJSONWithoutMarkup) {
    EXPECT_EQ(scriptDataOf(R"({"a":"</script><!--"})"), R"({"a":"\u003c/script>\u003c!--"})");
}

constexpr std::string_view hash = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

/// The pages that the program has, and in place of uPlot a few words.
std::vector<Asset> assetsWithPlot() {
    std::vector<Asset> assets{{"uPlot.iife.min.js", "plot()", hash},
                              {"uPlot.min.css", ".u {}", hash},
                              {"LICENSE", "Permission is hereby granted", hash}};
    for (const Asset& asset : pageAssets()) {
        if (asset.name.substr(0, 5) != "uPlot" && asset.name != "LICENSE") assets.push_back(asset);
    }
    return assets;
}

struct EachPageTest : testing::TestWithParam<const char*> {
    std::string page = writtenPage(assetsWithPlot(), {GetParam(), "A <walk>", "nearcast 0", R"(["</script>"])"});

    [[nodiscard]] std::size_t count(std::string_view text) const {
        std::size_t found = 0;
        for (auto at = page.find(text); at != std::string::npos; at = page.find(text, at + 1)) ++found;
        return found;
    }
};

INSTANTIATE_TEST_SUITE_P(All, EachPageTest, testing::Values("report", "evaluate"));

TEST_P(EachPageTest, HasNoPlaceholderLeft) { EXPECT_EQ(count("{{"), 0U); }

TEST_P(EachPageTest, HasItsTitleAndItsMaker) {
    EXPECT_EQ(count("<title>A &lt;walk&gt;</title>"), 1U);
    EXPECT_EQ(count("Made by nearcast 0."), 1U);
}

TEST_P(EachPageTest, ScriptsEndOnlyWhereThePageEndsThem) {
    EXPECT_EQ(count("</script"), 3U);  // the data, uPlot, the page's own
    EXPECT_EQ(count(R"(["\u003c/script>"])"), 1U);
}

TEST_P(EachPageTest, ItsPolicyAllowsNothingButWhatItHolds) {
    EXPECT_EQ(count("content=\"default-src 'none'; "), 1U);
    EXPECT_EQ(count("'sha256-"), 5U);  // two scripts and three styles
    EXPECT_EQ(count("<script>") + count("<script type=\"module\">") + count("<style>"), 5U);
    EXPECT_EQ(count("unsafe-"), 0U);
    EXPECT_EQ(count(" src="), 0U);
    EXPECT_EQ(count(" style="), 0U);
    EXPECT_EQ(count("<link"), 0U);
}

TEST_P(EachPageTest, CarriesTheLicenceOfWhatDrawsItsCurves) { EXPECT_EQ(count("Permission is hereby granted"), 1U); }

TEST_P(EachPageTest, WithoutThePlotThereIsNoPageAndItSaysHowToGetOne) {
    for (const char* missing : {"uPlot.iife.min.js", "uPlot.min.css", "LICENSE"}) {
        std::vector<Asset> assets;
        for (const Asset& asset : assetsWithPlot()) {
            if (asset.name != missing) assets.push_back(asset);
        }
        try {
            writtenPage(assets, {GetParam(), "", "", "{}"});
            ADD_FAILURE() << "there is a page without " << missing;
        } catch (const std::runtime_error& error) {
            EXPECT_NE(std::string(error.what()).find("built without uPlot"), std::string::npos) << error.what();
            EXPECT_NE(std::string(error.what()).find("npm ci --ignore-scripts"), std::string::npos) << error.what();
        }
    }
    EXPECT_THROW(requirePlot({}), std::runtime_error);
}

}  // namespace
}  // namespace nearcast::cli
