// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/SettingRecord.h>

#include "platform/NSJSONSerialization.h"

#include <optional>
#include <string>
#include <string_view>

namespace nearcast {

// A registry as it is saved (docs/settings-format.md): JSON in which device types are words. The manager saves and
// loads its own by these functions; they need no manager, keep no state and may be called from any thread.

/// A record as it is saved: its device type is a word, or left out where it has none.
SettingRecord savedRecord(const SettingRecord& record);

/// The registry as the value that is saved. A device type without a word is left out; records that are null count as
/// empty ones.
SettingValue savedValue(const Settings& settings);

/// The registry as indented JSON.
/// @return nothing where a record holds what JSON cannot express: bytes, a number that is not finite, text that is not
///         UTF-8
std::optional<std::string> savedSettings(const Settings& settings, const NSJSONSerialization& JSON);

/// Whether a device type is saved under this word.
bool isDeviceType(std::string_view word);

/// The registry that a value says which was saved. A device type whose word is not known is left out.
/// @throws std::invalid_argument naming the record that is wrong, where the value has another shape
Settings settingsOf(SettingValue value);

/// The registry that the text holds. A device type whose word is not known is left out.
/// @return nothing where the text is not JSON
/// @throws std::invalid_argument naming the record that is wrong, where the text is JSON of another shape
std::optional<Settings> loadedSettings(std::string_view text, const NSJSONSerialization& JSON);

}  // namespace nearcast
