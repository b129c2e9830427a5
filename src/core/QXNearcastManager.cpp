// SPDX-License-Identifier: Apache-2.0
#include <nearcast/QXNearcastManager.h>

#include "core/Manager.h"
namespace nearcast {

QXNearcastManager::QXNearcastManager() : manager_(std::make_unique<Manager>(this, currentPlatform())) {}

QXNearcastManager::~QXNearcastManager() = default;

std::shared_ptr<QXNearcastManagerDelegate> QXNearcastManager::delegate() const { return manager_->delegate(); }

void QXNearcastManager::setDelegate(std::shared_ptr<QXNearcastManagerDelegate> delegate) {
    manager_->setDelegate(std::move(delegate));
}

std::uint64_t QXNearcastManager::samplingNumber() const noexcept { return manager_->samplingNumber(); }

void QXNearcastManager::addSettingForPrinterPortName(Text portName, Text portSettings, bool useDrawer, Text MACAddr,
                                                     std::optional<double> Threshold, Text nickName) {
    manager_->addSettingForPrinterPortName(portName, portSettings, useDrawer, MACAddr, Threshold, nickName);
}

void QXNearcastManager::addSettingForTFTillfoxPortName(Text portName, Text portSettings, Text MACAddr,
                                                       std::optional<double> Threshold, Text nickName) {
    manager_->addSettingForTFTillfoxPortName(portName, portSettings, MACAddr, Threshold, nickName);
}

void QXNearcastManager::removeSettingWithPortName(Text portName) { manager_->removeSettingWithPortName(portName); }

std::shared_ptr<const Settings> QXNearcastManager::getSettings() { return manager_->getSettings(); }

void QXNearcastManager::setSettings(std::optional<Settings> settings) { manager_->setSettings(std::move(settings)); }

std::optional<std::string> QXNearcastManager::serializedSettings() { return manager_->serializedSettings(); }

bool QXNearcastManager::deserializeSettings(std::optional<std::string_view> data) {
    return manager_->deserializeSettings(data);
}

bool QXNearcastManager::startScan() { return manager_->startScan(); }

bool QXNearcastManager::startScan(std::uint64_t samplingNumber) { return manager_->startScan(samplingNumber); }

void QXNearcastManager::stopScan() { manager_->stopScan(); }

std::int32_t QXNearcastManager::calibrateActionArea(Text MACAddr) { return manager_->calibrateActionArea(MACAddr); }

std::int32_t QXNearcastManager::getRSSI(Text MACAddr) { return manager_->getRSSI(MACAddr); }

}  // namespace nearcast
