// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hci/HciPort.h"
#include "platform/radio/Radio.h"
#include "platform/radio/RadioString.h"

#include <optional>
#include <string>

namespace nearcast::hci {

/// Which controller a radio listens to, and how.
struct HciTarget {
    int index = 0;
    HciAccess access = HciAccess::alone;
    std::string program = "PROGRAM";  ///< the path that the advice on capabilities names

    [[nodiscard]] std::string name() const { return "hci" + std::to_string(index); }
};

/// Reads `hci`, `hci:N`, `hci:hciN`, each with `?beside`.
/// @throws std::invalid_argument for a wrong number, and for a value of `beside`
HciTarget parseHciTarget(const RadioString& radio);

/// Why opening the controller would fail, or must not be tried; nothing: try it.
/// @param asked what the kernel says of it
std::optional<RadioCondition> obstacle(const HciTarget& target, const HciPort::Asked& asked);

/// Why opening it failed.
/// @param error as `HciPort::Opened` has it, not 0
RadioCondition refusal(const HciTarget& target, const HciAdapter& adapter, const Capabilities& capabilities, int error);

}  // namespace nearcast::hci
