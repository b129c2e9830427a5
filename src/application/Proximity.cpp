// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Proximity.h>

#include "platform/Platform.h"

#include <chrono>
#include <utility>

namespace nearcast {

namespace {

/// How often `Nearest` is told that time has passed: silence and staleness count in seconds.
constexpr std::chrono::milliseconds updateInterval{500};

QXNearcastManager& managerOn(const PlatformOptions& platform, const NearestSettings& settings) {
    settings.validate();  // before anything is fixed
    Platform::choose(platform);
    return QXNearcastManager::sharedManager();
}

std::string whyNotStarted() {
    const RadioHealth health = Platform::radioHealth();
    if (health.state == CBManagerStatePoweredOn) return "a scan or a calibration runs already";
    return "the radio is " + nameOf(health.state) + (health.why.empty() ? "" : ": " + health.why);
}

}  // namespace

struct Proximity::Parts {
    Parts(const PlatformOptions& platform, Nearest::Changed changed, const NearestSettings& settings)
        : manager(managerOn(platform, settings)),
          nearest(std::make_shared<Nearest>(manager, std::move(changed), settings)) {
        manager.setDelegate(nearest);
        Platform::setTap(nearest->tap());
        timer = currentPlatform().scheduledTimer(updateInterval, [weak = std::weak_ptr(nearest)](NSTimer& /*timer*/) {
            if (const auto told = weak.lock()) told->update();
        });
    }
    ~Parts() {
        timer->invalidate();
        Platform::setTap({});
        manager.stopScan();
        manager.setDelegate(nullptr);
    }
    Parts(const Parts&) = delete;
    Parts& operator=(const Parts&) = delete;

    QXNearcastManager& manager;
    const std::shared_ptr<Nearest> nearest;
    std::shared_ptr<NSTimer> timer;
};

Proximity::Proximity(const PlatformOptions& platform, Nearest::Changed changed, const NearestSettings& settings)
    : parts_(std::make_unique<Parts>(platform, std::move(changed), settings)) {}

Proximity::~Proximity() = default;

QXNearcastManager& Proximity::manager() const noexcept { return parts_->manager; }

Nearest& Proximity::nearest() const noexcept { return *parts_->nearest; }

void Proximity::setDelegate(std::shared_ptr<QXNearcastManagerDelegate> delegate) const {
    parts_->nearest->setNext(std::move(delegate));
}

Proximity::Started Proximity::start() const {
    if (parts_->manager.startScan()) return {.running = true, .why = {}};
    return {.running = false, .why = whyNotStarted()};
}

void Proximity::stop() const { parts_->manager.stopScan(); }

void Proximity::addDevice(const Device& device) const {
    nearcast::addDevice(parts_->manager, device);
    parts_->nearest->refresh();
}

bool Proximity::changeDevice(std::string_view portName,
                             const std::function<SettingRecordPointer(const SettingRecord& record)>& change) const {
    const bool found = nearcast::changeDevice(parts_->manager, portName, change);
    if (found) parts_->nearest->refresh();
    return found;
}

void Proximity::setDevices(Settings devices) const {
    parts_->manager.setSettings(std::move(devices));
    parts_->nearest->refresh();
}

NearestChoice Proximity::choice() const { return parts_->nearest->choice(); }

}  // namespace nearcast
