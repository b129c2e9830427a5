// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/controller/Device.h"

namespace nearcast::lab {

/// Linux's virtual controllers: whoever opens /dev/vhci is one until it closes it.
class VhciDevice : public Device {
public:
    VhciDevice() = default;
    VhciDevice(const VhciDevice&) = delete;
    VhciDevice& operator=(const VhciDevice&) = delete;
    ~VhciDevice() override { unplug(); }

    unsigned plug() override;
    void unplug() override;
    [[nodiscard]] bool plugged() const override { return descriptor_ >= 0; }
    void send(std::span<const std::uint8_t> event) override;

    /// To poll; -1 while it is not plugged in.
    [[nodiscard]] int descriptor() const { return descriptor_; }
    /// Reads what has come.
    void receive(const CommandSink& sink);

private:
    int descriptor_ = -1;
};

}  // namespace nearcast::lab
