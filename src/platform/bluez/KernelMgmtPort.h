// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/MgmtPort.h"

#include <array>

namespace nearcast::bluez {

/// Lets of all messages only answers and the news of discoveries through a socket. The kernel tells every report on the
/// management channel too, and a thread that was woken by each would hear it twice.
/// @return 0 or an `errno`
int filterNews(int descriptor) noexcept;

/// The kernel of this machine.
class KernelMgmtPort : public MgmtPort {
public:
    KernelMgmtPort() = default;
    ~KernelMgmtPort() override { release(); }
    KernelMgmtPort(const KernelMgmtPort&) = delete;
    KernelMgmtPort& operator=(const KernelMgmtPort&) = delete;

    int open() override;
    void close() override { release(); }
    int send(std::span<const std::uint8_t> command) override;
    Received receive() override;
    [[nodiscard]] int descriptor() const override { return descriptor_; }
    [[nodiscard]] std::optional<std::uint32_t> events(std::uint16_t adapter) const override;

private:
    void release() noexcept;

    int descriptor_ = -1;
    std::array<std::uint8_t, 512> buffer_{};  ///< larger than any message that comes through
};

}  // namespace nearcast::bluez
