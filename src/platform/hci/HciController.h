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

/// The dialogue with a controller that is ours alone: it is reset, asked for its features, and made to scan passively,
/// all the time and with duplicates (Core Specification, Volume 4, Part E, 3 and 7.8). One command is pending at a
/// time, and each has a deadline for its answer.
///
/// It has no clock, no thread and no operating system: the time is passed in. Not for several threads at once.
class HciController {
public:
    /// Sends a packet. @return 0, or why it could not be sent as `errno` has it
    using Send = std::function<int(std::span<const std::uint8_t> packet)>;

    enum class Phase {
        idle,      ///< not started
        starting,  ///< it is being set up
        ready,     ///< it takes commands
        failed,    ///< it refused, or does not answer: see `failure`
        unsuited,  ///< it has no Bluetooth Low Energy
    };

    /// The deadline of an answer.
    static constexpr Time answerLimit = std::chrono::seconds(2);

    explicit HciController(Send send) : send_(std::move(send)) {}

    /// Sets the controller up, from its reset on. Whether a scan is wanted stays as it was.
    void start(Time now);
    /// Makes the controller scan or not, soon.
    void setScan(bool wanted, Time now);
    /// Restarts a running scan.
    void restartScan(Time now);
    /// Asks one that is ready something that every controller answers, and that changes nothing, to see whether it
    /// lives.
    void probe(Time now);
    /// Takes an event: event code, parameter length, parameters. Those that are no answers are ignored.
    void received(std::span<const std::uint8_t> event, Time now);
    /// Checks the deadline.
    void tick(Time now);
    /// When `tick` is needed next.
    [[nodiscard]] std::optional<Time> due() const { return due_; }

    [[nodiscard]] Phase phase() const { return phase_; }
    /// What went wrong, worded to follow the controller's name: "did not answer ...".
    [[nodiscard]] const std::string& failure() const { return failure_; }
    /// The controller has confirmed that it scans.
    [[nodiscard]] bool scanning() const { return phase_ == Phase::ready && scans_ && steps_.empty(); }

private:
    struct Step {
        Command command;
        bool mayFail = false;
    };

    /// It takes commands, or is being set up.
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
    std::deque<Step> steps_;  ///< what is still to be done; the first may be pending
    bool underWay_ = false;
    bool room_ = true;         ///< the controller takes a command
    std::optional<Time> due_;  ///< the deadline of its answer, or of its room for a command
    bool extended_ = false;    ///< it has the commands for extended scanning, which forbid the others
    bool wanted_ = false;      ///< a scan is wanted
    bool scans_ = false;       ///< it scans once the steps are done
};

}  // namespace nearcast::hci
