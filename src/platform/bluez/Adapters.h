// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/SystemBus.h"

#include <filesystem>
#include <map>
#include <string>
#include <string_view>

namespace nearcast::bluez {

/// "hci0" of "/org/bluez/hci0".
std::string_view adapterName(std::string_view path);

/// hci2 comes before hci10.
struct AdapterOrder {
    using is_transparent = void;
    bool operator()(std::string_view left, std::string_view right) const {
        return left.size() != right.size() ? left.size() < right.size() : left < right;
    }
};

/// How good an adapter is to hear dongles with. One without Low Energy never hears any; one that is off may be switched
/// on.
constexpr int worthOf(bool lowEnergy, bool powered) noexcept { return (lowEnergy ? 2 : 0) + (powered ? 1 : 0); }

/// What bluetoothd says of one adapter.
struct Adapter {
    bool powered = false;
    bool discovering = false;
    PowerState powerState = PowerState::unknown;
    bool monitors = false;  ///< takes advertisement monitors
    bool lowEnergy = true;  ///< it can hear dongles; one of which bluetoothd does not say so may
    std::string address;    ///< "00:1A:7D:DA:71:13"; empty: it has none
};

/// The adapters that BlueZ shows, and which of them is ours. Not for several threads at once.
class Adapters {
public:
    /// @param wanted "hci1" or an address; empty: the best one
    explicit Adapters(std::string wanted);

    /// @return false where there are more than any machine has
    bool add(std::string_view path, const AdapterNews& news);
    /// News of an unknown one are dropped.
    void change(std::string_view path, const AdapterNews& news);
    void offerMonitors(std::string_view path);
    void remove(std::string_view path);
    void clear();
    /// All are known now: takes the best one, whichever was told first.
    void chooseAnew();

    [[nodiscard]] const std::string& wanted() const noexcept { return wanted_; }
    /// The path of ours, or empty: the best of those that are wanted (`worthOf`). Of equals ours is kept, else the one
    /// of the lowest number is taken.
    [[nodiscard]] const std::string& chosen() const noexcept { return chosen_; }
    /// Ours; null where there is none.
    [[nodiscard]] const Adapter* current() const;
    /// The names of all, in order, separated by commas; where one is wanted by its address, with theirs.
    [[nodiscard]] std::string names() const;
    /// Where the adapter is now that first had the wanted number: "hci2 now (bluez:00:1A:7D:DA:71:13 follows it)".
    /// Empty while it has that number, and where it is not known or not there.
    [[nodiscard]] std::string renumbered() const;

private:
    static constexpr std::size_t most = 64;

    using Map = std::map<std::string, Adapter, AdapterOrder>;

    [[nodiscard]] bool isWanted(const Map::value_type& entry) const;
    void note(const Map::value_type& entry);
    void choose();

    const std::string wanted_;
    const bool byAddress_;
    Map adapters_;
    std::string chosen_;
    std::string first_;  ///< the address of the adapter that first had the wanted number
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
