// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hci/HciSession.h"
#include "platform/radio/AdapterService.h"
#include "platform/radio/Radio.h"
#include "platform/system/ProcessEnd.h"
#include "platform/system/WakeUp.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <thread>

namespace nearcast::hci {

/// The radio of an HCI session: passes the scan that is wanted from the application's threads to the one that runs the
/// session, and what the session tells to the manager. It has no thread of its own; reports and changes of state come
/// on the thread that calls `pass`.
class HciRadio : public Radio {
public:
    /// @param delegate, console, monitor, port, service live longer
    /// @param service null: there is none
    /// @param wake    makes `pass` be called soon; from any thread
    HciRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor, HciPort& port,
             AdapterService* service, const HciTarget& target, std::function<void()> wake);

    /// @name For the one thread that runs it
    /// @{
    /// Does everything that is due; the time never goes back.
    void pass(Time now);
    /// When `pass` is needed, unless the descriptor is readable or `wake` is called sooner.
    [[nodiscard]] std::optional<Time> due() const { return session_.due(); }
    /// @copydoc HciSession::descriptor
    [[nodiscard]] int descriptor() const { return session_.descriptor(); }
    /// @copydoc HciSession::release
    void release() { session_.release(); }
    /// @}
    /// @copydoc HciSession::owesRest
    [[nodiscard]] bool owesRest() const noexcept { return session_.owesRest(); }

private:
    void scanChanged(const std::optional<Scan>& /*scan*/) override { wake_(); }

    const std::function<void()> wake_;
    HciSession session_;
};

/// What the radio uses; constructed before it and destroyed after it.
struct RadioParts {
    std::unique_ptr<HciPort> port;
    std::unique_ptr<AdapterService> service;  ///< null: there is none
    WakeUp wakeUp;
};

/// The radio behind `hci`: a session with a controller of this machine, on a thread of its own, which also calls the
/// manager. Starting and stopping a scan never block.
class ThreadedHciRadio final : private RadioParts, public HciRadio {
public:
    /// Returns at once; the state is unknown until the controller has been tried.
    /// @param delegate, console, monitor live longer
    /// @throws std::system_error when the system gives no descriptors or no thread
    ThreadedHciRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor,
                     std::unique_ptr<HciPort> kernel, std::unique_ptr<AdapterService> service, const HciTarget& target);
    /// Releases the controller and waits for a callback that is running; so not from inside one. A radio that is never
    /// destroyed releases it when the process ends, if it can be left as it was only by waiting for somebody.
    ~ThreadedHciRadio() override;
    ThreadedHciRadio(const ThreadedHciRadio&) = delete;
    ThreadedHciRadio& operator=(const ThreadedHciRadio&) = delete;

private:
    /// More than it takes to leave a controller as it was.
    static constexpr std::chrono::seconds longestRelease{10};

    void run() noexcept;
    bool loop() noexcept;
    void processEnds() noexcept;

    std::atomic<bool> ending_{false};
    std::atomic<std::thread::id> runner_{};
    std::promise<void> released_;
    std::future<void> release_ = released_.get_future();
    std::optional<ProcessEnd> processEnd_;
    std::thread thread_;
};

}  // namespace nearcast::hci
