// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "doubles/FakeBluez.h"
#include "platform/bluez/MgmtPort.h"

#include <cstdint>
#include <deque>
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

private:
    std::uint8_t carryOut(std::uint16_t command, const std::string& adapter, std::uint8_t type);
    void answer(std::uint16_t command, std::uint16_t index, std::uint8_t status);

    FakeBluez& bluez_;
    bool open_ = false;
    std::deque<std::vector<std::uint8_t>> messages_;
    std::vector<std::uint8_t> current_;
};

}  // namespace nearcast::bluez
