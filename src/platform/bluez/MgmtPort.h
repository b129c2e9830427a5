// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace nearcast::bluez {

/// A socket on the channel by which the kernel's Bluetooth controllers are managed (BlueZ, doc/mgmt-api.txt), the one
/// that bluetoothd itself speaks on. It never blocks. One thread at a time.
class MgmtPort {
public:
    struct Received {
        std::span<const std::uint8_t> octets;  ///< one message, valid until the next call; empty: there is none
        int error = 0;                         ///< an `errno`: the socket is of no use any more
    };

    virtual ~MgmtPort() = default;
    /// @return 0 or an `errno`. It also succeeds without CAP_NET_ADMIN; commands are then answered by a refusal
    virtual int open() = 0;
    virtual void close() = 0;
    /// @return 0 or an `errno`
    virtual int send(std::span<const std::uint8_t> command) = 0;
    virtual Received receive() = 0;
    /// What to wait for (`poll`); -1 while it is closed.
    [[nodiscard]] virtual int descriptor() const = 0;
    /// How many events a controller (0: hci0) has sent since it came, or nothing where the kernel does not say. Anybody
    /// may ask, and it need not be open.
    [[nodiscard]] virtual std::optional<std::uint32_t> events(std::uint16_t adapter) const = 0;
};

}  // namespace nearcast::bluez
