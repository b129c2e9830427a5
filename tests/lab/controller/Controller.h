// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/controller/Bytes.h"
#include "lab/controller/Dongle.h"
#include "lab/controller/Scan.h"

#include <map>
#include <optional>
#include <span>

namespace nearcast::lab {

/// What the controller is made as.
struct ControllerKind {
    Address address{0x00, 0xaa, 0x01, 0x00, 0x00, 0x01};
    bool extended = false;  ///< knows the extended scan commands, which hosts then have to use
    bool classic = false;   ///< has no Low Energy, and so hears nothing
};

/// The command side of a controller that is LE-only, or classic: answers each HCI command, and knows what its scanner
/// has been told to do. As small as Linux and a scanning host need; what it does not know it refuses as a controller
/// does.
class Controller {
public:
    explicit Controller(ControllerKind kind);

    /// @param packet opcode, parameter length, parameters; no packet indicator
    /// @return the event that answers it: event code, length, parameters; nothing for what is no command
    std::optional<Bytes> answer(std::span<const std::uint8_t> packet);

    [[nodiscard]] const Scan& scan() const { return scan_; }
    /// Commands that were refused because this controller does not know them: opcode and how often.
    [[nodiscard]] const std::map<unsigned, unsigned>& unknown() const { return unknown_; }

private:
    using Parameters = std::span<const std::uint8_t>;

    std::optional<Packet> read(unsigned opcode) const;
    [[nodiscard]] std::optional<Packet> advertiseExtended(unsigned opcode) const;
    std::optional<Packet> change(unsigned opcode, Parameters parameters);
    Packet setScanParameters(Parameters parameters, bool extended);
    Packet setScanEnable(Parameters parameters, bool extended);

    const ControllerKind kind_;
    Scan scan_;
    std::map<unsigned, unsigned> unknown_;
};

}  // namespace nearcast::lab
