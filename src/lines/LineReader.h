// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lines/Line.h"
#include "lines/TextReader.h"

#include <exception>
#include <optional>
#include <string>
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
    explicit LineReader(const std::vector<std::string>& paths) : text_(TextReader::openFiles(paths), longestLine) {}

    /// Blank lines are skipped.
    std::optional<Line> next() override;
    /// A line that is wrong has a time too: its own where that can be read, and else that of the line before it.
    std::optional<Time> peekTime() override;
    /// The file and the line number.
    [[nodiscard]] std::string place() const override { return text_.place(); }

private:
    void advance();
    void parse(std::string_view text);

    TextReader text_;
    Time previous_{0};

    bool ahead_ = false;  ///< whether the next line has been read already, or its error is known
    std::optional<Line> line_;
    std::exception_ptr unreadable_;  ///< why the file cannot be read on
    std::optional<InputError> error_;
};

}  // namespace nearcast::lines
