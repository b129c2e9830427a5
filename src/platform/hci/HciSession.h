// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hci/HciController.h"
#include "platform/hci/HciPort.h"
#include "platform/hci/HciTarget.h"
#include "platform/hciformat/HciEvents.h"
#include "platform/hciformat/SenderMemory.h"
#include "platform/radio/AdapterService.h"
#include "platform/radio/AdvertisingReport.h"
#include "platform/radio/BackOff.h"
#include "platform/radio/Radio.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace nearcast::hci {

/// Keeps a socket to a controller open, and the scan that is wanted running on it, through loss and return of both.
///
/// A socket that is lost is opened again at once, and then less and less often, down to once a second. Only opening
/// tells absence, a block, another owner and missing rights apart; it needs no rights by itself and costs a few system
/// calls. Every two seconds the kernel is asked whether the controller is still what it was, because a raw socket is
/// not told when it is switched off.
///
/// A controller that the Bluetooth service had switched off is given back switched off: where the service switches it
/// on by itself, it is switched off again (`release`), or while it is wanted and nobody uses it, taken again.
///
/// It has no clock and no thread: `pass` brings the time, from any start, and `due` says when it next needs it. Not for
/// several threads at once.
class HciSession {
public:
    static constexpr Time askInterval = std::chrono::seconds(2);
    static constexpr Time firstPause = std::chrono::milliseconds(250);
    static constexpr Time longestPause = std::chrono::seconds(1);
    /// A socket that was open for so long, or has brought a report, is opened again at once when it is lost.
    static constexpr Time provenAfter = std::chrono::seconds(5);
    /// After so long without a word of the controller it is asked whether it lives: quiet air and a dead controller
    /// sound alike.
    static constexpr Time probeAfter = std::chrono::seconds(5);
    /// After so long without a call of `pass` the machine has slept: the controller may have lost its settings.
    static constexpr Time longestGap = std::chrono::seconds(5);
    /// For so long a scan that is no longer wanted goes on, because an application often renews its scan that way. Its
    /// reports are still told; the radio drops them.
    static constexpr Time linger = std::chrono::milliseconds(100);

    /// @param port, listener, service live longer
    /// @param service null: there is none
    HciSession(HciPort& port, HciTarget target, SessionListener& listener, AdapterService* service = nullptr);

    /// Whether a scan is wanted, from the next `pass` on.
    void want(bool scan) noexcept { wanted_ = scan; }
    /// Does everything that is due: opens, reads what has come (some of it, where there is much), checks what has not
    /// come in time. The time never goes back.
    void pass(Time now);
    /// When `pass` is needed next if nothing can be read sooner; a time in the past means now.
    [[nodiscard]] std::optional<Time> due() const;
    /// Readable when `pass` is needed; -1: there is nothing to wait for.
    [[nodiscard]] int descriptor() const { return socket_ ? socket_->descriptor() : -1; }

    /// Closes the socket, and leaves the controller as it was. Nothing is called afterwards.
    void release();
    /// `release` has more to do than to close a socket, and may take some seconds. From any thread.
    [[nodiscard]] bool owesRest() const noexcept { return leaveOff_; }

    [[nodiscard]] CBManagerState state() const noexcept { return condition_.state; }
    [[nodiscard]] const std::string& why() const noexcept { return condition_.why; }
    /// The condition before the first `pass`.
    static RadioCondition beginning(const HciTarget& target);

private:
    static constexpr int mostPackets = 256;  ///< in one `pass`, before it looks at the time again
    // Enough for the air of a fair; a live radio should not remember senders for days.
    static constexpr std::size_t mostSenders = 10'000;
    static constexpr std::size_t mostSenderOctets = std::size_t{8} << 20;

    [[nodiscard]] bool alone() const { return target_.access == HciAccess::alone; }
    void takeWish(Time now);
    void open(Time now);
    [[nodiscard]] bool turnsOn(const HciAdapter& adapter);
    RadioCondition refused(const HciAdapter& adapter, int error);
    void ask(Time now);
    void wakeUp(Time now);
    void read(Time now);
    void take(std::span<const std::uint8_t> packet, Time now);
    void report(const RawReport& raw, Time now);
    void follow(Time now);
    void probe(Time now);
    void watch(Time now);
    void listening(Time now);
    void lose(Time now, const RadioCondition& condition);
    void become(const RadioCondition& condition);
    [[nodiscard]] bool listens() const { return listeningSince_.has_value(); }
    /// Its silence may be its death.
    [[nodiscard]] bool mayBeDead() const { return alone() && listens(); }

    HciPort& port_;
    HciTarget target_;
    SessionListener& listener_;
    AdapterService* const service_;
    RadioCondition condition_;
    std::unique_ptr<HciSocket> socket_;
    HciController controller_;
    HciEvents events_;
    SenderMemory senders_{mostSenders, mostSenderOctets};
    QuietWatch quiet_;
    bool wanted_ = false;                 ///< the application wants a scan
    bool scans_ = false;                  ///< a scan is to run: wanted, or lingering
    std::optional<Time> endScan_;         ///< when the lingering ends
    std::optional<Time> listeningSince_;  ///< the socket is open, and the controller ready
    std::atomic<bool> leaveOff_{false};   ///< the service had the controller off when it was taken
    bool unsuited_ = false;               ///< the controller was tried, and is of no use
    bool proven_ = true;                  ///< the socket was good for something
    BackOff pause_{firstPause, longestPause};
    std::optional<Time> openAt_;  ///< nothing: at once
    Time askAt_{0};
    Time probeAt_{0};
    Time lastPass_{0};
};

}  // namespace nearcast::hci
