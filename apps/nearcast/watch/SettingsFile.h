// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/QXNearcastManager.h>

#include <stdexcept>
#include <string>

namespace nearcast::cli {

/// A settings file that cannot be used; the message names it and says what is wrong and where.
class SettingsFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Installs the registry that a file holds. The file is only read.
/// @throws SettingsFileError when it is missing or broken; the registry is then unchanged
void loadSettings(QXNearcastManager& manager, const std::string& path);

}  // namespace nearcast::cli
