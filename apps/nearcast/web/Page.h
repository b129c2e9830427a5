// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace nearcast::cli {

/// A file that the build put into the program (`nearcast_embed` in cmake/NearcastEmbed.cmake). It is valid as long as
/// the process runs.
struct Asset {
    std::string_view name;     ///< of the file, without its folder
    std::string_view content;  ///< its octets
    std::string_view SHA256;   ///< of the content, in hexadecimal
};

/// The files that pages are made of: those of web/, and uPlot's where the build found them. Defined by the build, see
/// `nearcast_pages` in cmake/NearcastPages.cmake.
std::span<const Asset> pageAssets() noexcept;

/// What one page has of its own.
struct Page {
    std::string kind;     ///< "report" or "evaluate": names its assets, KIND.html, KIND.css and KIND.js
    std::string title;    ///< any text
    std::string program;  ///< name and version of the program that writes the page
    std::string data;     ///< JSON, for the page's script
};

/// The program's name and version, as its pages give them.
std::string programName();

/// A page in one file: it opens without a network, and its policy (Content Security Policy) lets it request nothing and
/// run no script but its own.
/// @throws std::runtime_error as `requirePlot`
std::string writtenPage(std::span<const Asset> assets, const Page& page);

/// Checks that uPlot is there, so that a command can fail before it plays a recording.
/// @throws std::runtime_error when it is missing; the text says how to get it
void requirePlot(std::span<const Asset> assets);

// What `writtenPage` is made of.

/// The asset of that name.
/// @throws std::logic_error when there is none
const Asset& assetNamed(std::span<const Asset> assets, std::string_view name);

/// How a policy of a page names a script or a style that it allows: "'sha256-...'" (Content Security Policy Level 3,
/// 2.3.1).
std::string policySource(const Asset& asset);

/// The text, escaped for a page and for attributes. What is not UTF-8 becomes the replacement character.
std::string markupOf(std::string_view text);

/// The same JSON, escaped so that no text in it can end the script element around it or begin a comment.
std::string scriptDataOf(std::string_view json);

/// The text with each {{name}} replaced by what `value` gives for the name. Values are not searched for names.
/// @throws std::logic_error for a {{ without an end
std::string filledIn(std::string_view text, const std::function<std::string_view(std::string_view name)>& value);

}  // namespace nearcast::cli
