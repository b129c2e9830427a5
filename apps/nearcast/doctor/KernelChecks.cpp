// SPDX-License-Identifier: Apache-2.0
#include "doctor/Checks.h"
#include "machine/Facts.h"

#include <algorithm>

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

bool hasAdapters(const Machine& machine) {
    const auto adapters = kernelAdapters(machine);
    return adapters && !adapters->empty();
}

Finding missing(const std::string& capability, const std::string& use) {
    return {
        Level::fault, "without " + capability + ", so " + use,
        "sudo setcap cap_net_raw,cap_net_admin+eip \"$(command -v nearcast)\" (or your program), or run it as root"};
}

}  // namespace

std::vector<Finding> checkKernel(const Machine& machine) {
    const std::string release = machine.file("/proc/sys/kernel/osrelease").value_or("of an unknown release\n");
    const std::string name = "Linux " + release.substr(0, release.find('\n'));
    if (machine.folder("/sys/class/bluetooth")) return {{Level::good, name + " with Bluetooth", ""}};
    return {{Level::fault, name + " without Bluetooth: the module 'bluetooth' is not loaded",
             "sudo modprobe bluetooth btusb; in a container or a virtual machine the host must pass its adapter on"}};
}

std::vector<Finding> checkDrivers(const Machine& machine) {
    std::vector<std::string> loaded;
    for (const char* driver : drivers) {
        if (machine.folder(std::string("/sys/module/") + driver)) loaded.emplace_back(driver);
    }
    if (!loaded.empty()) return {{Level::good, joined(loaded), ""}};
    if (hasAdapters(machine)) return {{Level::note, "none of those that are usual", ""}};
    return {{Level::fault, "no driver of Bluetooth controllers is loaded",
             "sudo modprobe btusb (a dongle or card on USB) or hci_uart (a chip on a serial line)"}};
}

std::vector<Finding> checkAdapters(const Machine& machine) {
    if (hasAdapters(machine)) return {{Level::good, joined(*kernelAdapters(machine)), ""}};
    return {{Level::fault, "the kernel knows no Bluetooth adapter",
             "plug one in; if it is in, 'sudo dmesg | grep -i -e bluetooth -e firmware' tells what it lacks"}};
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
    if (socketCapabilities(machine).netAdmin) return {{Level::good, "CAP_NET_ADMIN is there", ""}};
    return {missing("CAP_NET_ADMIN", "'hci' cannot take a controller")};
}

std::vector<Finding> checkListening(const Machine& machine) {
    if (socketCapabilities(machine).netRaw) return {{Level::good, "CAP_NET_RAW is there", ""}};
    return {missing("CAP_NET_RAW", "'hci' would hear nothing")};
}

}  // namespace nearcast::cli
