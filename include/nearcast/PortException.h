// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Export.h>

#include <exception>
#include <string>

namespace nearcast {

/// Thrown by the registration operations of `QXNearcastManager` when they refuse a device.
///
/// The registry is unchanged when it arrives. It is the only exception that the manager makes itself;
/// all others come from the platform and pass through.
class NEARCAST_EXPORT PortException : public std::exception {
public:
    /// @param name   what was thrown; the manager always says "PortException"
    /// @param reason why the device was refused, in words
    PortException(std::string name, std::string reason);
    PortException(const PortException&) = default;
    PortException& operator=(const PortException&) = default;
    ~PortException() override;

    [[nodiscard]] const std::string& name() const noexcept { return name_; }
    [[nodiscard]] const std::string& reason() const noexcept { return reason_; }
    /// The same text as `reason()`.
    [[nodiscard]] const char* what() const noexcept override { return reason_.c_str(); }

private:
    std::string name_;
    std::string reason_;
};

}  // namespace nearcast
