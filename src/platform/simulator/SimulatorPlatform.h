// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/Radio.h"
#include "platform/simulator/Scene.h"
#include "platform/simulator/Shop.h"
#include "platform/timeline/Timeline.h"
#include "platform/timeline/TimelinePlatform.h"
#include "support/Mutex.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace nearcast::simulator {

/// The user's radio in a simulated shop, fed from a timeline.
///
/// The scene's clock starts at the first scan and then runs on, whether a scan runs or not: a later scan finds the user
/// where the way has led meanwhile. The changes of the radio's state count from the moment it was opened, so
/// that a radio that is off when the application starts comes on without a scan. While the radio is not powered on it
/// hears nothing.
///
/// Scans may be started and stopped from any thread; reports and changes of state come on the thread that drives the
/// timeline.
class SimulatorRadio : public Radio, public TimelineSource {
public:
    /// Becomes the timeline's source, until it is destroyed; not while the timeline is driven. It may be destroyed
    /// after the timeline, but not while that is driven.
    /// @param delegate, console, monitor live longer than the radio
    /// @param timeline lives as long as scans are started
    SimulatorRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor, Timeline& timeline,
                   Scene scene);
    ~SimulatorRadio() override;
    SimulatorRadio(const SimulatorRadio&) = delete;
    SimulatorRadio& operator=(const SimulatorRadio&) = delete;

    std::optional<std::chrono::microseconds> due() override;
    void happen() override;

private:
    using Time = Timeline::Time;
    static constexpr Time notYet{-1};

    void scanChanged(const std::optional<Scan>& scan) override;
    [[nodiscard]] std::optional<Time> changeDue() const;
    [[nodiscard]] std::optional<Time> shopDue() const;
    void advertise();
    [[nodiscard]] bool isFresh(std::size_t dongle);

    const std::weak_ptr<Timeline> timeline_;
    const Time opened_;
    std::atomic<Time> started_{notYet};  ///< when the first scan began
    Shop shop_;                          // this and the next three: the driving thread's alone
    std::size_t changesDone_ = 0;
    bool ended_ = false;
    std::vector<AdvertisingReport> reports_;  ///< one for each dongle, complete but for the strength

    Mutex mutex_;
    bool allowDuplicates_ NEARCAST_GUARDED_BY(mutex_) = true;
    std::uint64_t scans_ NEARCAST_GUARDED_BY(mutex_) = 0;
    std::vector<std::uint64_t> heardInScan_ NEARCAST_GUARDED_BY(mutex_);  ///< for each dongle, the latest
};

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
