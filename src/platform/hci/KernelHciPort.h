// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hci/HciPort.h"

namespace nearcast {

/// The kernel of this machine.
class KernelHciPort : public HciPort {
public:
    Opened open(int index, HciAccess access) override;
    Asked adapter(int index) override;
    [[nodiscard]] Capabilities capabilities() const override { return ownCapabilities(); }
};

}  // namespace nearcast
