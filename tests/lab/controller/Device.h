// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/controller/Bytes.h"

#include <functional>
#include <span>

namespace nearcast::lab {

/// Where a controller is plugged in.
class Device {
public:
    virtual ~Device() = default;
    /// A command has come from the host: opcode, parameter length, parameters.
    using CommandSink = std::function<void(std::span<const std::uint8_t> command)>;

    /// @return the number that the host gave it: 0 for hci0
    /// @throws std::system_error
    virtual unsigned plug() = 0;
    virtual void unplug() = 0;
    [[nodiscard]] virtual bool plugged() const = 0;
    /// @param event event code, length, parameters
    virtual void send(std::span<const std::uint8_t> event) = 0;
};

}  // namespace nearcast::lab
