// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Nearest.h>

#include <nearcast/Platform.h>

#include "nearest/Engine.h"

#include <utility>

namespace nearcast {

Nearest::Nearest(QXNearcastManager& manager, Changed changed, const NearestSettings& settings)
    : Nearest({[&manager] { return manager.getSettings(); }, Platform::now, Platform::radioHealth}, std::move(changed),
              settings) {}

Nearest::Nearest(const Sources& sources, Changed changed, const NearestSettings& settings)
    : engine_(std::make_shared<Engine>(sources, std::move(changed), settings)) {
    didDiscoverPort = [engine = engine_](std::string_view portName, QXDeviceType deviceType, std::string_view MACAddr,
                                         std::int32_t RSSI) {
        engine->reported(portName, MACAddr, RSSI);
        if (const auto next = engine->next.load(); next != nullptr && next->didDiscoverPort) {
            next->didDiscoverPort(portName, deviceType, MACAddr, RSSI);
        }
    };
    didUpdateState = [engine = engine_](std::string_view portName, std::string_view MACAddr) {
        engine->update();
        if (const auto next = engine->next.load(); next != nullptr && next->didUpdateState) {
            next->didUpdateState(portName, MACAddr);
        }
    };
}

Nearest::~Nearest() = default;

void Nearest::setNext(std::shared_ptr<QXNearcastManagerDelegate> next) { engine_->next.store(std::move(next)); }

std::function<void(const HeardAdvertisement& heard)> Nearest::tap() {
    return [weak = std::weak_ptr<Engine>(engine_)](const HeardAdvertisement& heard) {
        if (const auto engine = weak.lock()) engine->heard(heard);
    };
}

void Nearest::refresh() { engine_->refresh(); }

void Nearest::update() { engine_->update(); }

NearestChoice Nearest::choice() { return engine_->choice(); }

std::vector<NearestExplanation> Nearest::explain() { return engine_->explain(); }

const NearestSettings& Nearest::settings() const noexcept { return engine_->settings(); }

}  // namespace nearcast
