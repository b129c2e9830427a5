// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace nearcast {

/// The path of what stands beside a file and belongs to it: ".devices.json.lock" beside "devices.json".
std::string companionOf(const std::string& path, std::string_view ending);

/// Gives an open file or folder to the owner and the group of `path`, where that is there and the user may: what root
/// makes beside somebody's file is theirs.
void giveToOwnerOf(const std::string& path, int descriptor) noexcept;

}  // namespace nearcast
