// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace nearcast::cli {

/// A file that is part of the program; see `nearcast_embed` in cmake/NearcastEmbed.cmake. It lives as long as the
/// process.
struct Asset {
    std::string_view name;     ///< of the file, without its folder
    std::string_view content;  ///< its octets
    std::string_view SHA256;   ///< of the content, in hexadecimal
};

/// What the pages are made of, the files of web/ and of uPlot; without uPlot where the build did not find it. Made by
/// the build: `nearcast_pages` in cmake/NearcastPages.cmake.
std::span<const Asset> pageAssets() noexcept;

/// What one page is.
struct Page {
    std::string
        kind;  ///< "report" or "evaluate": its template, style and script are the assets KIND.html, .css and .js
    std::string title;    ///< any text
    std::string program;  ///< what wrote the page
    std::string data;     ///< JSON, for the page's script
};

/// The program's name and version, as its pages give them.
std::string programName();

/// One page that needs nothing beside itself: it opens without a network, and its policy (Content Security Policy)
/// lets it ask for nothing and run no script but its own.
/// @throws std::runtime_error as `requirePlot`
std::string writtenPage(std::span<const Asset> assets, const Page& page);

/// Looks for uPlot, so that a command can say at its begin that it cannot make a page.
/// @throws std::runtime_error when it is missing; the text says how to get it
void requirePlot(std::span<const Asset> assets);

// The parts of the above.

/// The asset of that name.
/// @throws std::logic_error when there is none
const Asset& assetNamed(std::span<const Asset> assets, std::string_view name);

/// How a policy of a page names a script or a style that it allows: "'sha256-...'" (Content Security Policy Level 3,
/// 2.3.1).
std::string policySource(const Asset& asset);

/// Text that may stand in a page or in an attribute of it. Text that is not UTF-8 gets the replacement character.
std::string markupOf(std::string_view text);

/// The same JSON, in which no text can end the script that it stands in or begin a comment of the page.
std::string scriptDataOf(std::string_view json);

/// The text with each {{name}} replaced by what `value` gives for the name. What is put in is not looked at again.
/// @throws std::logic_error for a {{ without an end
std::string filledIn(std::string_view text, const std::function<std::string_view(std::string_view name)>& value);

}  // namespace nearcast::cli
