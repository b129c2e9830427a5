// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/RadioString.h"

#include <optional>

namespace nearcast {

/// The `speed` of a radio that has a time of its own: how many times faster than real time it goes, 1 where the option
/// is absent; nothing for `speed=max`, as fast as it goes.
/// @throws std::invalid_argument when it is neither "max" nor a finite number above 0
std::optional<double> parseSpeed(const RadioString& radio);

}  // namespace nearcast
