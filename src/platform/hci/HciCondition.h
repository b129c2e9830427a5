// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/RadioHealth.h>

#include "platform/hci/HciPort.h"

#include <optional>
#include <string>

namespace nearcast {

/// Which controller a radio listens to, and how.
struct HciTarget {
    int index = 0;
    HciAccess access = HciAccess::alone;
    std::string program = "PROGRAM";  ///< what the advice on capabilities is for

    [[nodiscard]] std::string name() const { return "hci" + std::to_string(index); }
};

/// How a radio is, and why, in words that say what to do about it.
struct HciCondition {
    CBManagerState state = CBManagerStateUnknown;
    std::string why;
    bool operator==(const HciCondition&) const = default;
};

/// Why the controller need not even be opened; nothing: try it.
/// @param asked what the kernel says of it
std::optional<HciCondition> obstacle(const HciTarget& target, const HciPort::Asked& asked);

/// Why opening it failed.
/// @param error as `HciPort::Opened` has it, not 0
HciCondition refusal(const HciTarget& target, const HciAdapter& adapter, const Capabilities& capabilities, int error);

}  // namespace nearcast
