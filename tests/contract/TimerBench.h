// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "doubles/KeptLines.h"
#include "platform/Platform.h"
#include "support/Mutex.h"

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace nearcast::contract {

/// A firing, as its handler noted it.
struct Note {
    std::string name;
    NSDate date;
    std::thread::id thread;
};

/// A platform with timers of one kind, and what makes its time pass.
class TimerBench {
public:
    /// @param date tells the time to handlers that run while the platform is being destroyed, too
    explicit TimerBench(std::function<NSDate()> date) : date_(std::move(date)) {}
    virtual ~TimerBench() = default;
    TimerBench(const TimerBench&) = delete;
    TimerBench& operator=(const TimerBench&) = delete;

    virtual PlatformServices& platform() = 0;
    /// Lets time pass until so many firings have been noted. It gives up after so long that something is broken.
    [[nodiscard]] virtual bool awaitNotes(std::size_t count) = 0;

    /// For handlers, on any thread.
    void note(const std::string& name);
    [[nodiscard]] std::vector<Note> notes() const;
    [[nodiscard]] std::size_t notesOf(std::string_view name) const;

    KeptLines console;

protected:
    /// Waits for notes that another thread makes.
    [[nodiscard]] bool waitForNotes(std::size_t count) const;

private:
    const std::function<NSDate()> date_;
    mutable Mutex mutex_;
    mutable std::condition_variable noted_;
    std::vector<Note> notes_ NEARCAST_GUARDED_BY(mutex_);
};

std::unique_ptr<TimerBench> timersOnTheirOwnThread();
std::unique_ptr<TimerBench> timersOnAnExecutor();
std::unique_ptr<TimerBench> timersOnTheApplicationsLoop();
std::unique_ptr<TimerBench> timersOnVirtualTime();
std::unique_ptr<TimerBench> timersOnADrivenTimeline();

}  // namespace nearcast::contract
