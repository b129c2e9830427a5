// SPDX-License-Identifier: Apache-2.0
#include "common/Words.h"
#include "doctor/Checks.h"
#include "machine/Facts.h"
#include "platform/radio/AdapterName.h"

#include <algorithm>
#include <map>

namespace nearcast::cli {

namespace {

constexpr const char* accessDenied = "org.freedesktop.DBus.Error.AccessDenied";

std::string inWords(const BusProblem& problem) {
    return problem.message + (problem.name.empty() ? "" : " (" + problem.name + ")");
}

/// One sentence about each adapter on the bus; nothing where bluetoothd shows none.
template <class Describe>
std::vector<Finding> eachAdapter(const Machine& machine, Describe describe) {
    std::vector<Finding> findings;
    for (const BusAdapter& adapter : machine.bus().adapters) findings.push_back(describe(adapter));
    return findings;
}

std::string nameOf(const BusAdapter& adapter) {
    return adapter.name + (adapter.address.empty() ? "" : " (" + adapter.address + ")");
}

/// Why another adapter is taken and not this one.
std::string shortcoming(const BusAdapter& adapter) {
    if (!hasLowEnergy(adapter)) return adapter.name + " is of the classic kind";
    return adapter.name + (adapter.powered ? " is as good, with a higher number" : " is powered off");
}

bool anyAdapter(const Machine& machine, bool BusAdapter::*property) {
    const auto& adapters = machine.bus().adapters;
    return std::any_of(adapters.begin(), adapters.end(), [=](const BusAdapter& adapter) { return adapter.*property; });
}

/// bluetoothd runs and shows its objects, but there is no adapter among them.
std::vector<Finding> noAdapterOnTheBus(const Machine& machine) {
    const auto& adapters = machine.controllers().adapters;
    if (adapters.empty()) return {};  // which is said already
    return {
        {Level::fault, "bluetoothd shows no adapter although the kernel has " + adapters.front().name,
         "end the program that has taken it ('hci:N', or a virtual machine); else sudo systemctl restart bluetooth"}};
}

}  // namespace

std::vector<Finding> checkBus(const Machine& machine) {
    const auto& problem = machine.bus().unreachable;
    if (!problem) return {{Level::good, "the system bus answers", ""}};
    return {{Level::fault, "the system bus cannot be reached: " + inWords(*problem),
             "sudo systemctl start dbus; a container needs the host's /run/dbus/system_bus_socket"}};
}

std::vector<Finding> checkDaemon(const Machine& machine) {
    const BusReading& bus = machine.bus();
    if (bus.unreachable) return {};
    if (!bus.bluetoothd && bus.available) {
        return {{Level::remark, "bluetoothd does not run; the bus starts it when somebody asks for it",
                 "sudo systemctl enable --now bluetooth"}};
    }
    if (!bus.bluetoothd) {
        return {
            {Level::fault, "bluetoothd does not run", "sudo apt install bluez; sudo systemctl enable --now bluetooth"}};
    }
    const Daemon daemon = daemonOf(machine);
    std::string text = daemon.version ? "version " + *daemon.version : "of an unknown version";
    if (bus.process) text += ", process " + std::to_string(*bus.process);
    return {{Level::good, text + (daemon.experimental ? ", experimental interfaces on" : ""), ""}};
}

std::vector<Finding> checkPolicy(const Machine& machine) {
    const BusReading& bus = machine.bus();
    if (!bus.bluetoothd) return {};
    if (!bus.refused) return {{Level::good, "bluetoothd may be asked", ""}};
    if (bus.refused->name == accessDenied) {
        return {{Level::fault, "the bus policy forbids to speak with bluetoothd: " + inWords(*bus.refused),
                 "allow it in /etc/dbus-1/system.d/bluetooth.conf, or join the group it names: "
                 "sudo usermod -aG bluetooth \"$USER\", and log in again"}};
    }
    return {{Level::fault, "bluetoothd does not answer: " + inWords(*bus.refused), "sudo systemctl restart bluetooth"}};
}

std::vector<Finding> checkPower(const Machine& machine) {
    const BusReading& bus = machine.bus();
    if (!bus.bluetoothd || bus.refused) return {};
    if (bus.adapters.empty()) return noAdapterOnTheBus(machine);
    const Level off = anyAdapter(machine, &BusAdapter::powered) ? Level::note : Level::fault;
    return eachAdapter(machine, [off](const BusAdapter& adapter) -> Finding {
        if (adapter.powered) return {Level::good, nameOf(adapter) + " is powered on", ""};
        return {off, nameOf(adapter) + " is powered off",
                "bluetoothctl power on; to have it so after a restart: AutoEnable=true in /etc/bluetooth/main.conf"};
    });
}

std::vector<Finding> checkLowEnergy(const Machine& machine) {
    const BusAdapter* const best = bestAdapter(machine);
    const Level without = best != nullptr && hasLowEnergy(*best) ? Level::note : Level::fault;
    return eachAdapter(machine, [without](const BusAdapter& adapter) -> Finding {
        if (hasLowEnergy(adapter)) return {Level::good, adapter.name + " listens to Low Energy", ""};
        return {
            without, adapter.name + " is of the classic kind, or Low Energy is off",
            "use an adapter of Bluetooth 4.0 or later; ControllerMode in /etc/bluetooth/main.conf must not be bredr"};
    });
}

std::vector<Finding> checkChoice(const Machine& machine) {
    const BusAdapter* const best = bestAdapter(machine);
    if (machine.bus().adapters.size() < 2) return {};
    std::string others;
    for (const BusAdapter& adapter : machine.bus().adapters) {
        if (&adapter != best) others += (others.empty() ? "" : ", ") + shortcoming(adapter);
    }
    const std::string lasting = best->address.empty() ? best->name : best->address;
    return {{Level::note, "'bluez' takes " + nameOf(*best) + ", the best of them: " + others,
             "'--radio bluez:" + lasting + "' takes it whatever else is plugged in"}};
}

/// The kernel's list counts: of adapters with the same address bluetoothd shows one.
std::vector<Finding> checkAddresses(const Machine& machine) {
    std::vector<Finding> findings;
    std::map<std::string, std::string> names;  // by address
    for (const HciAdapter& adapter : machine.controllers().adapters) {
        const std::string address = adapterAddress(addressText(adapter.address));
        if (!address.empty()) names[address] += (names[address].empty() ? "" : " and ") + adapter.name;
    }
    for (const auto& [address, sharing] : names) {
        if (sharing.find(' ') == std::string::npos) continue;
        findings.push_back({Level::remark, sharing + " have the same address " + address + ", as copies of a chip do",
                            "bluetoothd shows only one of them, and the address names either: use adapters of "
                            "different makes"});
    }
    for (const BusAdapter& adapter : machine.bus().adapters) {
        if (!adapter.address.empty()) continue;
        findings.push_back({Level::note, adapter.name + " has no address: it can be named by its number alone",
                            "the number may be another one after the next start or replug"});
    }
    return findings;
}

std::vector<Finding> checkMonitors(const Machine& machine) {
    return eachAdapter(machine, [](const BusAdapter& adapter) -> Finding {
        if (adapter.advertisementMonitors) return {Level::good, adapter.name + " offers advertisement monitors", ""};
        return {Level::note, adapter.name + " offers no advertisement monitors: bluetoothd was started without -E",
                "advisable on every till: sudo systemctl edit bluetooth, and there: [Service] / ExecStart= / "
                "ExecStart=/usr/libexec/bluetooth/bluetoothd -E; no report is then kept back, and the scan outlives "
                "a bluetoothd that hangs"};
    });
}

std::vector<Finding> checkMending(const Machine& machine) {
    if (machine.bus().adapters.empty()) return {};
    if (anyAdapter(machine, &BusAdapter::advertisementMonitors)) {
        return {{Level::good, "a monitor keeps the kernel scanning, whatever becomes of bluetoothd's scan", ""}};
    }
    if (machine.capabilities().netAdmin) {
        return {{Level::good, "a scan that bluetoothd loses is begun again in the kernel", ""}};
    }
    return {{Level::note, "a scan that bluetoothd loses, because it hung or was flooded, stays dead",
             "start bluetoothd with -E, which prevents it, or give the service AmbientCapabilities=CAP_NET_ADMIN, with "
             "which 'bluez' mends it; else sudo systemctl restart bluetooth when it happens"}};
}

std::vector<Finding> checkDiscovery(const Machine& machine) {
    if (!anyAdapter(machine, &BusAdapter::discovering)) return {};
    return {{Level::note, "another program is discovering too; bluetoothd merges what both want",
             "where dongles are missing: a filter of its with Pattern, or with Transport bredr, hides them; end it and "
             "try again"}};
}

std::vector<Finding> checkSomebodyDiscovers(const Machine& machine) {
    if (anyAdapter(machine, &BusAdapter::discovering)) {
        return {{Level::good, "somebody discovers, which 'hci?beside' listens to", ""}};
    }
    // Only a remark: somebody may scan without bluetoothd.
    return {{Level::remark, "nobody discovers, so that 'hci?beside' has nothing to listen to",
             "let another program discover (bluetoothctl scan le), or listen by 'bluez' or 'hci:N'"}};
}

}  // namespace nearcast::cli
