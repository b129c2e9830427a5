// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace nearcast::bluez {

/// Whether the system bus has bluetoothd: it runs, or the bus can start it. Asks the bus and waits for its answers,
/// two seconds each at most. From any thread.
[[nodiscard]] bool isBluetoothdAtHand() noexcept;

}  // namespace nearcast::bluez
