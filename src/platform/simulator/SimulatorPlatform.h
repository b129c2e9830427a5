// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/simulator/Scene.h"
#include "platform/timeline/TimelinePlatform.h"

#include <memory>

namespace nearcast::simulator {

/// The platform of the radio `simulator`.
class SimulatorPlatform : public TimelinePlatform {
public:
    /// @param console lives longer than the platform
    /// @param JSON    lives longer than the platform
    /// @param pace    none: time passes as fast as it goes
    /// @param scene   with the seed of the run
    SimulatorPlatform(Console& console, const NSJSONSerialization& JSON, std::unique_ptr<Pace> pace, Scene scene);

    /// Opens the radio; not while the timeline is driven. It is destroyed before the platform.
    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& delegate) override;

    [[nodiscard]] const Scene& scene() const noexcept { return scene_; }

private:
    const Scene scene_;
};

}  // namespace nearcast::simulator
