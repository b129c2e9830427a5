// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/RadioHealth.h>

#include <stdexcept>
#include <string>

namespace nearcast::cli {

/// What a radio that was opened is good for.
enum class Readiness {
    ready,
    awaited,  ///< not yet or not now: it is off, blocked, or its service does not run
    missing,  ///< there is no adapter, or no permission: waiting does not help
};
Readiness readinessOf(const RadioHealth& health);

/// Seconds that a radio may take to know its state.
inline constexpr double radioSettling = 3;

/// Whether the radio knows its state. It begins with one that it does not know; once it has told of a change, not
/// knowing has a reason.
bool isSettled(const RadioHealth& health, bool hasTold);

/// Why the radio is as it is; where it gives no reason, how it is.
std::string reasonOf(const RadioHealth& health);

/// That nothing can be heard here, and what to try; ends a command.
class RadioMissing : public std::runtime_error {
public:
    explicit RadioMissing(const RadioHealth& health);
};

/// That a radio is waited for, and why.
std::string awaitedInWords(const RadioHealth& health);

/// That a command has come to its end without hearing anything, by a radio that is not on.
/// @param waited whether `awaitedInWords` was said: the reason is said already
std::string nothingHeardInWords(const RadioHealth& health, bool waited);

}  // namespace nearcast::cli
