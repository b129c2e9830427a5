// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/MgmtPort.h"
#include "platform/radio/BackOff.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace nearcast::bluez {

/// The kernel's discovery, which bluetoothd begins and the kernel ends after a round of ten seconds. A bluetoothd that
/// misses the news of an end waits for it for good; one that dies leaves a round behind that keeps others from
/// beginning one. Both are seen here, and mended by the two commands that bluetoothd itself would give.
///
/// It needs CAP_NET_ADMIN, asks the kernel at once whether it has it, and is shut for good where it has not.
/// It has no clock: `pass` brings the time, `due` says when it next needs it. Not for several threads at once.
class KernelScan {
public:
    enum class Outcome {
        mended,     ///< what was wrong is no longer so
        needless,   ///< nothing was wrong, and nothing was done
        forbidden,  ///< without CAP_NET_ADMIN, or the kernel cannot be spoken to at all
        failed,     ///< the kernel did not do it, or did not answer
    };
    /// Called once, and never from inside the operation.
    using Done = std::function<void(Outcome)>;

    static constexpr Time answerLimit = std::chrono::seconds(1);
    /// bluetoothd renews a round that has ended within 30 ms. After so long nobody does.
    static constexpr Time renewal = std::chrono::seconds(1);
    /// A round that was ended before its time: bluetoothd connects to a device meanwhile, and that takes a while.
    static constexpr Time connectPause = std::chrono::seconds(6);
    static constexpr Time shortestRound = std::chrono::seconds(10);
    /// A kernel that is busy most likely discovers; if so, it tells of another round within this time.
    static constexpr Time presumption = std::chrono::seconds(12);

    /// @param port lives longer
    explicit KernelScan(MgmtPort& port) : port_(port) {}
    ~KernelScan() { port_.close(); }
    KernelScan(const KernelScan&) = delete;
    KernelScan& operator=(const KernelScan&) = delete;

    /// Which adapter's discovery is of interest (0 for hci0), or none. What is under way for another one has failed.
    void watch(std::optional<std::uint16_t> adapter);
    void setTime(Time now) noexcept { now_ = now; }
    /// Takes what the kernel has said, and gives up what it does not answer.
    void pass(Time now);
    [[nodiscard]] std::optional<Time> due() const { return answerBy_; }

    /// Whether the kernel may be asked.
    [[nodiscard]] bool usable() const { return port_.descriptor() >= 0; }
    /// Whether it was, and refused.
    [[nodiscard]] bool forbidden() const { return forbidden_; }
    /// Whether a discovery runs that others began; nothing: the kernel has not said it yet.
    [[nodiscard]] std::optional<bool> runs() const { return runs_; }
    /// From when on one that has ended is missed.
    [[nodiscard]] Time missedFrom() const { return missedFrom_; }
    /// Until when one is presumed to run, for the kernel was busy.
    [[nodiscard]] Time presumedUntil() const { return presumedUntil_; }

    /// How many events the controller has sent; `usable` or not.
    [[nodiscard]] std::optional<std::uint32_t> events() const {
        return adapter_ ? port_.events(*adapter_) : std::nullopt;
    }

    /// Begins a discovery and ends it, where none runs: bluetoothd, which learns of its end, goes on with its own.
    void revive(Done done);
    /// Ends the discovery that runs.
    void release(Done done);

private:
    enum class Stage { idle, starting, awaitingRound, stopping, releasing };

    void ask();
    void begin(Stage stage, std::uint16_t command, Done done);
    void send(std::uint16_t command);
    void take(std::span<const std::uint8_t> message);
    void answered(std::uint16_t command, std::uint8_t status);
    void discovering(bool on);
    void stop(Stage stage);
    void finish(Outcome outcome);
    void shut();

    MgmtPort& port_;
    Time now_{0};
    std::optional<std::uint16_t> adapter_;
    bool forbidden_ = false;
    std::optional<bool> runs_;
    std::optional<Time> begunAt_;
    bool own_ = false;  ///< the round that ends next is one that we began or end
    Time missedFrom_{0};
    Time presumedUntil_{0};
    Stage stage_ = Stage::idle;
    std::uint8_t type_ = 0;  ///< of the discovery that is to end
    std::optional<Time> answerBy_;
    Done done_;
};

}  // namespace nearcast::bluez
