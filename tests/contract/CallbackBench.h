// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Nearest.h>
#include <nearcast/QXNearcastManager.h>

#include "platform/virtual/VirtualPlatform.h"
#include "support/Mutex.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace nearcast::contract {

/// The process's manager with every callback of the application's set, one of which can be entered. It is never
/// destroyed, like the manager: `end` ends its threads.
class CallbackBench {
public:
    enum class Clock {
        machine,  ///< the machine's, a thousand times as fast
        own,      ///< the radio's, which another thread makes go when it is given some: it stands still here
    };
    explicit CallbackBench(Clock clock);
    CallbackBench(const CallbackBench&) = delete;
    CallbackBench& operator=(const CallbackBench&) = delete;

    /// Makes the call inside that callback, once, on whatever thread comes by.
    /// @return "yes"; "error" where it would have waited or was refused; otherwise what it threw
    std::string outcome(const std::string& callback, std::function<void()> call);
    /// From now on other threads use the manager too, and the radio hears.
    void gather();
    /// How often these have used everything.
    [[nodiscard]] int turns() const { return turns_.load(); }
    void end();

    [[nodiscard]] VirtualRadio& radio() { return radio_(); }
    [[nodiscard]] Nearest& nearest() { return *nearest_; }
    [[nodiscard]] QXNearcastManager& manager() { return manager_; }

private:
    Nearest::Sources nearestSources();
    static QXNearcastManager& make(CallbackBench& bench, Clock clock);
    std::shared_ptr<QXNearcastManagerDelegate> delegate();
    void startSink(const std::string& callback);
    void enter(std::string_view callback);
    bool awaitOutcome();
    void provoke(const std::string& callback);
    void changeNearest();
    void hear(std::string_view address);
    void whileOpen(std::function<void()> task);

    std::atomic<bool> open_{true};
    std::atomic<int> turns_{0};
    std::atomic<std::int64_t> nearestClock_{0};  ///< milliseconds
    std::vector<std::thread> threads_;
    std::function<VirtualRadio&()> radio_;
    Mutex mutex_;
    std::condition_variable changed_;
    std::string wanted_ NEARCAST_GUARDED_BY(mutex_);
    std::function<void()> call_ NEARCAST_GUARDED_BY(mutex_);
    std::string outcome_ NEARCAST_GUARDED_BY(mutex_);
    QXNearcastManager& manager_;
    std::unique_ptr<Nearest> nearest_;
};

}  // namespace nearcast::contract
