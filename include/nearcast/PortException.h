// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Export.h>

#include <exception>
#include <string>

namespace nearcast {

/// Thrown by the registration operations of `QXNearcastManager` when they refuse a device.
///
/// The registry is unchanged when it arrives. Beside it the manager's operations throw `std::invalid_argument` for a
/// saved registry of the wrong shape, and `std::system_error` (`resource_deadlock_would_occur`) where a call from a
/// callback would wait for itself; what else they throw comes from the platform or from the memory.
class NEARCAST_EXPORT PortException : public std::exception {
public:
    /// @param name   what was thrown; the manager always says "PortException"
    /// @param reason why the device was refused, in words
    /// @param portName as it was given; empty where it was absent
    /// @param MACAddr  as it was given; empty where it was absent
    PortException(std::string name, std::string reason, std::string portName = {}, std::string MACAddr = {});
    /// Says the same.
    PortException(const PortException&) = default;
    /// Says the same.
    PortException& operator=(const PortException&) = default;
    ~PortException() override;

    /// What was thrown: "PortException".
    [[nodiscard]] const std::string& name() const noexcept { return name_; }
    /// Why the device was refused, in words.
    [[nodiscard]] const std::string& reason() const noexcept { return reason_; }
    /// The port name of the device that was refused; empty where it was absent.
    [[nodiscard]] const std::string& portName() const noexcept { return portName_; }
    /// The address of its dongle; empty where it was absent.
    [[nodiscard]] const std::string& MACAddr() const noexcept { return MACAddr_; }
    /// The same text as `reason()`.
    [[nodiscard]] const char* what() const noexcept override { return reason_.c_str(); }

private:
    std::string name_;
    std::string reason_;
    std::string portName_;
    std::string MACAddr_;
};

}  // namespace nearcast
