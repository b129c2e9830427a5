// SPDX-License-Identifier: Apache-2.0
#include "lab/Performer.h"
#include "support/Dongle.h"

#include <cxxabi.h>
#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <typeinfo>

namespace nearcast::lab {

namespace {

constexpr std::string_view didDiscoverPort = "didDiscoverPort:deviceType:MACAddr:RSSI:";
constexpr std::string_view didUpdateState = "didUpdateState:MACAddr:";

bool contains(const std::vector<std::string>& texts, std::string_view wanted) {
    return std::find(texts.begin(), texts.end(), wanted) != texts.end();
}

std::string kindOf(const std::exception& error) {
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> name(
        abi::__cxa_demangle(typeid(error).name(), nullptr, nullptr, &status), std::free);
    return status == 0 ? name.get() : typeid(error).name();
}

}  // namespace

void Performer::perform(const lines::Action& action) {
    try {
        std::visit([this](const auto& what) { (*this)(what); }, action);
    } catch (const PortException& exception) {
        writer_.raised(now(), nameOf(action), exception.name(), exception.reason());
    } catch (const std::bad_alloc&) {
        throw;  // it says nothing of the manager, and what follows would be another scenario
    } catch (const std::exception& error) {
        writer_.raised(now(), nameOf(action), kindOf(error), error.what());
    }
}

void Performer::operator()(const lines::SharedManager& /*action*/) { QXNearcastManager::sharedManager(); }

void Performer::operator()(const lines::SetDelegate& action) {
    if (!action.implements) return manager_.setDelegate(nullptr);
    auto delegate = std::make_shared<QXNearcastManagerDelegate>();
    if (contains(*action.implements, didDiscoverPort)) {
        delegate->didDiscoverPort = [this](std::string_view portName, QXDeviceType deviceType, std::string_view MACAddr,
                                           std::int32_t RSSI) {
            writer_.attempt([&] { writer_.discovered(now(), portName, deviceType, MACAddr, RSSI); });
        };
    }
    if (contains(*action.implements, didUpdateState)) {
        delegate->didUpdateState = [this](std::string_view portName, std::string_view MACAddr) {
            writer_.attempt([&] { writer_.fellSilent(now(), portName, MACAddr); });
        };
    }
    manager_.setDelegate(std::move(delegate));
}

void Performer::operator()(const lines::AddSetting& action) {
    if (action.drawerGiven) {
        manager_.addSettingForPrinterPortName(action.portName, action.portSettings, action.withDrawer,
                                              action.dongleMACAddr, action.RSSIthreshould, action.nickName);
    } else {
        manager_.addSettingForTFTillfoxPortName(action.portName, action.portSettings, action.dongleMACAddr,
                                                action.RSSIthreshould, action.nickName);
    }
}

void Performer::operator()(const lines::RemoveSetting& action) { manager_.removeSettingWithPortName(action.portName); }

void Performer::operator()(const lines::ReadSettings& action) {
    const auto settings = manager_.getSettings();
    SettingValue::Dictionary registry;
    for (const auto& [portName, record] : *settings) registry.emplace(portName, *record);
    writer_.returned(now(), nameOf(action), SettingValue(std::move(registry)));
}

void Performer::operator()(const lines::SetSettings& action) { manager_.setSettings(action.settings); }

void Performer::operator()(const lines::SerializeSettings& action) {
    const auto data = manager_.serializedSettings();
    writer_.returned(now(), nameOf(action), data ? SettingValue(*data) : SettingValue());
}

void Performer::operator()(const lines::DeserializeSettings& action) {
    const bool loaded = manager_.deserializeSettings(action.data);
    writer_.returned(now(), nameOf(action), loaded);
}

void Performer::operator()(const lines::StartScan& action) {
    const bool started = action.samplingNumber ? manager_.startScan(*action.samplingNumber) : manager_.startScan();
    writer_.returned(now(), nameOf(action), started);
}

void Performer::operator()(const lines::StopScan& /*action*/) { manager_.stopScan(); }

void Performer::operator()(const lines::CalibrateActionArea& action) {
    const std::int32_t RSSI = manager_.calibrateActionArea(action.MACAddr);
    writer_.returned(now(), nameOf(action), RSSI);
}

void Performer::operator()(const lines::GetRSSI& action) {
    const std::int32_t RSSI = manager_.getRSSI(action.MACAddr);
    writer_.returned(now(), nameOf(action), RSSI);
}

void Performer::operator()(const lines::RadioState& action) { platform_.radio()->setState(action.state); }

void Performer::operator()(const lines::Advertise& action) {
    AdvertisingReport report;
    report.name = action.name;
    report.manufacturerData = action.manufacturerData;
    report.RSSI = action.RSSI;
    if (action.services) {
        for (const std::string& service : *action.services) report.services.push_back(CBUUID::UUIDWithString(service));
    } else {
        static const CBUUID dongle = CBUUID::UUIDWithString(dongle::serviceUUID);
        report.services.push_back(dongle);
    }
    platform_.radio()->advertise(report);
}

void Performer::operator()(const lines::End& /*action*/) {}

}  // namespace nearcast::lab
