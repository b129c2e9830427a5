// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/simulator/Scene.h"
#include "platform/simulator/Shop.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace nearcast::simulator {

/// A dongle at a place; the address ends with `number`.
inline Dongle dongle(unsigned number, Place at, double interval = 0.1) {
    constexpr char digits[] = "0123456789ABCDEF";
    Dongle result;
    result.address = "02:00:00:00:00:";
    result.address += {digits[number / 16 % 16], digits[number % 16]};
    result.at = at;
    result.interval = interval;
    return result;
}

/// A floor of 100 m by 100 m where nothing is left to chance but when the dongles send, the user standing at (50, 50).
/// A dongle of 0 dBm at 1 m is heard with -54 dBm, at 10 m with -74.
inline Scene quietScene(std::vector<Dongle> dongles) {
    Scene scene;
    scene.floor.width = 100;
    scene.floor.depth = 100;
    scene.user.path = {Waypoint{{50, 50}, 0, std::nullopt}};
    scene.user.bodyLoss = 0;
    scene.air.placeDeviation = 0;
    scene.air.driftDeviation = 0;
    scene.air.jitterDeviation = 0;
    scene.air.echo = 0;
    scene.air.loss = 0;
    scene.receiver.sensitivity = -200;
    scene.dongles = std::move(dongles);
    return scene;
}

/// All advertisements until `seconds`, heard or not.
inline std::vector<Advertisement> advertisements(Shop& shop, double seconds) {
    std::vector<Advertisement> result;
    while (shop.due() && static_cast<double>(shop.due()->count()) <= seconds * 1e6) result.push_back(shop.next());
    return result;
}

inline std::vector<Advertisement> advertisements(const Scene& scene, double seconds) {
    Shop shop(scene);
    return advertisements(shop, seconds);
}

/// Those of one dongle that were heard.
inline std::vector<Advertisement> heardOf(const std::vector<Advertisement>& all, std::size_t dongle) {
    std::vector<Advertisement> result;
    for (const Advertisement& one : all) {
        if (one.dongle == dongle && one.RSSI) result.push_back(one);
    }
    return result;
}

inline double mean(const std::vector<double>& values) {
    double sum = 0;
    for (const double value : values) sum += value;
    return sum / static_cast<double>(values.size());
}

inline double standardDeviation(const std::vector<double>& values) {
    const double middle = mean(values);
    double squares = 0;
    for (const double value : values) squares += (value - middle) * (value - middle);
    return std::sqrt(squares / static_cast<double>(values.size() - 1));
}

inline std::vector<double> strengths(const std::vector<Advertisement>& heard) {
    std::vector<double> result;
    result.reserve(heard.size());
    for (const Advertisement& one : heard) result.push_back(one.RSSI.value());
    return result;
}

/// Seconds between one and the next.
inline std::vector<double> gaps(const std::vector<Advertisement>& all) {
    std::vector<double> result;
    for (std::size_t index = 1; index < all.size(); ++index) {
        result.push_back(static_cast<double>((all[index].at - all[index - 1].at).count()) / 1e6);
    }
    return result;
}

}  // namespace nearcast::simulator
