// SPDX-License-Identifier: Apache-2.0
#include "radios/RadioList.h"

#include "doctor/Checks.h"
#include "machine/Facts.h"

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <set>

namespace nearcast::cli {

namespace {

using Look = std::vector<Finding> (*)(const Machine& machine);

/// The first of these checks' faults.
std::optional<Finding> faultIn(const Machine& machine, std::initializer_list<Look> looks) {
    for (const Look look : looks) {
        for (const Finding& finding : look(machine)) {
            if (finding.level == Level::fault) return finding;
        }
    }
    return std::nullopt;
}

RadioEntry entryFor(std::string radio, std::string about, const std::optional<Finding>& fault) {
    if (fault) return {std::move(radio), false, fault->text, fault->advice};
    return {std::move(radio), true, std::move(about), ""};
}

/// @param what of the adapter its radio string does not say
void addAdapter(std::string radio, const std::string& what, const BusAdapter& adapter,
                std::vector<RadioEntry>& entries) {
    std::optional<Finding> fault;
    if (!hasLowEnergy(adapter)) {
        fault = Finding{Level::fault, what + ", without Low Energy", "use an adapter of Bluetooth 4.0 or later"};
    } else if (!adapter.powered) {
        fault = Finding{Level::fault, what + ", powered off", "bluetoothctl power on"};
    }
    entries.push_back(entryFor(std::move(radio), what + ", powered on", fault));
}

void addBluez(const Machine& machine, std::vector<RadioEntry>& entries) {
    auto fault = faultIn(machine, {checkBus, checkDaemon, checkPolicy, checkPower, checkLowEnergy});
    if (!fault && machine.bus().adapters.empty()) fault = faultIn(machine, {checkAdapters});
    const BusAdapter* const best = bestAdapter(machine);
    const std::string by = best == nullptr ? "" : best->name;
    const bool several = machine.bus().adapters.size() > 1;
    entries.push_back(entryFor("bluez", "bluetoothd, by " + by + (several ? ", the best adapter" : ""), fault));
    std::set<std::string> addresses;  // two adapters may have the same
    for (const BusAdapter& adapter : machine.bus().adapters) {
        const bool named = !adapter.address.empty() && addresses.insert(adapter.address).second;
        addAdapter("bluez:" + adapter.name, adapter.address.empty() ? "no address" : adapter.address, adapter, entries);
        if (named) addAdapter("bluez:" + adapter.address, adapter.name + " at present", adapter, entries);
    }
}

std::optional<Finding> blockOf(const HciAdapter& adapter) {
    if (adapter.blocked.hard) return Finding{Level::fault, adapter.name + " is switched off at the machine", ""};
    if (!adapter.blocked.soft) return std::nullopt;
    return Finding{Level::fault, adapter.name + " is blocked", "sudo rfkill unblock bluetooth"};
}

void addController(const Machine& machine, const HciAdapter& adapter, std::vector<RadioEntry>& entries) {
    const std::string radio = "hci:" + std::to_string(adapter.index);
    const auto block = blockOf(adapter);
    auto alone = block ? block : faultIn(machine, {checkTaking});
    if (!alone) alone = inUse(adapter);
    entries.push_back(entryFor(radio, adapter.name + " for nearcast alone, without bluetoothd", alone));
    auto beside = block ? block : faultIn(machine, {checkListening});
    if (!beside && !adapter.up) beside = Finding{Level::fault, adapter.name + " is off", "bluetoothctl power on"};
    entries.push_back(entryFor(radio + "?beside", adapter.name + ", listening to what others discover", beside));
}

void addHci(const Machine& machine, std::vector<RadioEntry>& entries) {
    const auto& adapters = machine.controllers().adapters;
    for (const HciAdapter& adapter : adapters) addController(machine, adapter, entries);
    if (adapters.empty()) entries.push_back(entryFor("hci", "", faultIn(machine, {checkKernel, checkAdapters})));
}

RadioEntry automatic(const Machine& machine, const std::vector<RadioEntry>& others) {
    const std::string radio = automaticRadio(machine);
    if (radio == "none") {
        return {"auto", false, "there is neither bluetoothd nor an adapter", "nearcast doctor tells more"};
    }
    const auto taken = std::find_if(others.begin(), others.end(), [&](const auto& one) { return one.radio == radio; });
    if (taken == others.end()) return {"auto", false, "takes " + radio, ""};
    return {"auto", taken->opens, "takes " + radio + (taken->opens ? "" : ": " + taken->about), taken->advice};
}

}  // namespace

std::vector<RadioEntry> radiosOf(const Machine& machine) {
    std::vector<RadioEntry> entries;
    addBluez(machine, entries);
    addHci(machine, entries);
    entries.insert(entries.begin(), automatic(machine, entries));
    entries.push_back({"simulator", true, "a simulated shop", ""});
    entries.push_back({"replay:FILE", true, "a recording", ""});
    entries.push_back({"none", true, "no radio", ""});
    return entries;
}

}  // namespace nearcast::cli
