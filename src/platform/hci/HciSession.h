// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hci/HciCondition.h"
#include "platform/hci/HciController.h"
#include "platform/hci/HciPort.h"
#include "platform/hci/QuietWatch.h"
#include "platform/hciformat/HciEvents.h"
#include "platform/hciformat/SenderMemory.h"
#include "platform/radio/AdvertisingReport.h"

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace nearcast {

/// What a session tells. It may not be run again from inside.
class HciSessionListener {
public:
    virtual ~HciSessionListener() = default;
    virtual void conditionChanged(const HciCondition& condition) = 0;
    /// The scan was begun again without being asked for.
    virtual void scanRestarted() = 0;
    virtual void heard(const AdvertisingReport& report) = 0;
};

/// Keeps a way to a controller open, and the scan that is wished for running on it, through loss and return of both.
///
/// What has been lost is tried again at once, and then less often, up to once a second: opening is the only question
/// that tells absence, a block, another owner and missing rights apart, it needs no rights by itself, and it costs a
/// few system calls. Every two seconds the kernel is asked whether the controller is still what it was, for a raw
/// socket is not told when it is switched off.
///
/// Pure logic: no thread; time is passed in, from any start. Not for several threads at once.
class HciSession {
public:
    using Time = std::chrono::nanoseconds;

    static constexpr Time askInterval = std::chrono::seconds(2);
    /// Waits between tries: doubled from the first to the longest.
    static constexpr Time firstWait = std::chrono::milliseconds(250);
    static constexpr Time longestWait = std::chrono::seconds(1);
    /// A way that has lasted that long, or has brought a report, is tried again at once when it is lost.
    static constexpr Time provenAfter = std::chrono::seconds(5);
    /// Without a run for that long the machine has slept: a controller may have forgotten what it was told.
    static constexpr Time longestGap = std::chrono::seconds(5);
    /// A scan that is ended runs on that long, since many are begun again at once. What it brings in is not told.
    static constexpr Time lingering = std::chrono::milliseconds(100);

    /// @param port, listener live longer
    HciSession(HciPort& port, HciTarget target, HciSessionListener& listener);

    /// Does all that is to be done now: opens, reads what has come (some of it, where there is much), notices what has
    /// not come.
    /// @param scanWanted what the application wishes
    void run(Time now, bool scanWanted);
    /// When `run` is needed next, if nothing can be read sooner; a time that has passed means now.
    [[nodiscard]] Time due() const;
    /// Readable when `run` is needed; -1: there is nothing to wait for.
    [[nodiscard]] int descriptor() const { return socket_ ? socket_->descriptor() : -1; }

    [[nodiscard]] const HciCondition& condition() const { return condition_; }
    /// What a session's condition is before its first run.
    static HciCondition beginning(const HciTarget& target);

private:
    /// What a run reads at most before it looks at the time again.
    static constexpr int mostPackets = 256;
    // The air of a fair fits; a live radio should not remember for days.
    static constexpr std::size_t mostSenders = 10'000;
    static constexpr std::size_t mostSenderOctets = std::size_t{8} << 20;

    [[nodiscard]] bool alone() const { return target_.access == HciAccess::alone; }
    void wish(Time now, bool scanWanted);
    void open(Time now);
    void ask(Time now);
    void wakeUp(Time now);
    void read(Time now);
    void take(std::span<const std::uint8_t> packet, Time now);
    void report(const RawReport& raw, Time now);
    void follow(Time now);
    void watch(Time now);
    void listening(Time now);
    void lose(Time now, const HciCondition& condition);
    void become(const HciCondition& condition);
    [[nodiscard]] bool listens() const { return listeningSince_.has_value(); }

    HciPort& port_;
    const HciTarget target_;
    HciSessionListener& listener_;
    HciCondition condition_;
    std::unique_ptr<HciSocket> socket_;
    HciController controller_;
    HciEvents events_;
    SenderMemory senders_{mostSenders, mostSenderOctets};
    QuietWatch quiet_;
    bool scans_ = false;                  ///< there is to be a scan
    std::optional<Time> endScan_;         ///< it ends then
    std::optional<Time> listeningSince_;  ///< the way is open, and the controller ready
    bool unsuited_ = false;               ///< the controller was tried, and is of no use
    bool proven_ = true;                  ///< the way was good for something
    Time wait_ = firstWait;
    std::optional<Time> tryAt_;  ///< nothing: at once
    Time askAt_{0};
    Time lastRun_{0};
};

}  // namespace nearcast
