// SPDX-License-Identifier: Apache-2.0
#include "lines/Line.h"

#include "lines/Fields.h"
#include "lines/PlainLine.h"
#include "platform/json/JSONSerialization.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

namespace nearcast::lines {

namespace {

template <class Value>
Value required(std::optional<Value> value, std::string_view name) {
    if (value) return *std::move(value);
    throw LineError("field \"" + std::string(name) + "\" is missing");
}

AddSetting addSetting(Fields& fields, bool drawerGiven) {
    AddSetting action;
    action.drawerGiven = drawerGiven;
    action.portName = fields.text("portName");
    action.portSettings = fields.text("portSettings");
    if (drawerGiven) action.withDrawer = fields.boolean("withDrawer").value_or(false);
    action.dongleMACAddr = fields.text("dongleMACAddr");
    action.RSSIthreshould = fields.number("RSSIthreshould");
    action.nickName = fields.text("nickName");
    return action;
}

SetSettings setSettings(Fields& fields) {
    SetSettings action;
    const auto members = fields.object("settings");
    if (!members) return action;
    action.settings.emplace();
    for (const auto& [portName, record] : *members) {
        const auto* dictionary = record.as<SettingRecord>();
        if (dictionary == nullptr) {
            throw LineError("field \"settings\": the record of \"" + portName + "\" is not an object");
        }
        action.settings->emplace(portName, std::make_shared<const SettingRecord>(*dictionary));
    }
    return action;
}

DeserializeSettings deserializeSettings(Fields& fields) {
    auto text = fields.text("data");
    const auto octets = fields.octets("dataHex");
    if (text && octets) throw LineError("fields \"data\" and \"dataHex\" exclude each other");
    if (octets) text.emplace(octets->begin(), octets->end());
    return {required(std::move(text), "data")};
}

Advertise advertise(Fields& fields) {
    Advertise action;
    action.name = fields.text("name");
    action.manufacturerData = fields.octets("manufacturerData");
    const std::int64_t RSSI = required(fields.integer("RSSI"), "RSSI");
    if (RSSI < INT32_MIN || RSSI > INT32_MAX) throw LineError("field \"RSSI\": expected an integer of 32 bits");
    action.RSSI = static_cast<std::int32_t>(RSSI);
    action.services = fields.texts("services");
    return action;
}

struct Kind {
    std::string_view name;
    Action (*read)(Fields& fields);
};

constexpr std::array kinds{
    Kind{"advertise", [](Fields& fields) -> Action { return advertise(fields); }},
    Kind{"radio", [](Fields& fields) -> Action { return RadioState{required(fields.integer("state"), "state")}; }},
    Kind{"end", [](Fields&) -> Action { return End{}; }},
    Kind{"getRSSI", [](Fields& fields) -> Action { return GetRSSI{fields.text("MACAddr")}; }},
    Kind{"calibrateActionArea", [](Fields& fields) -> Action { return CalibrateActionArea{fields.text("MACAddr")}; }},
    Kind{"startScan", [](Fields& fields) -> Action { return StartScan{fields.unsignedInteger("samplingNumber")}; }},
    Kind{"stopScan", [](Fields&) -> Action { return StopScan{}; }},
    Kind{"setDelegate", [](Fields& fields) -> Action { return SetDelegate{fields.texts("implements")}; }},
    Kind{"addSettingForPrinterPortName", [](Fields& fields) -> Action { return addSetting(fields, true); }},
    Kind{"addSettingForTFTillfoxPortName", [](Fields& fields) -> Action { return addSetting(fields, false); }},
    Kind{"removeSettingWithPortName", [](Fields& fields) -> Action { return RemoveSetting{fields.text("portName")}; }},
    Kind{"settings", [](Fields&) -> Action { return ReadSettings{}; }},
    Kind{"setSettings", [](Fields& fields) -> Action { return setSettings(fields); }},
    Kind{"serializedSettings", [](Fields&) -> Action { return SerializeSettings{}; }},
    Kind{"deserializeSettings", [](Fields& fields) -> Action { return deserializeSettings(fields); }},
    Kind{"sharedManager", [](Fields&) -> Action { return SharedManager{}; }},
};

struct NameOf {
    std::string_view operator()(const SharedManager& /*action*/) const { return "sharedManager"; }
    std::string_view operator()(const SetDelegate& /*action*/) const { return "setDelegate"; }
    std::string_view operator()(const AddSetting& action) const {
        return action.drawerGiven ? "addSettingForPrinterPortName" : "addSettingForTFTillfoxPortName";
    }
    std::string_view operator()(const RemoveSetting& /*action*/) const { return "removeSettingWithPortName"; }
    std::string_view operator()(const ReadSettings& /*action*/) const { return "settings"; }
    std::string_view operator()(const SetSettings& /*action*/) const { return "setSettings"; }
    std::string_view operator()(const SerializeSettings& /*action*/) const { return "serializedSettings"; }
    std::string_view operator()(const DeserializeSettings& /*action*/) const { return "deserializeSettings"; }
    std::string_view operator()(const StartScan& /*action*/) const { return "startScan"; }
    std::string_view operator()(const StopScan& /*action*/) const { return "stopScan"; }
    std::string_view operator()(const CalibrateActionArea& /*action*/) const { return "calibrateActionArea"; }
    std::string_view operator()(const GetRSSI& /*action*/) const { return "getRSSI"; }
    std::string_view operator()(const RadioState& /*action*/) const { return "radio"; }
    std::string_view operator()(const Advertise& /*action*/) const { return "advertise"; }
    std::string_view operator()(const End& /*action*/) const { return "end"; }
};

Time timeOf(Fields& fields, Time previous) {
    const auto seconds = fields.seconds("at");
    if (!seconds) return previous;
    return Time(std::llround(*seconds * 1e6));
}

Action actionOf(Fields& fields) {
    const std::string name = required(fields.text("do"), "do");
    const auto* const kind =
        std::find_if(kinds.begin(), kinds.end(), [&](const Kind& known) { return known.name == name; });
    if (kind == kinds.end()) throw LineError("unknown \"do\": \"" + name + "\"");
    Action action = kind->read(fields);
    fields.requireNoMore();
    return action;
}

}  // namespace

std::string LineError::inLine(std::uint64_t number) const {
    if (column_ != 0) return notJSON({number, column_}, what());
    return "line " + std::to_string(number) + ": " + what();
}

std::string LineError::inFile(const std::string& name, std::uint64_t number) const {
    if (column_ != 0) return name + ": " + inLine(number);
    return name + ":" + std::to_string(number) + ": " + what();
}

std::string_view nameOf(const Action& action) { return std::visit(NameOf{}, action); }

Line parseLine(std::string_view text, Time previous) {
    if (auto plain = readPlainLine(text, previous)) return *std::move(plain);
    return parseJSONLine(text, previous);
}

Line parseJSONLine(std::string_view text, Time previous) {
    Fields fields = Fields::parse(text);
    Line line;
    line.at = timeOf(fields, previous);
    try {
        line.action = actionOf(fields);
    } catch (LineError& error) {
        error.at = line.at;
        throw;
    }
    return line;
}

}  // namespace nearcast::lines
