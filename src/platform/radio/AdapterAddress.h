// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/AdvertisingReport.h"

#include <optional>
#include <string>
#include <string_view>

namespace nearcast {

// The address of an adapter, by which a radio string may name it: unlike its number it is the same after a replug and
// in every order of plugging in. From any thread.

/// Reads "AA:BB:CC:DD:EE:FF", in capital letters or small ones.
/// @return nothing where the text is anything else
std::optional<DeviceAddress> readAdapterAddress(std::string_view text);

/// As `readAdapterAddress` reads it, in capital letters.
std::string adapterAddressText(const DeviceAddress& address);

/// Whether an address can name an adapter. Zeros stand where an adapter has none, or has not been asked for it yet, and
/// several may have them at once.
inline bool namesAdapter(const DeviceAddress& address) { return address != DeviceAddress{}; }

}  // namespace nearcast
