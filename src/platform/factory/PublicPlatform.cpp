// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Platform.h>

#include "platform/Platform.h"
#include "platform/factory/PlatformFactory.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <stdexcept>
#include <utility>

namespace nearcast {

namespace {

double secondsOf(NSDate date) { return std::chrono::duration<double>(date.sinceStart()).count(); }

}  // namespace

void Platform::choose(const PlatformOptions& options) { choosePlatform(openPlatform(options)); }

int Platform::descriptor() { return currentDrive().descriptor(); }

void Platform::dispatch() { currentDrive().dispatch(); }

bool Platform::runFor(double seconds) {
    constexpr double longest = 1e9;
    const double bounded = std::isnan(seconds) ? 0 : std::clamp(seconds, 0.0, longest);
    return currentDrive().runFor(std::chrono::microseconds(std::llround(bounded * 1e6)));
}

void Platform::interrupt() {
    if (Drive* drive = findDrive()) drive->interrupt();
}

std::string Platform::failure() { return currentDrive().failure(); }

RadioHealth Platform::radioHealth() {
    if (const RadioMonitor* monitor = findMonitor()) return monitor->health();
    RadioHealth health;
    health.why = "no radio has been opened";
    return health;
}

void Platform::setTap(std::function<void(const HeardAdvertisement& heard)> tap) {
    RadioMonitor* const monitor = findMonitor();
    if (monitor == nullptr) throw std::logic_error("no platform has been chosen");
    if (!tap) return monitor->setTap({});
    monitor->setTap([tap = std::move(tap)](const AdvertisingReport& report, NSDate at, bool wanted) {
        HeardAdvertisement heard;
        if (report.name) heard.name = *report.name;
        if (report.manufacturerData) heard.manufacturerData = *report.manufacturerData;
        heard.RSSI = report.RSSI;
        heard.wanted = wanted;
        heard.at = secondsOf(at);
        tap(heard);
    });
}

double Platform::now() { return secondsOf(currentPlatform().date()); }

}  // namespace nearcast
