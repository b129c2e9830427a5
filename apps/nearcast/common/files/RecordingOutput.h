// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "common/files/GzipOutput.h"
#include "platform/replay/RecordingWriter.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace nearcast::cli {

/// The form in which a recording is written.
struct RecordingForm {
    enum class Format { jsonLines, btsnoop, pcapng };

    Format format = Format::jsonLines;
    bool packed = false;  ///< by gzip

    friend bool operator==(const RecordingForm&, const RecordingForm&) = default;
};

/// The form that the ending of a file's name says, in capitals or not, or an option `--format`. Standard output, names
/// without an ending and what is no regular file have the form of the option, else JSON Lines.
/// @param output as an option `--output` says it
/// @param format as the option says it; empty: it is absent
/// @throws UsageError for an ending or a format that is not known, where they contradict each other, and where bytes
///         that are no text would go to a terminal
RecordingForm recordingFormOf(const std::string& output, const std::string& format);

/// Adds the options `--output` and `--format` to a command that writes a recording.
/// @param file what the file is, to begin the help of `--output`
void addRecordingOptions(CLI::App& command, const std::string& file, std::string& output, std::string& format);

/// Writes a recording in one of its forms.
class RecordingOutput {
public:
    /// Takes bytes of the file; what it throws passes through.
    using Sink = std::function<void(std::string_view bytes)>;

    /// @param eachAtOnce as for `GzipOutput`: what was handed out at any moment can be played up to there
    RecordingOutput(RecordingForm form, Sink sink, bool eachAtOnce);

    /// The writer, which this object outlives.
    /// @param begin the recording's time zero since 1970, for what holds dates
    std::unique_ptr<replay::RecordingWriter> writer(std::chrono::microseconds begin);
    /// Ends the file.
    void finish();

private:
    RecordingForm form_;
    Sink sink_;
    std::optional<GzipOutput> packing_;
};

}  // namespace nearcast::cli
