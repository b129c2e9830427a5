// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/Radio.h"
#include "platform/replay/RecordingOptions.h"
#include "platform/replay/RecordingReader.h"
#include "platform/replay/ReplayFailure.h"
#include "platform/timeline/Timeline.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>

namespace nearcast::replay {

/// A recording to play.
struct Recording {
    std::string name;  ///< for messages
    std::unique_ptr<RecordingReader> reader;
    RecordingOptions options;
};

/// A radio that hears what a recording holds, when it was heard.
///
/// It is powered on from the begin. The recording's clock starts at the first scan and then runs on, whether a scan
/// runs or not, so restarting a scan neither repeats nor delays anything. Where the recording is damaged it ends, with
/// one line on the console.
///
/// Scans may be started and stopped from any thread; reports and changes of state come on the thread that drives the
/// timeline.
class ReplayRadio : public Radio, public TimelineSource {
public:
    /// Becomes the timeline's source, until it is destroyed.
    /// @param delegate, console, monitor, timeline live longer than the radio
    /// @param failure told of damage; may be null
    ReplayRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor, Timeline& timeline,
                Recording recording, std::shared_ptr<ReplayFailure> failure = nullptr);
    ~ReplayRadio() override;
    ReplayRadio(const ReplayRadio&) = delete;
    ReplayRadio& operator=(const ReplayRadio&) = delete;

    /// Why the recording ended before its end, the text of the console line; empty when it did not. From any thread.
    [[nodiscard]] std::string failure() const { return failure_->text(); }

    std::optional<std::chrono::microseconds> due() override;
    void happen() override;

private:
    using Time = Timeline::Time;
    static constexpr Time notYet{-1};

    void scanChanged(const std::optional<Scan>& scan) override;
    void readNext();
    void fail(const char* problem);
    void happen(RecordedReport& report);
    void happen(const RecordedState& state);
    void happen(const RecordedEnd& end);

    Timeline& timeline_;
    std::shared_ptr<ReplayFailure> failure_;
    std::atomic<Time> started_{notYet};  ///< when the first scan began
    Recording recording_;                // this and the next two: the driving thread's alone
    std::optional<RecordedItem> next_;
    bool ended_ = false;
};

}  // namespace nearcast::replay
