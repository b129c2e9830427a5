// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hci/HciCondition.h"
#include "platform/radio/RadioString.h"

namespace nearcast {

/// Reads `hci`, `hci:N`, `hci:hciN`, each with `?beside`.
/// @throws std::invalid_argument for what is no controller's number, and for an option's value
HciTarget parseHciTarget(const RadioString& radio);

}  // namespace nearcast
