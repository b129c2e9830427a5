// SPDX-License-Identifier: Apache-2.0
#include "web/Page.h"

#include <nearcast/Version.h>

#include "common/Words.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <stdexcept>

namespace nearcast::cli {

namespace {

constexpr std::string_view plotScript = "uPlot.iife.min.js";
constexpr std::string_view plotStyle = "uPlot.min.css";
constexpr std::string_view plotLicence = "LICENSE";

const Asset* findAsset(std::span<const Asset> assets, std::string_view name) {
    const auto found =
        std::find_if(assets.begin(), assets.end(), [&](const Asset& asset) { return asset.name == name; });
    return found == assets.end() ? nullptr : &*found;
}

std::uint32_t digit(char character) {
    return static_cast<std::uint32_t>(character <= '9' ? character - '0' : character - 'a' + 10);
}

/// Hexadecimal, lower case, to Base64 (RFC 4648, 4).
std::string base64OfHexadecimal(std::string_view text) {
    constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string result;
    // Six digits are three octets, and these four letters.
    for (std::size_t place = 0; place < text.size(); place += 6) {
        const std::string_view part = text.substr(place, 6);
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < 6; ++i) bits = bits << 4U | (i < part.size() ? digit(part[i]) : 0U);
        const std::size_t meaning = part.size() / 2 + 1;
        for (std::size_t i = 0; i < 4; ++i) {
            result += i < meaning ? letters[bits >> (18U - 6U * i) & 63U] : '=';
        }
    }
    return result;
}

/// Allows the page's own scripts and styles, and nothing else.
std::string policy(std::span<const Asset> assets, const std::string& kind) {
    const auto source = [&](std::string_view name) { return policySource(assetNamed(assets, name)); };
    return "default-src 'none'; base-uri 'none'; form-action 'none'; script-src " + source(plotScript) + " " +
           source(kind + ".js") + "; style-src " + source(plotStyle) + " " + source("page.css") + " " +
           source(kind + ".css");
}

}  // namespace

std::string programName() { return "nearcast " + std::string(version()); }

void requirePlot(std::span<const Asset> assets) {
    for (const std::string_view name : {plotScript, plotStyle, plotLicence}) {
        if (findAsset(assets, name) != nullptr) continue;
        throw std::runtime_error(
            "this program was built without uPlot, which draws the curves of its pages; to have it, run "
            "'npm ci --ignore-scripts' in the folder web of the sources, and build again ('./dev build' does both)");
    }
}

std::string writtenPage(std::span<const Asset> assets, const Page& page) {
    requirePlot(assets);
    const auto content = [&](std::string_view name) { return std::string(assetNamed(assets, name).content); };
    const std::map<std::string, std::string, std::less<>> values = {
        {"policy", policy(assets, page.kind)},  {"program", markupOf(page.program)},
        {"title", markupOf(page.title)},        {"body", content(page.kind + ".html")},
        {"plot-style", content(plotStyle)},     {"plot-script", content(plotScript)},
        {"shared-style", content("page.css")},  {"style", content(page.kind + ".css")},
        {"script", content(page.kind + ".js")}, {"data", scriptDataOf(page.data)},
        {"licence", content(plotLicence)},
    };
    return filledIn(assetNamed(assets, "page.html").content,
                    [&](std::string_view name) { return std::string_view(values.at(std::string(name))); });
}

const Asset& assetNamed(std::span<const Asset> assets, std::string_view name) {
    const Asset* found = findAsset(assets, name);
    if (found == nullptr) throw std::logic_error("the program has no file " + std::string(name));
    return *found;
}

std::string policySource(const Asset& asset) { return "'sha256-" + base64OfHexadecimal(asset.SHA256) + "'"; }

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

std::string scriptDataOf(std::string_view json) {
    std::string result;
    result.reserve(json.size());
    for (const char character : json) {
        if (character == '<') {
            result += "\\u003c";
        } else {
            result += character;
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

}  // namespace nearcast::cli
