// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/NSLog.h"

#include <exception>
#include <string>
#include <string_view>

namespace nearcast {

/// Puts on the console that the handler of `what` threw `problem`.
inline void reportException(Console& console, std::string_view what, std::string_view problem) noexcept {
    try {
        console.NSLog(std::string("The handler of ").append(what).append(" failed: ").append(problem));
    } catch (...) {  // no memory for the text: the bare fact has to do
        console.NSLog("A handler failed.");
    }
}

/// Puts on the console why there is no radio.
inline void reportRadioFailed(Console& console, std::string_view why) noexcept {
    try {
        console.NSLog(std::string("The radio cannot be opened: ").append(why));
    } catch (...) {
        console.NSLog("The radio cannot be opened.");
    }
}

/// Puts on the console that a thread cannot go on.
/// @param what who has a thread of its own, in words
inline void reportEnded(Console& console, std::string_view what, std::string_view why) noexcept {
    try {
        console.NSLog(std::string("The thread of the ").append(what).append(" has ended: ").append(why));
    } catch (...) {
        console.NSLog("A thread has ended.");
    }
}

/// Runs a callback at the edge of a thread: what it throws goes to the console and no further.
/// @param what  whose handler it is, in words
template <class Callback>
void guarded(Console& console, std::string_view what, Callback&& callback) noexcept {
    try {
        callback();
    } catch (const std::exception& error) {
        reportException(console, what, error.what());
    } catch (...) {
        reportException(console, what, "an exception of an unknown kind");
    }
}

}  // namespace nearcast
