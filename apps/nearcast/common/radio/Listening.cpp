// SPDX-License-Identifier: Apache-2.0
#include "common/radio/Listening.h"

#include "common/radio/HeldLines.h"
#include "common/radio/Readiness.h"
#include "platform/Drive.h"

#include <algorithm>
#include <utility>

namespace nearcast::cli {

namespace {

constexpr double settlingStep = 0.05;  // seconds

}  // namespace

Listening::~Listening() {
    end();
    const MutexLock lock(driveMutex_);
    drive_ = nullptr;
}

RadioHealth Listening::open(const std::string& radio, std::function<void(std::string_view line)> console) {
    PlatformOptions options;
    options.radio = radio;
    const auto lines = std::make_shared<HeldLines>(std::move(console));
    options.console = [lines](std::string_view line) { lines->say(line); };
    const auto hasTold = std::make_shared<std::atomic<bool>>(false);
    options.radioHealthChanged = [hasTold](const RadioHealth& /*health*/) { hasTold->store(true); };
    options.ownLoop = true;
    opened_ = openPlatform(options);
    {
        const MutexLock lock(driveMutex_);
        drive_ = opened_.drive.get();
    }
    radio_ = opened_.services->centralManager(*this);
    begin_ = opened_.services->date();
    // Asked in this order, so that what was told is in the health that is read after it.
    bool told = hasTold->load();
    RadioHealth found = health();
    while (!isSettled(found, told) && seconds() < radioSettling && runFor(settlingStep)) {
        told = hasTold->load();
        found = health();
    }
    if (readinessOf(found) != Readiness::missing) lines->release();
    return found;
}

void Listening::begin(Ears ears) {
    begin_ = opened_.services->date();
    opened_.monitor->setHealthChanged(
        [this, changed = std::move(ears.changed)](const RadioHealth& health) { changed(health, now()); });
    opened_.monitor->setTap([this, heard = std::move(ears.heard)](const AdvertisingReport& report, NSDate at,
                                                                  bool /*wanted*/) { heard(report, since(at)); });
    radio_->scanForPeripheralsWithServices(std::nullopt, ScanOptions{true});
}

void Listening::end() {
    if (!radio_) return;
    radio_->stopScan();
    radio_.reset();  // waits for a call that is under way
    opened_.monitor->setTap({});
    opened_.monitor->setHealthChanged({});
}

// NOLINTNEXTLINE(readability-make-member-function-const): the ears are called during it
bool Listening::runFor(double seconds) {
    if (interrupted()) return false;
    const bool more = opened_.drive->runFor(runTime(seconds));
    return more && !interrupted();
}

void Listening::interrupt() {
    interrupted_.store(true);
    const MutexLock lock(driveMutex_);
    if (drive_ != nullptr) drive_->interrupt();
}

Listening::Time Listening::since(NSDate date) const {
    return std::max(Time(0), std::chrono::duration_cast<Time>(date.sinceStart() - begin_.sinceStart()));
}

Listening::Time Listening::now() const { return since(opened_.services->date()); }

double Listening::date() const { return std::chrono::duration<double>(opened_.services->date().sinceStart()).count(); }

}  // namespace nearcast::cli
