// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/SystemBus.h"

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace nearcast::bluez {

/// "hci0" of "/org/bluez/hci0".
std::string_view adapterName(std::string_view path);

/// What bluetoothd says of one adapter.
struct Adapter {
    bool powered = false;
    bool discovering = false;
    PowerState powerState = PowerState::unknown;
    bool monitors = false;  ///< takes advertisement monitors
};

/// The adapters that BlueZ shows, and which of them is ours. Not for several threads at once.
class Adapters {
public:
    /// @param wanted "hci1", or empty for the first that is powered
    explicit Adapters(std::string wanted) : wanted_(std::move(wanted)) {}

    /// @return false where there are more than any machine has
    bool add(std::string_view path, const AdapterNews& news);
    /// News of an unknown one are dropped.
    void change(std::string_view path, const AdapterNews& news);
    void offerMonitors(std::string_view path);
    void remove(std::string_view path);
    void clear();
    /// All are known now: takes the first powered one, whichever was told first.
    void chooseAnew();

    [[nodiscard]] const std::string& wanted() const noexcept { return wanted_; }
    /// The path of ours, or empty: the wanted one; where none is named, the one that was ours while it is powered, else
    /// the first powered one, else the first.
    [[nodiscard]] const std::string& chosen() const noexcept { return chosen_; }
    /// Ours; null where there is none.
    [[nodiscard]] const Adapter* current() const;
    /// The names of all, in order, separated by commas.
    [[nodiscard]] std::string names() const;

private:
    /// hci2 comes before hci10.
    struct Order {
        using is_transparent = void;
        bool operator()(std::string_view left, std::string_view right) const {
            return left.size() != right.size() ? left.size() < right.size() : left < right;
        }
    };
    static constexpr std::size_t most = 64;

    void choose();

    const std::string wanted_;
    std::map<std::string, Adapter, Order> adapters_;
    std::string chosen_;
};

enum class Block { none, soft, hard };

/// What the kernel's switches for radios say (Linux, Documentation/ABI/stable/sysfs-class-rfkill).
class Rfkill {
public:
    /// @param folder where the switches are; another one in tests
    explicit Rfkill(std::filesystem::path folder = "/sys/class/rfkill") : folder_(std::move(folder)) {}
    virtual ~Rfkill() = default;

    /// Whether a switch keeps the adapter off: its own, or one for all Bluetooth of the machine, as laptops have. A
    /// switch that cannot be read does not count.
    /// @param adapter "hci0"
    [[nodiscard]] virtual Block blockOf(std::string_view adapter) const;

private:
    const std::filesystem::path folder_;
};

}  // namespace nearcast::bluez
