// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/AdvertisingReport.h"

#include <optional>
#include <string>
#include <string_view>

namespace nearcast {

// How a radio string names an adapter: by its number, which goes to the next one that is plugged in, or by its address,
// which stays the same after a replug and in every order of plugging in. From any thread.

/// Whether that is an adapter as the kernel numbers them: "hci0", "hci12".
bool isAdapterNumber(std::string_view text);

/// Reads "00:1A:7D:DA:71:13", in capital letters or small ones.
/// @return nothing where the text is anything else
std::optional<DeviceAddress> readAdapterAddress(std::string_view text);

/// As `readAdapterAddress` reads it, in capital letters: as all that show an address spell it.
std::string adapterAddressText(const DeviceAddress& address);

/// Whether an address can name an adapter. Zeros stand where an adapter has none, or has not been asked for it yet, and
/// several may have them at once.
inline bool namesAdapter(const DeviceAddress& address) { return address != DeviceAddress{}; }

/// An address in capital letters.
/// @return empty where the text is none, or one that can name no adapter
std::string adapterAddress(std::string_view text);

/// Whether a radio string can name an adapter so: by its number or by its address.
bool namesAdapter(std::string_view text);

}  // namespace nearcast
