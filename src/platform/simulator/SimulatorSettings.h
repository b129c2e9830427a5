// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/simulator/Scene.h"

#include <nearcast/SettingRecord.h>

namespace nearcast::simulator {

/// The scene's devices as a registry, each record as registration would have written it. Dongles without a device are
/// not registered.
[[nodiscard]] Settings simulatorSettings(const Scene& scene);

}  // namespace nearcast::simulator
