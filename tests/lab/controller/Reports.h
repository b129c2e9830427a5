// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/controller/Bytes.h"
#include "lab/controller/Dongle.h"

namespace nearcast::lab {

/// One report as HCI events: event code, length, parameters. It is one event, unless the dongle advertises more in the
/// extended way than an event holds.
/// @param extended     LE Extended Advertising Report (7.7.65.13), else LE Advertising Report (7.7.65.2)
/// @param scanResponse the answer to a scan request, in place of the advertisement itself
std::vector<Bytes> reportEvents(const Dongle& dongle, int rssi, bool extended, bool scanResponse);

}  // namespace nearcast::lab
