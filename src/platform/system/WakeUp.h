// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/system/SystemClock.h"

#include <chrono>
#include <optional>

namespace nearcast {

/// Owns a file descriptor.
class Descriptor {
public:
    /// @param value what a system call gave
    /// @param what  what was wanted, for the error
    /// @throws std::system_error when it is negative
    Descriptor(int value, const char* what);
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int get() const noexcept { return value_; }

private:
    int value_;
};

/// Lets a thread wait for a time of the clock, or for a call of `wake`.
class WakeUp {
public:
    /// @throws std::system_error when the system gives no descriptors
    WakeUp();

    /// The moment to wake at, or none. From any thread, also while another one waits.
    void setAlarm(std::optional<SystemClock::Time> time) noexcept;
    /// Ends a wait that is under way, or else the next one. From any thread.
    void wake() noexcept;
    /// What a wait has found.
    struct Found {
        bool alarm = false;  ///< there until `takeAlarm`
        bool wake = false;   ///< there until `takeWake`
        bool other = false;
        bool broken = false;  ///< it cannot wait: somebody closed a descriptor, or the system failed
        bool another = false;
    };
    /// What is said where a thread ends because a wait found what is broken, or not its own.
    static constexpr const char* closed = "its descriptors were closed";

    /// Waits for either, and for `other` and `another` where they are not negative. One thread at a time.
    /// @param events what of `other` is waited for: `POLLIN`, where nothing is said
    Found wait(int other = -1, short events = readable, int another = -1) noexcept;
    /// Waits for either, so long at most; a signal may end it early. One thread at a time.
    Found pause(std::chrono::milliseconds longest) noexcept;
    /// Forgets what a wait has found.
    /// @return false where that is not ours any more: somebody closed a descriptor, and where its number is another
    ///         file's by now, that one is what was found
    [[nodiscard]] bool take(const Found& found) noexcept;
    /// Forgets the alarm that has expired. @return whether one had
    bool takeAlarm() noexcept;
    /// Forgets the calls of `wake`. @return whether there was one
    bool takeWake() noexcept;
    /// Readable when the alarm has expired.
    [[nodiscard]] int alarmDescriptor() const noexcept { return alarm_.get(); }

private:
    static const short readable;

    Descriptor alarm_;
    Descriptor wake_;
};

}  // namespace nearcast
