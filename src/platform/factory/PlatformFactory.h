// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Platform.h>

#include "platform/Drive.h"
#include "platform/NSLog.h"
#include "platform/Platform.h"
#include "platform/radio/RadioMonitor.h"

#include <memory>

namespace nearcast {

/// A platform, what it writes to, and what drives it where the application has a loop of its own. Destroyed in the
/// reverse order.
struct OpenedPlatform {
    std::unique_ptr<Console> console;
    std::unique_ptr<PlatformServices> services;
    std::unique_ptr<Drive> drive;
    RadioMonitor* monitor = nullptr;  ///< belongs to `services`
};

/// Makes the platform that the options ask for; the only place that knows the back ends.
/// @throws std::invalid_argument for a radio string that is not understood
/// @throws what the radio throws for a scene or a recording that cannot be read
OpenedPlatform openPlatform(const PlatformOptions& options);

/// Chooses the platform of the process. A run of the one chosen before ends, and with its last user that one is
/// destroyed. From any thread.
/// @throws std::logic_error once the manager has been made
void choosePlatform(OpenedPlatform platform);

/// The platform that was chosen; null when none was. Whoever calls it holds on to it during the call: another thread
/// may choose another one meanwhile. From any thread.
std::shared_ptr<const OpenedPlatform> chosenPlatform();

}  // namespace nearcast
