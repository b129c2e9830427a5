// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/AdvertisingReport.h"

#include <cstdint>
#include <functional>
#include <span>

namespace nearcast {

/// Takes HCI events one by one: event code, parameter length, parameters; no packet indicator. Valid during the call.
using HciEventSink = std::function<void(std::span<const std::uint8_t> event)>;

/// Writes a report as a controller would have given it, so that `HciEvents` reads the same report again: an LE
/// Advertising Report where the sender is known and 31 octets hold the data, otherwise an LE Extended Advertising
/// Report, in as many pieces as needed (Core Specification, Volume 4, Part E, 7.7.65.2 and 7.7.65.13).
///
/// What the report does not say is written as the least that can be claimed: not connectable, of the 1M PHY. What AD
/// structures cannot say is lost: see `writeAdStructures`. A signal that one octet cannot hold is the nearest that it
/// can.
/// @param sink what it throws passes through
void writeReportEvents(const AdvertisingReport& report, const HciEventSink& sink);

}  // namespace nearcast
