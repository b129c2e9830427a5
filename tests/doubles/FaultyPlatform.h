// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/Platform.h"

#include <array>
#include <memory>
#include <optional>
#include <stdexcept>

namespace nearcast::doubles {

/// What a faulty platform throws.
struct Fault : std::runtime_error {
    Fault() : std::runtime_error("the platform failed") {}
};

/// A platform that forwards every call to another one, save that the n-th call of a kind throws `Fault`, once.
class FaultyPlatform : public PlatformServices {
public:
    enum class Call { openRadio, state, scan, stop, makeTimer, fire, invalidate, date, sleep, count };

    /// @param inner lives longer
    explicit FaultyPlatform(PlatformServices& inner) : inner_(inner) {}

    /// The `n`-th call of that kind from now on throws, 1 the next one. The call does not reach the inner platform.
    void failAt(Call call, int n) { fuse(call) = n; }
    /// Burns the fuse of that kind; throws when it is through.
    void enter(Call call);

    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& delegate) override;
    [[nodiscard]] NSDate date() const override;
    void usleep(std::chrono::microseconds duration) override;
    [[nodiscard]] const NSJSONSerialization& JSON() const override { return inner_.JSON(); }
    std::shared_ptr<NSTimer> scheduledTimer(std::chrono::nanoseconds interval, NSTimer::Handler handler) override;
    void NSLog(std::string_view line) noexcept override { inner_.NSLog(line); }

private:
    int& fuse(Call call) { return fuses_[static_cast<std::size_t>(call)]; }

    PlatformServices& inner_;
    /// Calls left until one throws; 0 and below: burnt out or none.
    std::array<int, static_cast<std::size_t>(Call::count)> fuses_{};
};

}  // namespace nearcast::doubles
