// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Platform.h>

#include "platform/Drive.h"
#include "platform/Platform.h"
#include "platform/factory/PlatformFactory.h"
#include "platform/system/SystemClock.h"

#include <chrono>
#include <memory>
#include <stdexcept>
#include <utility>

namespace nearcast {

namespace {

double secondsOf(NSDate date) { return std::chrono::duration<double>(date.sinceStart()).count(); }

/// The drive of the platform chosen, which lives as long as it is held on to; null when none was chosen.
std::shared_ptr<Drive> findDrive() {
    auto chosen = chosenPlatform();
    if (!chosen) return nullptr;
    Drive* const drive = chosen->drive.get();
    return {std::move(chosen), drive};
}

/// @throws std::logic_error when none was chosen
std::shared_ptr<Drive> currentDrive() {
    if (auto drive = findDrive()) return drive;
    throw std::logic_error("no platform has been chosen");
}

}  // namespace

void Platform::choose(const PlatformOptions& options) { choosePlatform(openPlatform(options)); }

int Platform::descriptor() { return currentDrive()->descriptor(); }

void Platform::dispatch() { currentDrive()->dispatch(); }

bool Platform::runFor(double seconds) { return currentDrive()->runFor(runTime(seconds)); }

void Platform::interrupt() {
    if (const auto drive = findDrive()) drive->interrupt();
}

std::string Platform::failure() { return currentDrive()->failure(); }

RadioHealth Platform::radioHealth() {
    const auto chosen = chosenPlatform();
    if (chosen && chosen->monitor != nullptr) return chosen->monitor->health();
    RadioHealth health;
    health.why = "no radio has been opened";
    return health;
}

void Platform::setTap(std::function<void(const HeardAdvertisement& heard)> tap) {
    const auto chosen = chosenPlatform();
    if (!chosen || chosen->monitor == nullptr) throw std::logic_error("no platform has been chosen");
    if (!tap) return chosen->monitor->setTap({});
    chosen->monitor->setTap([tap = std::move(tap)](const AdvertisingReport& report, NSDate at, bool wanted) {
        HeardAdvertisement heard;
        if (report.name) heard.name = *report.name;
        if (report.manufacturerData) heard.manufacturerData = *report.manufacturerData;
        heard.RSSI = report.RSSI;
        heard.wanted = wanted;
        heard.at = secondsOf(at);
        tap(heard);
    });
}

double Platform::now() {
    if (const auto chosen = chosenPlatform()) return secondsOf(chosen->services->date());
    return secondsOf(NSDate(SystemClock::now()));
}

}  // namespace nearcast
