// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/RadioHealth.h>

#include <string>

namespace nearcast::cli {

/// "powered on", "unauthorized", ...; of a state that nobody knows its number.
std::string stateName(CBManagerState state);
/// The state and its reason: "powered off (the adapter is blocked by rfkill)".
std::string stateInWords(const RadioHealth& health);
/// How the radio is, on one line: what it hears tells a radio that is blind from dongles that are silent.
/// @param now the moment that `RadioHealth::since` is compared with
std::string healthInWords(const RadioHealth& health, double now);

/// Whether two readings differ in what a listener is told of: the state, its reason, the number of restarts.
bool differs(const RadioHealth& left, const RadioHealth& right);

}  // namespace nearcast::cli
