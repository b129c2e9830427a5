// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/SdMessage.h"

#include <chrono>

namespace nearcast::bluez {

/// Waits until a connection can be used. A bus that takes connections and does not greet would else keep the first call
/// for half a minute, whatever the limit of that call is.
/// @return a negative errno where it cannot; -ETIMEDOUT: nothing has come
[[nodiscard]] int awaitGreeting(sd_bus* bus, std::chrono::microseconds limit) noexcept;

/// Whether bluetoothd runs, or the bus can start it. Asks the system bus and waits for its greeting and its answers.
/// From any thread.
/// @param limit for each of them
[[nodiscard]] bool isBluetoothdAvailable(std::chrono::microseconds limit = std::chrono::seconds(2)) noexcept;

}  // namespace nearcast::bluez
