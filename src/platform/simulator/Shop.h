// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/simulator/Channel.h"
#include "platform/simulator/Random.h"
#include "platform/simulator/Scene.h"
#include "platform/simulator/Walk.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <queue>
#include <vector>

namespace nearcast::simulator {

/// One advertisement and what became of it.
struct Advertisement {
    std::chrono::microseconds at{0};   ///< since the scene's start
    std::size_t dongle = 0;            ///< place in the scene's list
    std::optional<std::int32_t> RSSI;  ///< dBm, or 127 for no reading; nothing: nobody heard it
};

/// Lets a scene happen, one advertisement after another, on a clock that begins at 0. The same scene with the
/// same seed gives the same advertisements; a dongle more or less changes nothing for the others. Not for several
/// threads at once.
class Shop {
public:
    using Time = std::chrono::microseconds;

    explicit Shop(Scene scene);
    Shop(const Shop&) = delete;
    Shop& operator=(const Shop&) = delete;

    [[nodiscard]] const Scene& scene() const noexcept { return scene_; }
    [[nodiscard]] const Walk& walk() const noexcept { return walk_; }

    /// When the next advertisement is sent; nothing when no more is to come.
    [[nodiscard]] std::optional<Time> due() const;
    /// Lets the next advertisement happen; only while there is one. Those of a dongle that is switched off happen too,
    /// unheard.
    Advertisement next();

private:
    struct Sender {
        Sender(const Scene& scene, const Dongle& dongle)
            : random(scene.seed, dongle.address), channel(scene, dongle, random) {}
        Random random;
        Channel channel;
    };
    struct Turn {
        Time at;
        std::size_t dongle;
        /// For a queue whose top is the earliest, and of two at the same time the first in the scene.
        friend bool operator<(const Turn& left, const Turn& right) {
            return left.at != right.at ? left.at > right.at : left.dongle > right.dongle;
        }
    };

    const Scene scene_;
    const Walk walk_;
    std::vector<Sender> senders_;  // they refer to the scene
    std::priority_queue<Turn> turns_;
};

/// Whether a dongle advertises at that moment, in seconds since the scene's start.
[[nodiscard]] bool switchedOn(const Dongle& dongle, double seconds);

}  // namespace nearcast::simulator
