// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/CBCentralManager.h"

#include <optional>
#include <vector>

namespace nearcast::bench {

/// A radio that hears nothing by itself.
class SilentRadio : public CBCentralManager {
public:
    [[nodiscard]] CBManagerState state() const override { return CBManagerStatePoweredOn; }
    void scanForPeripheralsWithServices(const std::optional<std::vector<CBUUID>>& /*services*/,
                                        ScanOptions /*options*/) override {}
    void stopScan(StopOptions /*options*/) override {}
};

}  // namespace nearcast::bench
