// SPDX-License-Identifier: Apache-2.0
#include "fuzz/ManagerPlay.h"

#include "support/Dongle.h"

#include <nearcast/LogWriter.h>

#include <algorithm>
#include <memory>
#include <utility>
#include <variant>

namespace nearcast::fuzz {

namespace {

bool contains(const std::vector<std::string>& texts, std::string_view wanted) {
    return std::find(texts.begin(), texts.end(), wanted) != texts.end();
}

}  // namespace

GivenLines::GivenLines(const std::vector<std::string>& texts) {
    lines::Time previous{0};
    for (const std::string& text : texts) {
        lines_.push_back(lines::parseLine(text, previous));
        previous = lines_.back().at;
    }
}

std::optional<lines::Line> GivenLines::next() {
    if (next_ == lines_.size()) return std::nullopt;
    return lines_[next_++];
}

std::optional<lines::Time> GivenLines::peekTime() {
    if (next_ == lines_.size()) return std::nullopt;
    return lines_[next_].at;
}

ManagerPlay::ManagerPlay() {
    manager_.init();
    NSLock::setObserver(this);
    LogWriter::Options tracing;
    tracing.synchronous = true;
    tracing.sink = [this](const LogRecord& record) {
        writer_.trace(now(), record.logType, record.methodName, record.anyString);
    };
    LogWriter::sharedInstance().start(std::move(tracing));
}

ManagerPlay::~ManagerPlay() {
    NSLock::setObserver(nullptr);
    LogWriter::sharedInstance().stop();
}

std::string ManagerPlay::play(const std::vector<std::string>& lines) {
    GivenLines source(lines);
    lab::Script script(source, lines::Time{0}, [this](const lines::Action& action) { perform(action); });
    script.run(platform_.timeline());
    if (script.failure()) throw lines::InputError(*script.failure());
    writer_.flush();
    return std::exchange(shown_, {});
}

void ManagerPlay::scanAsked(const std::optional<std::vector<CBUUID>>& services, ScanOptions options) {
    std::optional<std::vector<std::string>> texts;
    if (services) {
        texts.emplace();
        for (const CBUUID& service : *services) texts->push_back(service.UUIDString());
    }
    writer_.centralScans(now(), texts, options.allowDuplicates);
}

void ManagerPlay::perform(const lines::Action& action) {
    try {
        std::visit([this](const auto& what) { (*this)(what); }, action);
    } catch (const PortException& exception) {
        writer_.raised(now(), nameOf(action), exception.name(), exception.reason());
    } catch (const std::exception& error) {
        writer_.raised(now(), nameOf(action), "another exception", error.what());
    }
}

void ManagerPlay::operator()(const lines::SetDelegate& action) {
    if (!action.implements) return manager_.setDelegate(nullptr);
    auto delegate = std::make_shared<QXNearcastManagerDelegate>();
    if (contains(*action.implements, "didDiscoverPort:deviceType:MACAddr:RSSI:")) {
        delegate->didDiscoverPort = [this](std::string_view portName, QXDeviceType deviceType, std::string_view MACAddr,
                                           std::int32_t RSSI) {
            writer_.discovered(now(), portName, deviceType, MACAddr, RSSI);
        };
    }
    if (contains(*action.implements, "didUpdateState:MACAddr:")) {
        delegate->didUpdateState = [this](std::string_view portName, std::string_view MACAddr) {
            writer_.fellSilent(now(), portName, MACAddr);
        };
    }
    manager_.setDelegate(std::move(delegate));
}

void ManagerPlay::operator()(const lines::AddSetting& action) {
    if (action.drawerGiven) {
        manager_.addSettingForPrinterPortName(action.portName, action.portSettings, action.withDrawer,
                                              action.dongleMACAddr, action.RSSIthreshould, action.nickName);
    } else {
        manager_.addSettingForTFTillfoxPortName(action.portName, action.portSettings, action.dongleMACAddr,
                                                action.RSSIthreshould, action.nickName);
    }
}

void ManagerPlay::operator()(const lines::ReadSettings& action) {
    const auto settings = manager_.getSettings();
    SettingValue::Dictionary registry;
    for (const auto& [portName, record] : *settings) registry.emplace(portName, *record);
    writer_.returned(now(), nameOf(action), SettingValue(std::move(registry)));
}

void ManagerPlay::operator()(const lines::SerializeSettings& action) {
    const auto data = manager_.serializedSettings();
    writer_.returned(now(), nameOf(action), data ? SettingValue(*data) : SettingValue());
}

void ManagerPlay::operator()(const lines::DeserializeSettings& action) {
    const bool loaded = manager_.deserializeSettings(action.data);
    writer_.returned(now(), nameOf(action), loaded);
}

void ManagerPlay::operator()(const lines::StartScan& action) {
    const bool started = action.samplingNumber ? manager_.startScan(*action.samplingNumber) : manager_.startScan();
    writer_.returned(now(), nameOf(action), started);
}

void ManagerPlay::operator()(const lines::CalibrateActionArea& action) {
    const std::int32_t RSSI = manager_.calibrateActionArea(action.MACAddr);
    writer_.returned(now(), nameOf(action), RSSI);
}

void ManagerPlay::operator()(const lines::GetRSSI& action) {
    const std::int32_t RSSI = manager_.getRSSI(action.MACAddr);
    writer_.returned(now(), nameOf(action), RSSI);
}

void ManagerPlay::operator()(const lines::Advertise& action) {
    AdvertisingReport report;
    report.name = action.name;
    report.manufacturerData = action.manufacturerData;
    report.RSSI = action.RSSI;
    if (action.services) {
        for (const std::string& service : *action.services) report.services.push_back(CBUUID::UUIDWithString(service));
    } else {
        report.services.push_back(CBUUID::UUIDWithString(dongle::serviceUUID));
    }
    platform_.radio()->advertise(report);
}

}  // namespace nearcast::fuzz
