// SPDX-License-Identifier: Apache-2.0
#include "doubles/ModelManager.h"
#include "doubles/StrictJSON.h"

namespace nearcast::doubles {

namespace {

constexpr std::string_view registryLock = "_lockMutableSettingsFlag";

/// The characters of a text, each with all its octets.
std::vector<std::string> charactersOf(const std::string& text) {
    std::vector<std::string> characters;
    for (const char octet : text) {
        const bool continues = (static_cast<unsigned char>(octet) & 0xC0) == 0x80;
        if (!continues) characters.emplace_back();
        characters.back().push_back(octet);
    }
    return characters;
}

bool isNumber(const Json& value, int number) {
    if (value.is_boolean()) return value.get<bool>() && number == 1;
    return value.is_number() && value == number;
}

}  // namespace

void ModelManager::addSetting(const Json& line, bool printer) {
    Registration registration;
    registration.printer = printer;
    registration.portName = textMember(line, "portName");
    registration.portSettings = textMember(line, "portSettings");
    registration.useDrawer = !printer || (line.contains("withDrawer") && line["withDrawer"] == true);
    registration.MACAddr = textMember(line, "dongleMACAddr");
    registration.nickName = textMember(line, "nickName");
    if (line.contains("RSSIthreshould") && !line["RSSIthreshould"].is_null()) {
        registration.threshold = line["RSSIthreshould"].get<double>();
    }
    auto op = operation(printer ? "addSettingForPrinterPortName:portSettings:withDrawer:dongleMACAddr:RSSIthreshould:"
                                  "nickName:"
                                : "addSettingForTFTillfoxPortName:portSettings:dongleMACAddr:RSSIthreshould:nickName:",
                        Audience::application);
    std::string arguments = shown(registration.portName) + ", " + shown(registration.portSettings) + ", ";
    if (printer) arguments += registration.useDrawer ? "1, " : "0, ";
    arguments += shown(registration.MACAddr) + ", " + std::to_string(cutToInt32(registration.threshold.value_or(0))) +
                 ", " + shown(registration.nickName);
    op.start(arguments);
    add(registration, op, arguments);
    op.end(arguments);
}

void ModelManager::add(const Registration& registration, ModelOperation& op, const std::string& arguments) {
    const bool printer = registration.printer;
    const Text& portName = registration.portName;
    const Text& MACAddr = registration.MACAddr;
    if (!portName || !MACAddr) {
        refuse(op, "(portName == nil) || (MACAddr == nil), <ptr>, <ptr>",
               printer ? "portName or MACAddr is nil" : "portName or MACAddr is nil.", arguments,
               printer ? "portName or dongle MAC address is nil." : "portName or dongleMACAddr is nil.");
    }
    if (registry_.count(*portName) != 0) {
        refuse(op, "[mutableSettings.allKeys containsObject:portName], <ptr>, " + *portName,
               "portName " + *portName + " is already exists.", arguments, "The specified portName is already in use.");
    }
    isValidateMACAddr();
    if (getPortNameFromMACAddr(MACAddr)) {
        refuse(op, "[self getPortNameFromMACAddr:MACAddr] != nil, <ptr>, " + *MACAddr,
               "Given MAC address is already exist.", arguments,
               printer ? "The specified dongle MAC address is already in use."
                       : "The specified dongleMACAddr is already in use.");
    }
    Json record{{"Device Type", printer ? 1 : 3},
                {"With Drawer", registration.useDrawer},
                {"Nick Name", shown(registration.nickName)},
                {"MAC Address", *MACAddr}};
    if (registration.portSettings) {
        op.process("portSettings != nil, " + *registration.portSettings);
        record["Port Settings"] = *registration.portSettings;
    }
    if (registration.threshold) {
        const std::int32_t threshold = cutToInt32(*registration.threshold);
        op.process("Threshold != nil, " + (printer ? std::to_string(threshold) : shown(registration.portSettings)));
        record["Threshold RSSI"] = threshold;
    }
    const ModelLock lock(world_, registryLock);
    registry_[*portName] = record;
}

void ModelManager::refuse(ModelOperation& op, const std::string& condition, const std::string& consoleText,
                          const std::string& arguments, const std::string& reason) {
    op.error(condition);
    console(consoleText);
    op.end(arguments);
    throw ModelRefusal{reason};
}

void ModelManager::removeSetting(const Text& portName) {
    auto op = operation("removeSettingWithPortName:", Audience::application);
    op.start(shown(portName));
    if (!portName) {
        op.error("portName == nil, <ptr>");
        op.end(shown(portName));
        return;
    }
    {
        const ModelLock lock(world_, registryLock);
        if (registry_.erase(*portName) == 0) {
            op.error("[mutableSettings.allKeys containsObject:portName] == NO, <ptr>, " + *portName);
        }
    }
    op.end(*portName);
}

Json ModelManager::getSettings() {
    auto op = operation("getSettings", Audience::internal);
    op.start("");
    const ModelLock lock(world_, registryLock);
    op.end("<ptr>");
    Json snapshot = Json::object();
    for (const auto& [portName, record] : registry_) snapshot[portName] = record;
    return snapshot;
}

void ModelManager::setSettings(const Json& settings) {
    auto op = operation("setSettings:", Audience::internal);
    op.start("<ptr>");
    {
        const ModelLock lock(world_, registryLock);
        registry_.clear();
        for (const auto& [portName, record] : settings.items()) registry_[portName] = record;
    }
    op.end("");
}

Json ModelManager::serializedSettings() {
    auto op = operation("serializedSettings", Audience::application);
    op.start("");
    Json saved = Json::object();
    {
        const ModelLock lock(world_, registryLock);
        for (const auto& [portName, record] : registry_) {
            Json copy = record;
            copy.erase("Device Type");
            const Json type = record.value("Device Type", Json());
            if (isNumber(type, 1)) copy["Device Type"] = "Printer";
            if (isNumber(type, 3)) copy["Device Type"] = "TF-Tillfox";
            saved[portName] = copy;
        }
    }
    op.end("-> <ptr>");
    return saved;
}

bool ModelManager::deserializeSettings(const std::string& data) {
    auto op = operation("deserializeSettings:", Audience::application);
    op.start("<ptr>");
    const auto results = readStrictJSON(data);
    if (!results) {
        op.error("results == nil, <ptr>");
        op.end("<ptr>, -> 0");
        return false;
    }
    if (!results->is_object()) throw ModelError();
    Json loaded = Json::object();
    for (const auto& [portName, record] : results->items()) {
        if (!record.is_object()) throw ModelError();
        Json copy = record;
        copy.erase("Device Type");
        if (record.contains("Device Type")) {
            if (!record["Device Type"].is_string()) throw ModelError();
            if (record["Device Type"] == "Printer") copy["Device Type"] = 1;
            if (record["Device Type"] == "TF-Tillfox") copy["Device Type"] = 3;
        }
        loaded[portName] = copy;
    }
    setSettings(loaded);
    op.end("<ptr>, -> 1");
    return true;
}

bool ModelManager::isValidateMACAddr() {
    auto op = operation("isValidateMACAddr:", Audience::internal);
    op.start(nullptr);
    op.end(nullptr);
    return true;
}

ModelManager::Text ModelManager::getPortNameFromMACAddr(const Text& MACAddr) {
    auto op = operation("getPortNameFromMACAddr:", Audience::internal);
    op.start(nullptr);
    Text found;
    {
        const ModelLock lock(world_, registryLock);
        for (const auto& [portName, record] : registry_) {
            if (!found && MACAddr && record.value("MAC Address", Json()) == *MACAddr) found = portName;
        }
    }
    op.end(nullptr);
    return found;
}

std::string ModelManager::getMACAddressFromName(const Text& name) {
    auto op = operation("getMACAddressFromName:", Audience::internal);
    op.start(nullptr);
    std::string address = "(null):(null):(null):(null):(null):(null)";
    if (name) {
        const auto characters = charactersOf(*name);
        address.clear();
        if (characters.size() < 14) {
            op.error(nullptr);
            op.end(nullptr);
            return *name;
        }
        for (std::size_t place = 2; place < 14; ++place) {
            if (place > 2 && place % 2 == 0) address += ":";
            address += characters[place];
        }
    }
    op.end(nullptr);
    return address;
}

}  // namespace nearcast::doubles
