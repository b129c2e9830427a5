// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace nearcast::bluez {

enum class Block { none, soft, hard };

/// What the kernel's switches for radios say (Linux, Documentation/ABI/stable/sysfs-class-rfkill).
class Rfkill {
public:
    /// @param folder where the switches are; another one in tests
    explicit Rfkill(std::filesystem::path folder = "/sys/class/rfkill") : folder_(std::move(folder)) {}
    virtual ~Rfkill() = default;

    /// Whether a switch keeps the adapter off: its own, or one for all Bluetooth of the machine, as laptops have. Where
    /// it cannot be read, nothing is blocked.
    /// @param adapter "hci0"
    [[nodiscard]] virtual Block blockOf(std::string_view adapter) const;

private:
    const std::filesystem::path folder_;
};

}  // namespace nearcast::bluez
