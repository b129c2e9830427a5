// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/SettingRecord.h>

#include "common/files/SettingsCheck.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::cli {

/// Findings that are said one by one; of more, only their number.
inline constexpr std::size_t mostSettingsFindings = 20;

/// A registry, and what is odd about the file that holds it.
struct CheckedSettings {
    std::shared_ptr<const Settings> registry;  ///< as the manager reads it, whatever is odd
    std::vector<SettingsFinding> findings;
};

/// Reads a settings file, which is only read.
/// @throws lines::InputError when it is broken, naming the file and what is wrong where
/// @throws std::system_error naming the file when it cannot be opened or read
CheckedSettings checkedSettings(const std::string& path);

/// The registry of a settings file. What is odd about it is said on standard error.
/// @param command the name of the command that reads it
/// @throws as `checkedSettings`
std::shared_ptr<const Settings> registryOfFile(const std::string& path, std::string_view command);

/// A registry as the content of such a file.
/// @throws std::runtime_error where it holds what JSON cannot express
std::string settingsFileOf(const Settings& registry);

}  // namespace nearcast::cli
