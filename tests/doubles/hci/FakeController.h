// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "unit/platform/hciformat/HciBytes.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <vector>

namespace nearcast::hci {

/// A Low Energy controller that behaves: it answers the commands of a passive scan as the Core Specification has it,
/// refuses those that come at the wrong time, and reports only what it has been told to report.
class FakeController {
public:
    bool lowEnergy = true;
    bool classic = false;   ///< it also is of the other kind: Low Energy has to be asked for
    bool extended = false;  ///< it has the extended scan commands
    bool mute = false;      ///< it is dead: no answers, no reports
    bool roomless = false;  ///< its answers leave no room for another command

    /// The next time a command with this opcode comes, it is answered with this error.
    void failNext(std::uint16_t opcode, std::uint8_t status) { failures_[opcode] = status; }

    /// Takes a packet. @return the packets that it answers with
    std::vector<Octets> take(std::span<const std::uint8_t> packet);
    /// The packet that reports an advertisement; nothing when it is not to be reported.
    std::optional<Octets> hear(const LegacyReport& advertisement);

    [[nodiscard]] bool scans() const { return scans_; }
    [[nodiscard]] bool passive() const { return parameters_.type == 0; }
    /// It listens all the time, and not for a part of each interval.
    [[nodiscard]] bool continuous() const { return parameters_.window == parameters_.interval; }
    /// The opcodes of all commands so far.
    [[nodiscard]] const std::vector<std::uint16_t>& commands() const { return commands_; }
    /// How often a command came.
    [[nodiscard]] int count(std::uint16_t opcode) const;
    void reset();

private:
    enum class Family { none, legacy, extended };

    Octets answer(std::uint16_t opcode, std::uint8_t status, const Octets& returned = {}) const;
    std::uint8_t perform(std::uint16_t opcode, std::span<const std::uint8_t> parameters);
    struct Parameters {
        std::uint8_t type = 0;
        std::uint8_t policy = 0;
        unsigned interval = 0;
        unsigned window = 0;
    };
    std::uint8_t setParameters(Family family, const Parameters& parameters);
    std::uint8_t setEnable(Family family, bool enable, bool filter);
    [[nodiscard]] Octets supportedCommands() const;
    [[nodiscard]] bool reports() const;

    std::map<std::uint16_t, std::uint8_t> failures_;
    std::vector<std::uint16_t> commands_;
    std::uint64_t eventMask_ = 0x00001FFFFFFFFFFF;
    std::uint64_t lowEnergyMask_ = 0x1F;
    bool hostHasLowEnergy_ = false;
    Family family_ = Family::none;
    bool parametersSet_ = false;
    Parameters parameters_;
    bool scans_ = false;
    bool filters_ = false;
    std::set<DeviceAddress> reported_;
};

}  // namespace nearcast::hci
