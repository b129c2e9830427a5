// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lines/LineReader.h"
#include "platform/replay/RecordingInput.h"
#include "platform/replay/RecordingReader.h"

#include <cstddef>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace nearcast::cli {

/// The lines of several files as one scenario. Each file is of any kind, told by its content: a scenario, or a
/// recording, packed or not.
class PlaybackLines : public lines::LineSource {
public:
    /// Opens the files, all of them before any is read.
    /// @param paths   "-" is standard input
    /// @param options what is done to the reports
    /// @throws std::system_error naming the file that cannot be opened
    explicit PlaybackLines(const std::vector<std::string>& paths, replay::RecordingOptions options = {});

    /// A recording that is damaged ends the lines.
    /// @throws replay::NoRecording for a file that is neither a scenario nor a recording
    /// @throws std::system_error naming the file that cannot be read
    std::optional<lines::Line> next() override;
    std::optional<lines::Time> peekTime() override;
    [[nodiscard]] std::string place() const override;

    /// Why a recording ended before its end; empty where none did.
    [[nodiscard]] const std::string& damage() const noexcept { return damage_; }
    /// The error that `next` threw, in the words of a recording's damage; empty where it was not a line's.
    [[nodiscard]] std::string errorAsDamage() const;
    /// Whether that error was a line's that is no whole one: the file was cut inside it.
    [[nodiscard]] bool cut() const noexcept { return lines_ && lines_->cut(); }

private:
    struct File {
        std::string name;
        std::unique_ptr<replay::RecordingInput> input;
    };

    void advance();
    void open();
    void close();
    std::optional<lines::Line> readLine();
    std::optional<lines::Line> readReport();
    [[nodiscard]] std::string damageAt(std::uint64_t offset, const std::string& why) const;

    const replay::RecordingOptions options_;
    std::vector<File> files_;
    std::size_t current_ = 0;
    std::unique_ptr<lines::LineReader> lines_;            ///< of the current file, where it holds lines
    std::unique_ptr<replay::RecordingReader> recording_;  ///< of the current file, where it is a capture
    lines::Time time_{0};
    std::optional<lines::Line> ahead_;
    std::exception_ptr error_;  ///< what `next` throws in place of a line
    bool ended_ = false;        ///< it has thrown it
    std::string damage_;
};

}  // namespace nearcast::cli
