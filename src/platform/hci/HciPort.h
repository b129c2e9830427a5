// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hci/HciAdapters.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace nearcast::hci {

/// How the radio uses a controller.
enum class HciAccess {
    alone,   ///< it is ours: neither the kernel nor other programs use it (HCI_CHANNEL_USER)
    beside,  ///< others use it; we hear the advertising reports that their scans bring in (HCI_CHANNEL_RAW)
};

/// An open connection to a controller. Used by one thread at a time.
class HciSocket {
public:
    virtual ~HciSocket() = default;

    struct Received {
        std::span<const std::uint8_t>
            packet;     ///< packet indicator first; valid until the next call; empty: there is none
        int error = 0;  ///< as `errno` has it: the connection is lost
    };
    /// The next packet; never blocks.
    virtual Received read() = 0;
    /// Sends a packet, packet indicator first.
    /// @return 0, or why it could not be sent as `errno` has it
    virtual int write(std::span<const std::uint8_t> packet) = 0;
    /// Readable when `read` has a packet or an error.
    [[nodiscard]] virtual int descriptor() const = 0;
};

/// The kernel's Bluetooth, reduced to what the radio needs; tests have a fake behind it. Errors are those of `errno`.
/// Used by one thread at a time.
class HciPort {
public:
    virtual ~HciPort() = default;

    struct Opened {
        std::unique_ptr<HciSocket> socket;  ///< null when there is an error
        /// ENODEV: there is no such controller; EBUSY: it is up, so in use; EUSERS: another program has taken it
        /// alone; ERFKILL: it is blocked; EPERM: a capability is missing, for a raw socket too, which the kernel opens
        /// and then leaves silent.
        int error = 0;
    };
    virtual Opened open(int index, HciAccess access) = 0;

    struct Asked {
        std::optional<HciAdapter> adapter;
        int error = 0;
    };
    virtual Asked adapter(int index) = 0;
    /// All controllers.
    virtual HciAdapterList adapters() = 0;
    /// Whether other devices are connected by way of a controller.
    virtual bool hasLinks(int index) = 0;

    [[nodiscard]] virtual Capabilities capabilities() const = 0;
};

}  // namespace nearcast::hci
