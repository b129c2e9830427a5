// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/QXNearcastManager.h>

#include "lab/EventWriter.h"
#include "lines/Line.h"
#include "platform/virtual/VirtualPlatform.h"
#include "support/Dongle.h"

#include <exception>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

namespace nearcast::lab {

/// What an exception is, for people.
std::string kindOf(const std::exception& error);
/// Whether a line gives the manager a delegate that implements a method of this name.
bool implements(const lines::SetDelegate& action, std::string_view method);

/// Performs the lines of a scenario: calls a manager, or makes the virtual radio hear something, and writes down what
/// the call returned.
/// @tparam Managed what is called: `QXNearcastManager`, or what has its operations. Only of the former is it asked that
///                 there is one in a process.
template <class Managed>
class PerformerOf {
public:
    /// All three outlive the performer.
    PerformerOf(Managed& manager, VirtualPlatform& platform, EventWriter& writer)
        : manager_(manager), platform_(platform), writer_(writer) {}

    /// An exception of the call is written down, not thrown, but for a lack of memory.
    void perform(const lines::Action& action);

private:
    [[nodiscard]] lines::Time now() { return platform_.timeline().now(); }

    void operator()(const lines::SharedManager& action);
    void operator()(const lines::SetDelegate& action);
    void operator()(const lines::AddSetting& action);
    void operator()(const lines::RemoveSetting& action);
    void operator()(const lines::ReadSettings& action);
    void operator()(const lines::SetSettings& action);
    void operator()(const lines::SerializeSettings& action);
    void operator()(const lines::DeserializeSettings& action);
    void operator()(const lines::StartScan& action);
    void operator()(const lines::StopScan& action);
    void operator()(const lines::CalibrateActionArea& action);
    void operator()(const lines::GetRSSI& action);
    void operator()(const lines::RadioState& action);
    void operator()(const lines::Advertise& action);
    void operator()(const lines::End& action);

    Managed& manager_;
    VirtualPlatform& platform_;
    EventWriter& writer_;
};

template <class Managed>
void PerformerOf<Managed>::perform(const lines::Action& action) {
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

template <class Managed>
void PerformerOf<Managed>::operator()(const lines::SharedManager& /*action*/) {
    if constexpr (std::is_same_v<Managed, QXNearcastManager>) Managed::sharedManager();
}

template <class Managed>
void PerformerOf<Managed>::operator()(const lines::SetDelegate& action) {
    if (!action.implements) return manager_.setDelegate(nullptr);
    auto delegate = std::make_shared<QXNearcastManagerDelegate>();
    if (implements(action, "didDiscoverPort:deviceType:MACAddr:RSSI:")) {
        delegate->didDiscoverPort = [this](std::string_view portName, QXDeviceType deviceType, std::string_view MACAddr,
                                           std::int32_t RSSI) {
            writer_.attempt([&] { writer_.discovered(now(), portName, deviceType, MACAddr, RSSI); });
        };
    }
    if (implements(action, "didUpdateState:MACAddr:")) {
        delegate->didUpdateState = [this](std::string_view portName, std::string_view MACAddr) {
            writer_.attempt([&] { writer_.fellSilent(now(), portName, MACAddr); });
        };
    }
    manager_.setDelegate(std::move(delegate));
}

template <class Managed>
void PerformerOf<Managed>::operator()(const lines::AddSetting& action) {
    if (action.drawerGiven) {
        manager_.addSettingForPrinterPortName(action.portName, action.portSettings, action.withDrawer,
                                              action.dongleMACAddr, action.RSSIthreshould, action.nickName);
    } else {
        manager_.addSettingForTFTillfoxPortName(action.portName, action.portSettings, action.dongleMACAddr,
                                                action.RSSIthreshould, action.nickName);
    }
}

template <class Managed>
void PerformerOf<Managed>::operator()(const lines::RemoveSetting& action) {
    manager_.removeSettingWithPortName(action.portName);
}

template <class Managed>
void PerformerOf<Managed>::operator()(const lines::ReadSettings& action) {
    const auto settings = manager_.getSettings();
    SettingValue::Dictionary registry;
    for (const auto& [portName, record] : *settings) registry.emplace(portName, *record);
    writer_.returned(now(), nameOf(action), SettingValue(std::move(registry)));
}

template <class Managed>
void PerformerOf<Managed>::operator()(const lines::SetSettings& action) {
    manager_.setSettings(action.settings);
}

template <class Managed>
void PerformerOf<Managed>::operator()(const lines::SerializeSettings& action) {
    const auto data = manager_.serializedSettings();
    writer_.returned(now(), nameOf(action), data ? SettingValue(*data) : SettingValue());
}

template <class Managed>
void PerformerOf<Managed>::operator()(const lines::DeserializeSettings& action) {
    const bool loaded = manager_.deserializeSettings(action.data);
    writer_.returned(now(), nameOf(action), loaded);
}

template <class Managed>
void PerformerOf<Managed>::operator()(const lines::StartScan& action) {
    const bool started = action.samplingNumber ? manager_.startScan(*action.samplingNumber) : manager_.startScan();
    writer_.returned(now(), nameOf(action), started);
}

template <class Managed>
void PerformerOf<Managed>::operator()(const lines::StopScan& /*action*/) {
    manager_.stopScan();
}

template <class Managed>
void PerformerOf<Managed>::operator()(const lines::CalibrateActionArea& action) {
    const std::int32_t RSSI = manager_.calibrateActionArea(action.MACAddr);
    writer_.returned(now(), nameOf(action), RSSI);
}

template <class Managed>
void PerformerOf<Managed>::operator()(const lines::GetRSSI& action) {
    const std::int32_t RSSI = manager_.getRSSI(action.MACAddr);
    writer_.returned(now(), nameOf(action), RSSI);
}

template <class Managed>
void PerformerOf<Managed>::operator()(const lines::RadioState& action) {
    platform_.radio()->setState(action.state);
}

template <class Managed>
void PerformerOf<Managed>::operator()(const lines::Advertise& action) {
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

template <class Managed>
void PerformerOf<Managed>::operator()(const lines::End& /*action*/) {}

using Performer = PerformerOf<QXNearcastManager>;
extern template class PerformerOf<QXNearcastManager>;

}  // namespace nearcast::lab
