// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace nearcast::cli {

/// What a file is and where it belongs, to end a message that it is not what it was taken for: "; it is a settings
/// file, for --settings". It is read once more for that, so only after an error.
/// @return empty where it is neither settings nor a scene
std::string whatItIs(const std::string& path);

}  // namespace nearcast::cli
