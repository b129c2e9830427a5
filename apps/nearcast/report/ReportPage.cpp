// SPDX-License-Identifier: Apache-2.0
#include "report/ReportPage.h"

#include "common/Words.h"
#include "report/ReportJSON.h"
#include "web/Asset.h"

#include <map>
#include <span>
#include <stdexcept>

namespace nearcast::cli {

// Made by the build; see apps/nearcast/CMakeLists.txt.
std::span<const Asset> reportAssets() noexcept;

namespace {

/// What the page may do: run these scripts, use these styles.
std::string policy(std::span<const Asset> assets) {
    const auto source = [&](std::string_view name) { return policySource(assetNamed(assets, name)); };
    return "default-src 'none'; base-uri 'none'; form-action 'none'; script-src " + source("uPlot.iife.min.js") + " " +
           source("report.js") + "; style-src " + source("uPlot.min.css") + " " + source("report.css");
}

}  // namespace

std::string markupOf(std::string_view text) {
    std::string result;
    for (const char character : printable(text)) {
        switch (character) {
            case '&': result += "&amp;"; break;
            case '<': result += "&lt;"; break;
            case '>': result += "&gt;"; break;
            case '"': result += "&quot;"; break;
            default: result += character;
        }
    }
    return result;
}

std::string filledIn(std::string_view text, const std::function<std::string_view(std::string_view name)>& value) {
    std::string result;
    for (auto begin = text.find("{{"); begin != std::string_view::npos; begin = text.find("{{")) {
        const auto end = text.find("}}", begin);
        if (end == std::string_view::npos) throw std::logic_error("a {{ has no end");
        result += text.substr(0, begin);
        result += value(text.substr(begin + 2, end - begin - 2));
        text.remove_prefix(end + 2);
    }
    return result.append(text);
}

std::string reportPage(const ReportData& data, const std::string& program) {
    const auto assets = reportAssets();
    const auto content = [&](std::string_view name) { return std::string(assetNamed(assets, name).content); };
    const std::map<std::string, std::string, std::less<>> values = {
        {"policy", policy(assets)},
        {"program", markupOf(program)},
        {"title", markupOf(data.title)},
        {"plot-style", content("uPlot.min.css")},
        {"plot-script", content("uPlot.iife.min.js")},
        {"style", content("report.css")},
        {"script", content("report.js")},
        {"data", reportJSON(data, program)},
        {"licence", content("LICENSE")},
    };
    return filledIn(assetNamed(assets, "template.html").content,
                    [&](std::string_view name) { return std::string_view(values.at(std::string(name))); });
}

}  // namespace nearcast::cli
