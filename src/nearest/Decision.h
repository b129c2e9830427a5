// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "nearest/Device.h"
#include "nearest/Surroundings.h"

#include <nearcast/Nearest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace nearcast::nearest {

/// The decision without threads, clock and callbacks: each event comes with its time in seconds, and there is a choice
/// at every moment. A time before the latest one counts as the latest one. One thread at a time.
///
/// A reading costs a look-up. Devices are compared at most four times a second, and only those that are heard.
class Decision {
public:
    /// How often devices are compared while events come, in seconds.
    static constexpr double step = 0.25;

    /// @throws std::invalid_argument as `NearestSettings::validate`
    explicit Decision(const NearestSettings& settings);

    /// @name What happens
    /// @{

    /// A registry to decide by. Devices that stay (same port, same address) keep what is known of them. Of several
    /// records with one address the first counts.
    void setRegistry(double at, const Settings& registry);
    /// A raw reading in dBm. An address that is not registered is ignored; a value that no controller may report (above
    /// 20 dBm, 127 included) only keeps a device from falling silent.
    void heard(double at, std::string_view MACAddr, std::int32_t RSSI);
    /// A smoothed report of the manager in dBm.
    void reported(double at, std::string_view MACAddr, std::int32_t RSSI);
    /// The same, with the port that the manager has for the address.
    /// @return false when that differs from the registry known here; then nothing is done
    bool reported(double at, std::string_view portName, std::string_view MACAddr, std::int32_t RSSI);
    /// Whether the radio can hear, and since when.
    void setRadio(double at, bool hears, double since);
    /// Time passes.
    void pass(double at);
    /// @}

    /// Whether the chosen device would be dropped as silent at that time. The radio should be asked first: it may be
    /// the radio that is silent.
    [[nodiscard]] bool wouldFallSilent(double at) const;

    [[nodiscard]] NearestChoice choice() const;
    /// The chosen device; null if there is none.
    [[nodiscard]] const Device* chosen() const { return present_ == none ? nullptr : &devices_[present_]; }
    /// All of them, in the registry's order.
    [[nodiscard]] const std::vector<Device>& devices() const noexcept { return devices_; }
    [[nodiscard]] bool stale() const;
    /// Grows with each change of the chosen device or of its staleness.
    [[nodiscard]] std::uint64_t changes() const noexcept { return changes_; }
    [[nodiscard]] std::vector<NearestExplanation> explain(double at) const;
    [[nodiscard]] const NearestSettings& settings() const noexcept { return settings_; }

private:
    using Index = std::size_t;
    static constexpr Index none = std::numeric_limits<Index>::max();
    /// A device that fell silent while it was chosen.
    struct Missed {
        Index device;
        double level;  ///< in dBm, when it was heard last
        double at;     ///< when it was silent for long enough, noticed or not
    };
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>{}(text); }
    };

    struct Roll;
    using ByAddress = std::unordered_map<std::string, Index, TextHash, std::equal_to<>>;

    Device* find(std::string_view MACAddr);
    [[nodiscard]] Roll rollOf(double now, const Settings& registry) const;
    Device fromRecord(const std::string& portName, const SettingRecord& record) const;
    void restoreMissed(const std::optional<Device>& missed);
    void restoreChoice(double at, const std::optional<Device>& last);

    double advance(double at);
    void arrive(Device& device, double at);
    void keepAlive(Device& device, double at);
    void compare(double at, double elapsed);
    void dropSilent(double at);
    void forgetMissed(double at);
    void learnPlace(double elapsed);
    void addUpLeads(double at, double elapsed);
    void leave(double at);
    void enter(double at, NearestRule rule);
    void follow(double at);
    void endStale(double at);
    void choose(Index device, double at, NearestRule rule);
    void noteStaleness();

    [[nodiscard]] bool isSilent(const Device& device, double at) const;
    [[nodiscard]] double waitsForMissed(const Device& device, double at) const;
    [[nodiscard]] Index strongest(Index but) const;
    [[nodiscard]] Index strongestInside(Index but, double at) const;
    [[nodiscard]] NearestExplanation explain(const Device& device, double at) const;
    [[nodiscard]] std::string met(const Device& device, double at) const;
    [[nodiscard]] std::string missing(const Device& device, double at) const;

    NearestSettings settings_;
    std::vector<Device> devices_;  ///< in the registry's order
    ByAddress byAddress_;          ///< the devices that have a dongle, the first of each address
    std::vector<Index> audible_;   ///< the devices that are not silent, in any order; with room for all

    double now_ = -std::numeric_limits<double>::infinity();
    double compared_ = -std::numeric_limits<double>::infinity();  ///< when the devices were compared last
    bool hears_ = true;
    double radioSince_ = -std::numeric_limits<double>::infinity();

    Index present_ = none;
    NearestRule rule_ = NearestRule::noneInside;
    double since_ = -std::numeric_limits<double>::infinity();  ///< of the choice
    bool stale_ = false;
    std::optional<Missed> missed_;
    Surroundings surroundings_;
    std::uint64_t changes_ = 0;
};

}  // namespace nearcast::nearest
