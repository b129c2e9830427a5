// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/SettingRecord.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace nearcast::cli {

/// A settings file that cannot be used; the message names it and says what is wrong and where.
class SettingsFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The registry that a file holds. The file is only read.
/// @throws SettingsFileError when it is missing or broken
std::shared_ptr<const Settings> registryOfFile(const std::string& path);

/// A registry as the content of such a file.
/// @throws std::runtime_error where it holds what JSON cannot express
std::string settingsFileOf(const Settings& registry);

}  // namespace nearcast::cli
