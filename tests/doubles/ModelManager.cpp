// SPDX-License-Identifier: Apache-2.0
#include "doubles/ModelManager.h"

#include <cmath>

namespace nearcast::doubles {

std::string shown(const std::optional<std::string>& text) { return text ? *text : "(null)"; }

std::optional<std::string> textMember(const Json& line, const char* name) {
    if (!line.contains(name) || line[name].is_null()) return std::nullopt;
    return line[name].get<std::string>();
}

std::int32_t cutToInt32(double number) {
    if (std::isnan(number)) return 0;
    if (number >= 2147483647.0) return INT32_MAX;
    if (number <= -2147483648.0) return INT32_MIN;
    return static_cast<std::int32_t>(number);
}

std::vector<int> octetsOf(const std::string& hexadecimal) {
    std::vector<int> octets;
    for (std::size_t place = 0; place + 1 < hexadecimal.size(); place += 2) {
        octets.push_back(std::stoi(hexadecimal.substr(place, 2), nullptr, 16));
    }
    return octets;
}

ModelManager::ModelManager(const std::vector<std::string>& lines)
    : world_(lines, [this](const Json& line) { perform(line); }) {}

std::vector<Json> ModelManager::run(const std::vector<std::string>& lines) {
    ModelManager manager(lines);
    manager.world_.runAllLines();
    return manager.world_.events();
}

void ModelManager::perform(const Json& line) {
    const std::string what = line["do"];
    try {
        call(what, line);
    } catch (const ModelRefusal& refusal) {
        world_.show("raise", {{"of", what}, {"name", "PortException"}, {"reason", refusal.reason}});
    } catch (const ModelError&) {
        world_.show("raise", {{"of", what}, {"name", nullptr}, {"reason", nullptr}});
    }
}

void ModelManager::call(const std::string& what, const Json& line) {
    if (callRegistry(what, line)) return;
    if (what == "sharedManager") return sharedManager();
    if (what == "setDelegate") return setDelegate(line);
    if (what == "startScan") {
        const bool number = line.contains("samplingNumber") && !line["samplingNumber"].is_null();
        const bool started = number ? startScanWith(line["samplingNumber"].get<std::uint64_t>()) : startScan();
        return returned(what, started);
    }
    if (what == "stopScan") return stopScan();
    if (what == "calibrateActionArea") return returned(what, calibrateActionArea(textMember(line, "MACAddr")));
    if (what == "getRSSI") return returned(what, getRSSI(textMember(line, "MACAddr")));
    if (what == "radio") return changeState(line["state"]);
    if (what == "advertise") return advertise(line);
}

bool ModelManager::callRegistry(const std::string& what, const Json& line) {
    if (what == "addSettingForPrinterPortName") {
        addSetting(line, true);
    } else if (what == "addSettingForTFTillfoxPortName") {
        addSetting(line, false);
    } else if (what == "removeSettingWithPortName") {
        removeSetting(textMember(line, "portName"));
    } else if (what == "settings") {
        returned(what, getSettings());
    } else if (what == "setSettings") {
        setSettings(line.contains("settings") ? line["settings"] : Json());
    } else if (what == "serializedSettings") {
        returned(what, serializedSettings());
    } else if (what == "deserializeSettings") {
        std::string data;
        for (const int octet : octetsOf(textMember(line, "dataHex").value_or(""))) {
            data.push_back(static_cast<char>(octet));
        }
        returned(what, deserializeSettings(textMember(line, "data").value_or(data)));
    } else {
        return false;
    }
    return true;
}

void ModelManager::sharedManager() {
    const std::string method = "+[QXNearcastManager sharedManager]";
    world_.show("trace", {{"type", 0}, {"method", method}, {"text", ""}});
    world_.show("trace", {{"type", 1}, {"method", method}, {"text", "-> <ptr>"}});
}

void ModelManager::setDelegate(const Json& line) {
    delegate_.reset();
    if (!line.contains("implements") || line["implements"].is_null()) return;
    delegate_ = Delegate{};
    for (const std::string selector : line["implements"]) {
        if (selector == "didDiscoverPort:deviceType:MACAddr:RSSI:") delegate_->didDiscoverPort = true;
        if (selector == "didUpdateState:MACAddr:") delegate_->didUpdateState = true;
    }
}

bool ModelManager::isLECapableHardware() {
    auto op = operation("isLECapableHardware", Audience::internal);
    op.start("");
    for (int i = 0; i < 10; ++i) {
        op.process("manager.state: " + std::to_string(radioState_));
        if (radioState_ == 0) {
            world_.sleep(100'000);
        } else if (radioState_ == 5) {
            op.end("-> 1");
            return true;
        } else if (radioState_ >= 1 && radioState_ <= 4) {
            op.end("-> 0");
            return false;
        }
    }
    op.end("-> 0");
    return false;
}

void ModelManager::changeState(std::int64_t state) {
    radioState_ = state;
    auto op = operation("centralManagerDidUpdateState:", Audience::internal);
    op.start("-> <ptr>");
    op.end("-> <ptr>");
}

}  // namespace nearcast::doubles
