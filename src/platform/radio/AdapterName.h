// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace nearcast {

/// Whether that is an adapter as the kernel numbers them: "hci0", "hci12". The number goes to the next one that is
/// plugged in, so it names a place and not an adapter.
bool isAdapterNumber(std::string_view text);

/// The address of an adapter as all that show one spell it, "00:1A:7D:DA:71:13".
/// @param text the same, with letters of any case
/// @return empty where that is no address, and for all zeros: an adapter that has no address says those
std::string adapterAddress(std::string_view text);

/// Whether a radio string can name an adapter so: by its number or by its address.
bool namesAdapter(std::string_view text);

}  // namespace nearcast
