// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciTarget.h"

#include "platform/radio/AdapterName.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <stdexcept>
#include <system_error>

namespace nearcast::hci {

namespace {

constexpr unsigned mostIndex = 0xFFFE;  // 0xFFFF is the kernel's word for none

[[noreturn]] void refuse(const RadioString& radio, const std::string& why) {
    throw std::invalid_argument("radio '" + radio.text + "': " + why);
}

std::optional<int> readIndex(std::string_view text) {
    if (text.starts_with("hci")) text.remove_prefix(3);
    unsigned index = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), index);
    if (error != std::errc() || end != text.data() + text.size() || index > mostIndex) return std::nullopt;
    return static_cast<int>(index);
}

void parseController(const RadioString& radio, HciTarget& target) {
    if (radio.argument.empty()) return;
    if (const auto index = readIndex(radio.argument)) {
        target.index = *index;
        return;
    }
    const auto address = readAdapterAddress(radio.argument);
    if (!address) {
        refuse(radio, "'" + radio.argument +
                          "' is neither a controller's number, as in hci:0, nor its address, as in "
                          "hci:00:1A:7D:DA:71:13");
    }
    if (!namesAdapter(*address)) {
        refuse(radio, "an address of zeros names no controller; name it by its number, as in hci:0");
    }
    target.address = *address;
    target.byAddress = true;
    target.index = HciTarget::notFound;
}

std::string textOf(int error) { return std::generic_category().message(error); }

/// "hci0 (00:1A:7D:DA:71:13)".
std::string nameOf(const HciAdapter& adapter) {
    return adapter.name + " (" +
           (namesAdapter(adapter.address) ? adapterAddressText(adapter.address) : "its address is not known") + ")";
}

template <class Fits>
std::string namesOf(const HciAdapterList& machine, const char* between, Fits fits) {
    std::string names;
    for (const HciAdapter& adapter : machine.adapters) {
        if (fits(adapter)) names += (names.empty() ? "" : between) + nameOf(adapter);
    }
    return names;
}

RadioCondition missing(const HciTarget& target, const HciAdapterList& machine) {
    const std::string address = adapterAddressText(target.address);
    if (target.byAddress) {
        const std::string others = namesOf(machine, ", ", [](const HciAdapter&) { return true; });
        return {CBManagerStateUnsupported, "there is no controller with the address " + address + ": plug it in" +
                                               (others.empty() ? "" : "; there is " + others)};
    }
    const auto now = std::find_if(machine.adapters.begin(), machine.adapters.end(), [&](const HciAdapter& one) {
        return namesAdapter(target.address) && one.address == target.address;
    });
    if (now == machine.adapters.end()) {
        return {CBManagerStateUnsupported, "there is no " + target.name() + ": plug a Bluetooth adapter in"};
    }
    return {CBManagerStateUnsupported, "there is no " + target.name() + ": the controller that had this number is " +
                                           now->name + " now; the radio hci:" + address +
                                           " finds it under every number"};
}

RadioCondition ambiguous(const HciTarget& target, const HciAdapterList& machine) {
    const auto same = [&](const HciAdapter& adapter) { return adapter.address == target.address; };
    return {CBManagerStateUnsupported, "several controllers have the address " + adapterAddressText(target.address) +
                                           ": " + namesOf(machine, ", ", same) +
                                           "; name the one that is meant by its number, as in hci:0"};
}

RadioCondition unanswered(const HciTarget& target, int error, const HciAdapterList& machine = {}) {
    switch (error) {
        case ENODEV: return missing(target, machine);
        case ENOTUNIQ: return ambiguous(target, machine);
        case EAFNOSUPPORT:
        case EPROTONOSUPPORT:
            return {CBManagerStateUnsupported,
                    "this system has no Bluetooth sockets: load the kernel's module with `sudo modprobe bluetooth`; a "
                    "container needs the network and the system calls of its host"};
        case EPERM:
        case EACCES:
            return {CBManagerStateUnauthorized,
                    "this program may not open Bluetooth sockets (" + textOf(error) +
                        "): a container or a service's sandbox forbids it (systemd: RestrictAddressFamilies)"};
        default:
            return {CBManagerStateResetting, "the kernel does not tell of " + target.name() + ": " + textOf(error)};
    }
}

RadioCondition blocked(const HciTarget& target, const HciBlock& block) {
    if (block.hard) return {CBManagerStatePoweredOff, target.name() + " is blocked by a switch of this machine"};
    return {CBManagerStatePoweredOff, target.name() + " is blocked: unblock it with `rfkill unblock bluetooth`"};
}

RadioCondition forbidden(const HciTarget& target, const Capabilities& capabilities) {
    const bool alone = target.access == HciAccess::alone;
    const std::string needed = alone ? "CAP_NET_ADMIN" : "CAP_NET_RAW";
    const std::string wanted = alone ? "take " + target.name() + " for itself" : "hear beside others";
    if (alone ? capabilities.netAdmin : capabilities.netRaw) {
        return {CBManagerStateUnauthorized, "this program may not " + wanted + " although it has " + needed +
                                                ": a container has it for itself only; run it outside"};
    }
    return {CBManagerStateUnauthorized, "this program may not " + wanted + " without " + needed +
                                            ": allow it with `sudo setcap cap_net_raw,cap_net_admin+eip " +
                                            target.program + "`"};
}

RadioCondition busy(const HciTarget& target, const HciAdapter& adapter) {
    if (!adapter.up) return {CBManagerStateResetting, target.name() + " is being set up by the kernel"};
    return {CBManagerStateUnauthorized,
            target.name() +
                " is in use by the Bluetooth service or another program: stop the service with `sudo systemctl "
                "disable --now bluetooth`, or keep it from switching controllers on with AutoEnable=false below "
                "[Policy] in /etc/bluetooth/main.conf and `sudo systemctl restart bluetooth` (`bluetoothctl power off` "
                "alone lasts until the service starts or the controller is plugged in again; without a service: `sudo "
                "hciconfig " +
                target.device() + " down`), or listen beside them with " + target.radio() + "?beside"};
}

}  // namespace

std::string HciTarget::name() const {
    if (!byAddress) return device();
    const std::string text = adapterAddressText(address);
    return index == notFound ? "the controller " + text : device() + " (" + text + ")";
}

std::string HciTarget::radio() const {
    return "hci:" + (byAddress ? adapterAddressText(address) : std::to_string(index));
}

HciTarget parseHciTarget(const RadioString& radio) {
    HciTarget target;
    parseController(radio, target);
    if (const auto beside = radio.options.find("beside"); beside != radio.options.end()) {
        if (!beside->second.empty()) refuse(radio, "'beside' takes no value");
        target.access = HciAccess::beside;
    }
    return target;
}

HciPort::Asked find(HciTarget& target, const HciAdapterList& machine) {
    if (machine.error != 0) return {std::nullopt, machine.error};
    const HciAdapter* found = nullptr;
    for (const HciAdapter& adapter : machine.adapters) {
        if (target.byAddress ? adapter.address != target.address : adapter.index != target.index) continue;
        if (found != nullptr) return {std::nullopt, ENOTUNIQ};
        found = &adapter;
    }
    if (found == nullptr) return {std::nullopt, ENODEV};
    target.index = found->index;
    if (namesAdapter(found->address)) target.address = found->address;
    return {*found, 0};
}

std::optional<RadioCondition> obstacle(const HciTarget& target, const HciPort::Asked& asked,
                                       const HciAdapterList& machine) {
    if (!asked.adapter) return unanswered(target, asked.error, machine);
    const HciAdapter& adapter = *asked.adapter;
    // The kernel refuses a blocked controller only after it has told all programs that the controller is gone.
    if (adapter.blocked) return blocked(target, adapter.blocked);
    if (adapter.lowEnergy == false) {
        return RadioCondition{CBManagerStateUnsupported,
                              target.name() + " is a controller without Bluetooth Low Energy"};
    }
    if (target.access == HciAccess::beside && !adapter.up) {
        return RadioCondition{CBManagerStatePoweredOff,
                              target.name() + " is switched off: switch it on with `bluetoothctl power on`"};
    }
    return std::nullopt;
}

RadioCondition refusal(const HciTarget& target, const HciAdapter& adapter, const Capabilities& capabilities,
                       int error) {
    switch (error) {
        case ENODEV: return unanswered(target, error);
        case EPERM:
        case EACCES: return forbidden(target, capabilities);
        case EBUSY: return busy(target, adapter);
        case EUSERS:
            return {CBManagerStateUnauthorized,
                    "another program has " + target.name() + " for itself: end that program first"};
        case ERFKILL: return blocked(target, adapter.blocked);
        default: return {CBManagerStateResetting, target.name() + " cannot be opened: " + textOf(error)};
    }
}

}  // namespace nearcast::hci
