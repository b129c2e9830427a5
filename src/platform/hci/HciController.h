// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hci/HciPacket.h"
#include "platform/radio/BackOff.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace nearcast::hci {

/// The talk with a controller that is ours alone: it is reset, asked what it can, and told to scan passively, without a
/// pause and with duplicates (Core Specification, Volume 4, Part E, 3 and 7.8). One command is under way at a time, and
/// each has to be answered in time.
///
/// Pure logic: no thread, no operating system; time is passed in. Not for several threads at once.
class HciController {
public:
    /// Sends a packet. @return 0, or why it could not be sent as `errno` has it
    using Send = std::function<int(std::span<const std::uint8_t> packet)>;

    enum class Phase {
        idle,      ///< nothing has been begun
        starting,  ///< it is being set up
        ready,     ///< it does as it is told
        failed,    ///< it refused, or does not answer: see `failure`
        unsuited,  ///< it cannot Bluetooth Low Energy
    };

    /// How long an answer may take.
    static constexpr Time answerLimit = std::chrono::seconds(2);

    explicit HciController(Send send) : send_(std::move(send)) {}

    /// Sets the controller up from its reset on, whatever it did before. The scan that is wished for is kept.
    void start(Time now);
    /// Makes the controller scan or not, soon.
    void setScan(bool wanted, Time now);
    /// Begins a running scan again.
    void restartScan(Time now);
    /// Takes an event: event code, parameter length, parameters. Those that are no answers are passed over.
    void received(std::span<const std::uint8_t> event, Time now);
    /// Notices what has not come in time.
    void tick(Time now);
    /// When `tick` is needed next.
    [[nodiscard]] std::optional<Time> due() const { return due_; }

    [[nodiscard]] Phase phase() const { return phase_; }
    /// What went wrong, to be read after the controller's name: "did not answer ...".
    [[nodiscard]] const std::string& failure() const { return failure_; }
    /// The controller has been told to scan, and has agreed.
    [[nodiscard]] bool scanning() const { return phase_ == Phase::ready && scans_ && steps_.empty(); }

private:
    struct Step {
        Command command;
        bool mayFail = false;
    };

    /// Something can be asked of it.
    [[nodiscard]] bool lives() const { return phase_ == Phase::starting || phase_ == Phase::ready; }
    void advance(Time now);
    void send(Time now);
    void answered(const Answer& answer, Time now);
    void learn(const Answer& answer);
    void learnCommands(std::span<const std::uint8_t> commands);
    void queueScan();
    void queueDisable();
    void fail(std::string why);
    void add(Command command, bool mayFail = false) { steps_.push_back({std::move(command), mayFail}); }

    const Send send_;
    Phase phase_ = Phase::idle;
    std::string failure_;
    std::deque<Step> steps_;  ///< what is still to be done; the first may be under way
    bool underWay_ = false;
    bool room_ = true;         ///< the controller takes a command
    std::optional<Time> due_;  ///< by then it answers, or makes room
    bool extended_ = false;    ///< it has the commands for extended scanning, which forbid the others
    bool wanted_ = false;      ///< the scan that is wished for
    bool scans_ = false;       ///< the scan that the steps lead to
};

}  // namespace nearcast::hci
