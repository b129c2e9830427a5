// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciTarget.h"

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

int parseIndex(const RadioString& radio) {
    std::string_view text = radio.argument;
    if (text.empty()) return 0;
    if (text.starts_with("hci")) text.remove_prefix(3);
    unsigned index = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), index);
    if (error != std::errc() || end != text.data() + text.size() || index > mostIndex) {
        refuse(radio, "'" + radio.argument + "' is no controller's number, as in hci:0");
    }
    return static_cast<int>(index);
}

std::string textOf(int error) { return std::generic_category().message(error); }

RadioCondition unanswered(const HciTarget& target, int error) {
    switch (error) {
        case ENODEV:
            return {CBManagerStateUnsupported, "there is no " + target.name() + ": plug a Bluetooth adapter in"};
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
                " is in use by the Bluetooth service or another program: stop the service with `sudo systemctl stop "
                "bluetooth`, or switch the controller off with `bluetoothctl power off` (without a service: `sudo "
                "hciconfig " +
                target.name() + " down`), or listen beside them with hci:" + std::to_string(target.index) + "?beside"};
}

}  // namespace

HciTarget parseHciTarget(const RadioString& radio) {
    HciTarget target;
    target.index = parseIndex(radio);
    if (const auto beside = radio.options.find("beside"); beside != radio.options.end()) {
        if (!beside->second.empty()) refuse(radio, "'beside' takes no value");
        target.access = HciAccess::beside;
    }
    return target;
}

std::optional<RadioCondition> obstacle(const HciTarget& target, const HciPort::Asked& asked) {
    if (!asked.adapter) return unanswered(target, asked.error);
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
