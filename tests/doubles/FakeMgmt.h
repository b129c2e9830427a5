// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "doubles/FakeBluez.h"
#include "platform/bluez/MgmtPort.h"

#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace nearcast::bluez {

/// The kernel beneath a `FakeBluez`, as a socket on its management channel shows it: in the time of that, with the real
/// octets. Without privileges it takes commands and refuses them, and tells nothing.
class FakeMgmt : public MgmtPort {
public:
    explicit FakeMgmt(FakeBluez& bluez);

    /// @name The world
    /// @{
    bool privileged = false;
    int openError = 0;                    ///< what opening fails with
    int receiveError = 0;                 ///< what the next reading fails with
    bool mute = false;                    ///< it takes commands and does not answer
    bool eventFirst = false;              ///< the news of a beginning comes before the answer to the command
    std::uint8_t otherType = 0;           ///< what runs is of this type: only a stop of the same type ends it
    std::vector<std::uint16_t> commands;  ///< that were sent, but for questions
    bool counts = true;                   ///< it says how many events there were
    int opened = 0;                       ///< how often
    [[nodiscard]] bool readable() const { return open_ && (receiveError != 0 || !messages_.empty()); }
    /// A message of any kind comes.
    void tell(std::vector<std::uint8_t> message);
    /// @}

    int open() override;
    void close() override;
    int send(std::span<const std::uint8_t> command) override;
    Received receive() override;
    [[nodiscard]] int descriptor() const override { return open_ ? 1 : -1; }
    [[nodiscard]] std::optional<std::uint32_t> events(std::uint16_t adapter) const override {
        return counts ? bluez_.events("hci" + std::to_string(adapter)) : std::nullopt;
    }

private:
    std::uint8_t carryOut(std::uint16_t command, const std::string& adapter, std::uint8_t type);
    void answer(std::uint16_t command, std::uint16_t index, std::uint8_t status);

    FakeBluez& bluez_;
    bool open_ = false;
    std::deque<std::vector<std::uint8_t>> messages_;
    std::vector<std::uint8_t> current_;
};

}  // namespace nearcast::bluez
