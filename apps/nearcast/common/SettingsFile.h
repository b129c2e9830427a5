// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/SettingRecord.h>

#include <memory>
#include <string>

namespace nearcast::cli {

/// The registry that a file holds. The file is only read.
/// @throws lines::InputError when it is broken, naming the file and what is wrong where
/// @throws std::system_error naming the file when it cannot be opened or read
std::shared_ptr<const Settings> registryOfFile(const std::string& path);

/// A registry as the content of such a file.
/// @throws std::runtime_error where it holds what JSON cannot express
std::string settingsFileOf(const Settings& registry);

}  // namespace nearcast::cli
