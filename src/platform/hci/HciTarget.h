// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hci/HciPort.h"
#include "platform/radio/Radio.h"
#include "platform/radio/RadioString.h"

#include <optional>
#include <string>

namespace nearcast::hci {

/// Which controller a radio listens to, and how.
struct HciTarget {
    static constexpr int notFound = -1;

    /// Its number. Where it is named by its address: the one under which it was found last, or `notFound`.
    int index = 0;
    /// Its address. Where it is named by its number: the one that it had when it was seen last, or zeros.
    DeviceAddress address{};
    bool byAddress = false;  ///< it is named by its address
    HciAccess access = HciAccess::alone;
    std::string program = "PROGRAM";  ///< the path that the advice on capabilities names

    /// For people: "hci0", "hci0 (00:1A:7D:DA:71:13)" where it is named by its address.
    [[nodiscard]] std::string name() const;
    /// As the kernel and its tools call it: "hci0".
    [[nodiscard]] std::string device() const { return "hci" + std::to_string(index); }
    /// The radio string, without options.
    [[nodiscard]] std::string radio() const;
};

/// Reads `hci`, `hci:N`, `hci:hciN`, `hci:AA:BB:CC:DD:EE:FF`, each with `?beside`.
/// @throws std::invalid_argument for a wrong number or address, an address of zeros, and a value of `beside`
HciTarget parseHciTarget(const RadioString& radio);

/// What the kernel says of the controller that is meant. Its number is noted where it is named by its address, and else
/// its address. An error of ENOTUNIQ: several have that address.
/// @param machine all controllers
HciPort::Asked find(HciTarget& target, const HciAdapterList& machine);

/// Why opening the controller would fail, or must not be tried; nothing: try it.
/// @param asked   what the kernel says of it
/// @param machine all controllers, where they were asked for; one that is missing may be there under another number
std::optional<RadioCondition> obstacle(const HciTarget& target, const HciPort::Asked& asked,
                                       const HciAdapterList& machine = {});

/// Why opening it failed.
/// @param error as `HciPort::Opened` has it, not 0
RadioCondition refusal(const HciTarget& target, const HciAdapter& adapter, const Capabilities& capabilities, int error);

}  // namespace nearcast::hci
