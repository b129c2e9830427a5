// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lines/Line.h"
#include "lines/TextReader.h"

#include <exception>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace nearcast::lines {

/// Where the lines of a scenario or of a recording come from, in order.
class LineSource {
public:
    virtual ~LineSource() = default;
    /// The next line; nothing at the end.
    /// @throws InputError for a line that is wrong, std::system_error where the file cannot be read; nothing follows it
    virtual std::optional<Line> next() = 0;
    /// When the next line happens; nothing at the end.
    virtual std::optional<Time> peekTime() = 0;
    /// Where the line comes from that `next` returned last, for messages.
    [[nodiscard]] virtual std::string place() const = 0;
};

/// Reads the lines of several files as one scenario; only one line is held in memory. A file that cannot be opened or
/// read is an `std::system_error`.
class LineReader : public LineSource {
public:
    static constexpr std::size_t longestLine = std::size_t{16} << 20;  ///< bytes

    /// @param paths files; "-" is standard input
    explicit LineReader(const std::vector<std::string>& paths) : LineReader(TextReader::openFiles(paths), Time{0}) {}
    /// @param previous the time of a first line that has none of its own
    LineReader(std::vector<TextReader::Input> inputs, Time previous)
        : text_(std::move(inputs), longestLine), previous_(previous) {}

    /// Blank lines are skipped.
    std::optional<Line> next() override;
    /// A line that is wrong has a time too: its own where that can be read, and else that of the line before it.
    std::optional<Time> peekTime() override;
    /// The file and the line number.
    [[nodiscard]] std::string place() const override { return text_.place(); }
    /// The line that `next` returned last, or could not return.
    [[nodiscard]] const TextReader& text() const noexcept { return text_; }
    /// What is wrong with the line that `next` could not return, with its number; empty where none is wrong.
    [[nodiscard]] const std::string& problem() const noexcept { return problem_; }
    /// Whether that line is the last one of its input and no whole JSON: the input was cut inside it.
    [[nodiscard]] bool cut() const noexcept { return cut_; }
    /// The time of the last line.
    [[nodiscard]] Time time() const noexcept { return previous_; }

private:
    void advance();
    void parse(std::string_view text);

    TextReader text_;
    Time previous_;

    bool ahead_ = false;  ///< whether the next line has been read already, or its error is known
    std::optional<Line> line_;
    std::exception_ptr unreadable_;  ///< why the file cannot be read on
    std::optional<InputError> error_;
    std::string problem_;
    bool cut_ = false;
};

}  // namespace nearcast::lines
