// SPDX-License-Identifier: Apache-2.0
#pragma once

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

/// The content of the asset of that name.
/// @throws std::logic_error when there is none
const Asset& assetNamed(std::span<const Asset> assets, std::string_view name);

/// How a policy of a page names a script or a style that it allows: "'sha256-...'" (Content Security Policy Level 3,
/// 2.3.1).
std::string policySource(const Asset& asset);

}  // namespace nearcast::cli
