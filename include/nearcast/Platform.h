// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Export.h>
#include <nearcast/HeardAdvertisement.h>
#include <nearcast/RadioHealth.h>

#include <functional>
#include <string>
#include <string_view>

namespace nearcast {

/// What the manager stands on: a radio, a clock, timers and a console.
///
/// The manager and its radio live as long as the process. `console`, `radioHealthChanged` and a tap may thus be called
/// until its very end, also while the objects of the program's own are destroyed after `main`: what they use must not
/// be among those. Either end the tap and set no callbacks on such objects, or never destroy them.
struct PlatformOptions {
    /// Which radio, as a radio string: `auto`, `bluez`, `bluez:00:1A:7D:DA:71:13` or `bluez:hci1` (one adapter of
    /// several), `hci:0` (a controller for this process alone), `hci:00:1A:7D:DA:71:13` (the same, named by its
    /// address), `hci:0?beside` (beside the Bluetooth service), `none`,
    /// `simulator`, `simulator:SCENE.json`, `replay:FILE`, and what docs/radios.md, docs/recordings.md and
    /// docs/simulator.md say of their options (`replay:FILE?speed=8`).
    std::string radio = "auto";

    /// Where the console lines go. Without one, standard error. Called by the thread whose operation has something to
    /// say, before that operation returns and with no lock held, one call at a time; docs/callbacks.md says what it may
    /// call.
    std::function<void(std::string_view line)> console;

    /// Where timer handlers run. Without one they run on the timers' own thread. With one, each firing is handed over
    /// as a task that the application runs soon, on any one thread of its own. Radios with a time of their own
    /// (recordings, the simulator) run handlers themselves and do not use it.
    std::function<void(std::function<void()> task)> timerExecutor;

    /// Called when the state of the radio, its reason or the number of its restarts has changed, and at the first
    /// forged message; on the radio's thread, one call at a time. Where the radio could not be opened, on the thread
    /// that makes the manager. What it throws ends on the console.
    std::function<void(const RadioHealth& health)> radioHealthChanged;

    /// No thread is made for the timers: the application waits for `Platform::descriptor` to become readable and
    /// then calls `Platform::dispatch`.
    bool ownLoop = false;
};

/// Chooses and drives the platform of the process.
class NEARCAST_EXPORT Platform {
public:
    Platform() = delete;

    /// Chooses the platform. The radio is opened by the first `QXNearcastManager::sharedManager`, which also fixes the
    /// choice; nothing else does. Until then another call replaces the platform: a `runFor` that is under way on the
    /// replaced one ends, and calls that other threads make on it finish safely. From any thread.
    /// @throws std::invalid_argument when the radio string is not understood, or the scene that it names is wrong
    /// @throws std::system_error naming the file of the radio string that cannot be opened or read
    /// @throws std::runtime_error when the file is no recording
    /// @throws std::logic_error once the manager exists
    static void choose(const PlatformOptions& options);

    /// @name For applications with a loop of their own (`PlatformOptions::ownLoop`)
    /// Except for `interrupt` they throw std::logic_error before a platform is chosen.
    /// @{

    /// A file descriptor that is readable when a timer is due; -1 without `ownLoop`, and for a radio that has a time
    /// of its own. It stays the platform's, which closes it when another one is chosen.
    static int descriptor();
    /// Runs the timers that are due, on the calling thread, and returns.
    static void dispatch();
    /// Runs timers, and a radio that has a time of its own (a recording, the simulator; at the speed that the radio
    /// string asks for), on the calling thread, until `seconds` of the platform's time have passed, the recording has
    /// ended, or `interrupt` was called. Whatever is more than 0 lets a microsecond pass at least, so that a loop on
    /// `runFor(end - now())` comes to its end; 0, less, and what is no number let none pass.
    /// @return false when the recording has ended: nothing more will come of it
    /// @throws std::system_error when the descriptors that the platform waits at were closed
    /// @throws std::system_error (`resource_deadlock_would_occur`) in the console's callback or a synchronous sink,
    ///         where it would wait for another thread that runs the radio's time
    static bool runFor(double seconds);
    /// Makes a `runFor` that is under way, or else the next one, return soon. From any thread; before a platform is
    /// chosen it does nothing.
    static void interrupt();
    /// @}

    /// Why the radio's recording ended before its end ("...: damaged at byte 1234: ..."); empty when it did not.
    static std::string failure();

    /// How the radio is at this moment; before the manager is made, that no radio has been opened, and where that
    /// failed, why. From any thread.
    static RadioHealth radioHealth();

    /// Sets what hears every advertisement as the radio does, before it is smoothed and before any filter; an empty one
    /// ends it. There is one tap in a process. It is called on the radio's thread, one call at a time, with no lock
    /// held, before the manager hears of the advertisement; a call that is under way may still reach the previous one.
    /// What it throws ends on the console.
    /// @throws std::logic_error before a platform is chosen
    static void setTap(std::function<void(const HeardAdvertisement& heard)> tap);

    /// The time in seconds, from an arbitrary start; it never goes back and runs through suspend. Once a platform has
    /// been chosen it is that platform's time: the machine's, or that of a recording or of the simulator. Before, and
    /// for a manager that was made without a choice, it is the machine's (CLOCK_BOOTTIME). Times from before a choice
    /// may thus not be compared with those from after it. From any thread; it fixes no choice.
    static double now();
};

}  // namespace nearcast
