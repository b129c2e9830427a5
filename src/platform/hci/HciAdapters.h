// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/AdvertisingReport.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::hci {

/// Whether a controller is kept from sending and hearing (the kernel's rfkill; Documentation/ABI/stable/sysfs-class-
/// rfkill): both may be.
struct HciBlock {
    bool soft = false;  ///< by a program; `rfkill unblock` lifts it
    bool hard = false;  ///< by a switch of the machine
    explicit operator bool() const noexcept { return soft || hard; }
};

/// A Bluetooth controller as the kernel knows it.
struct HciAdapter {
    int index = 0;            ///< its number: 0 for hci0
    std::string name;         ///< "hci0"
    DeviceAddress address{};  ///< zeros until the kernel has asked the controller
    std::string_view bus;     ///< how it is attached: "USB", "UART", "virtual", ...
    bool up = false;          ///< in use; one that only the kernel keeps on after it was plugged in counts as down
    std::optional<bool> lowEnergy;  ///< whether it has Bluetooth Low Energy; nothing: it has not been asked
    HciBlock blocked;
};

/// The controllers of this machine, ordered by number. Needs no capability. From any thread.
struct HciAdapterList {
    std::vector<HciAdapter> adapters;
    /// Why the kernel cannot be asked, as `errno` has it; 0 when it answered. EAFNOSUPPORT: it has no Bluetooth.
    int error = 0;
};
HciAdapterList hciAdapters();

/// One of them.
/// @param error as in `HciAdapterList`; ENODEV when there is none of that number
std::optional<HciAdapter> hciAdapter(int index, int& error);

/// Whether other devices are connected by way of a controller.
bool hciHasLinks(int index);

/// Whether a controller is blocked.
/// @param controllers the folder of the kernel's controllers
HciBlock hciBlock(std::string_view name, const std::string& controllers = "/sys/class/bluetooth");

/// Reads the kernel's answer to HCIGETDEVINFO, a `struct hci_dev_info` (include/net/bluetooth/hci_sock.h). It does not
/// say whether the controller is blocked.
inline constexpr std::size_t hciDeviceInfoOctets = 92;
HciAdapter readHciDeviceInfo(const std::uint8_t (&info)[hciDeviceInfoOctets]);

/// What a process may do with controllers. The kernel asks for these in the machine's own user namespace: a process in
/// a container may have them and still be refused.
struct Capabilities {
    bool netAdmin = false;  ///< CAP_NET_ADMIN: may take a controller alone
    bool netRaw = false;    ///< CAP_NET_RAW: may hear events beside other programs
};

/// The effective ones of the calling thread; none where the file cannot be read. From any thread.
/// @param status a file as proc(5) describes /proc/PID/status
Capabilities ownCapabilities(const std::string& status = "/proc/thread-self/status");

/// The path of the running program, for advice on how to give it capabilities; "PROGRAM" where it is not known.
std::string ownProgram();

}  // namespace nearcast::hci
