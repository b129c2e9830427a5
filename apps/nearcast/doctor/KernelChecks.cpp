// SPDX-License-Identifier: Apache-2.0
#include "common/Words.h"
#include "doctor/Checks.h"
#include "machine/Facts.h"
#include "platform/bluez/BluezAdapterService.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace nearcast::cli {

namespace {

// The kernel's drivers of Bluetooth controllers (linux, drivers/bluetooth/).
constexpr const char* drivers[] = {"btusb",     "hci_uart",  "btsdio",       "btmrvl_sdio", "btmtksdio", "btmtkuart",
                                   "btnxpuart", "btqcomsmd", "btintel_pcie", "virtio_bt",   "hci_vhci",  "hci_bcm4377"};

std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts) all += (all.empty() ? "" : ", ") + text;
    return all;
}

/// One that has not been asked yet may have it.
bool hasLowEnergy(const HciAdapter& adapter) { return adapter.lowEnergy.value_or(true); }

std::string nameOf(const HciAdapter& adapter) {
    const bool asked = adapter.address != DeviceAddress{};  // the kernel asks a controller when it first wakes it
    return adapter.name + " (" + (asked ? addressText(adapter.address) + ", " : "") + std::string(adapter.bus) + ")";
}

constexpr const char* keepOff =
    "sudo systemctl disable --now bluetooth; or, if it serves others, AutoEnable=false below [Policy] in "
    "/etc/bluetooth/main.conf and sudo systemctl restart bluetooth";

bool bluetoothdSwitchesOn(const Machine& machine) {
    return machine.bus().bluetoothd && bluez::isAutoEnable(machine.file(bluez::configurationFile).value_or(""));
}

Finding missing(const Machine& machine, const std::string& capability, const std::string& use) {
    return {Level::fault, "without " + capability + ", so " + use,
            "sudo setcap cap_net_raw,cap_net_admin+eip " + machine.program() + ", or run it as root"};
}

}  // namespace

std::vector<Finding> checkKernel(const Machine& machine) {
    const std::string release = machine.file("/proc/sys/kernel/osrelease").value_or("of an unknown release\n");
    const std::string name = "Linux " + release.substr(0, release.find('\n'));
    const int error = machine.controllers().error;
    if (error == 0) return {{Level::good, name + " with Bluetooth", ""}};
    if (error != EAFNOSUPPORT && error != EPROTONOSUPPORT) {
        return {{Level::fault, name + " does not say which adapters it has: " + std::strerror(error),
                 "a sandbox or a container may forbid Bluetooth sockets: try it outside"}};
    }
    return {{Level::fault, name + " without Bluetooth: the module 'bluetooth' is not loaded",
             "sudo modprobe bluetooth btusb; in a container or a virtual machine the host must pass its adapter on"}};
}

std::vector<Finding> checkDrivers(const Machine& machine) {
    std::vector<std::string> loaded;
    for (const char* driver : drivers) {
        if (machine.folder(std::string("/sys/module/") + driver)) loaded.emplace_back(driver);
    }
    if (!loaded.empty()) return {{Level::good, joined(loaded), ""}};
    if (!machine.controllers().adapters.empty()) return {{Level::note, "none of those that are usual", ""}};
    return {{Level::fault, "no driver of Bluetooth controllers is loaded",
             "sudo modprobe btusb (a dongle or card on USB) or hci_uart (a chip on a serial line)"}};
}

std::vector<Finding> checkAdapters(const Machine& machine) {
    const auto& adapters = machine.controllers().adapters;
    if (adapters.empty()) {
        return {{Level::fault, "the kernel knows no Bluetooth adapter",
                 "plug one in; if it is in, 'sudo dmesg | grep -i -e bluetooth -e firmware' tells what it lacks"}};
    }
    const bool one = std::any_of(adapters.begin(), adapters.end(), [](const auto& any) { return hasLowEnergy(any); });
    std::vector<Finding> findings;
    for (const HciAdapter& adapter : adapters) {
        if (hasLowEnergy(adapter)) {
            findings.push_back({Level::good, nameOf(adapter), ""});
        } else {
            findings.push_back({one ? Level::note : Level::fault, nameOf(adapter) + " cannot listen to Low Energy",
                                "use an adapter of Bluetooth 4.0 or later"});
        }
    }
    return findings;
}

std::vector<Finding> checkSwitches(const Machine& machine) {
    const auto switches = bluetoothSwitches(machine);
    const bool oneIsOpen =
        std::any_of(switches.begin(), switches.end(), [](const RadioSwitch& one) { return !one.blocked(); });
    const Level level = oneIsOpen ? Level::remark : Level::fault;
    std::vector<Finding> findings;
    for (const RadioSwitch& one : switches) {
        if (one.hard) {
            findings.push_back({level, one.name + " is switched off by a switch, a key or the firmware",
                                "switch wireless on at the machine, or in its firmware's set-up"});
        } else if (one.soft) {
            findings.push_back({level, one.name + " is blocked", "sudo rfkill unblock bluetooth"});
        }
    }
    if (findings.empty()) return {{Level::good, "nothing is blocked", ""}};
    return findings;
}

std::vector<Finding> checkTaking(const Machine& machine) {
    if (machine.capabilities().netAdmin) return {{Level::good, "CAP_NET_ADMIN is there", ""}};
    return {missing(machine, "CAP_NET_ADMIN", "'hci:N' cannot take a controller")};
}

std::vector<Finding> checkListening(const Machine& machine) {
    if (machine.capabilities().netRaw) return {{Level::good, "CAP_NET_RAW is there", ""}};
    return {missing(machine, "CAP_NET_RAW", "'hci:N?beside' would hear nothing")};
}

std::vector<Finding> checkUse(const Machine& machine) {
    std::vector<Finding> findings;
    const bool switchedOn = bluetoothdSwitchesOn(machine);
    for (const HciAdapter& adapter : machine.controllers().adapters) {
        if (const auto fault = inUse(adapter)) {
            findings.push_back(*fault);
        } else if (switchedOn) {
            findings.push_back({Level::remark,
                                "bluetoothd switches " + adapter.name +
                                    " on by itself when it starts or the adapter is plugged in, and then it cannot be "
                                    "taken",
                                keepOff});
        }
    }
    return findings;
}

std::optional<Finding> inUse(const HciAdapter& adapter) {
    if (!adapter.up) return std::nullopt;
    return Finding{Level::fault, adapter.name + " is in use, most likely by bluetoothd",
                   std::string(keepOff) + "; or listen by 'bluez'"};
}

}  // namespace nearcast::cli
