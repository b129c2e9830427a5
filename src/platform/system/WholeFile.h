// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace nearcast {

/// The content of a file; nothing where there is none.
/// @param largest octets of it
/// @throws std::system_error naming the file when it cannot be read; `std::errc::file_too_large` when it is larger
std::optional<std::string> readWholeFile(const std::string& path, std::size_t largest);

}  // namespace nearcast
