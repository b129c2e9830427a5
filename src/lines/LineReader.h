// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lines/Line.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::lines {

/// A scenario that cannot go on, as it was given; the message names the file, the line number and what is wrong.
class ScenarioError : public std::invalid_argument {
public:
    using std::invalid_argument::invalid_argument;
};

/// Reads the lines of several files as one scenario, a line at a time; only one line is held in memory.
class LineReader {
public:
    static constexpr std::size_t longestLine = std::size_t{16} << 20;  ///< octets

    /// @param paths files; "-" is standard input
    /// @throws ScenarioError when one of them cannot be opened
    explicit LineReader(const std::vector<std::string>& paths);

    /// The next line, blank ones passed over; nothing at the end.
    /// @throws ScenarioError for a line or a file that cannot be read; nothing follows it. A line that is wrong but
    /// says
    ///         its time is known before it is read: see `peekTime`
    std::optional<Line> next();

    /// When the next line happens; nothing at the end. A line that cannot be understood happens at its own time where
    /// that can be read, and else at that of the line before it.
    std::optional<Time> peekTime();

    /// The file and the number of the line that was read last, to name it in a message.
    [[nodiscard]] std::string place() const;

private:
    struct Closer {
        void operator()(std::FILE* file) const noexcept;
    };
    struct Input {
        std::string path;
        std::unique_ptr<std::FILE, Closer> file;
    };

    void advance();
    void parse();
    bool readText();
    bool fill();

    std::vector<Input> inputs_;
    std::size_t current_ = 0;
    std::size_t number_ = 0;  ///< of the line in the current file, from 1
    std::string buffer_;
    std::size_t consumed_ = 0;
    std::string text_;
    Time previous_{0};

    bool ahead_ = false;  ///< whether the next line has been read already
    std::optional<Line> line_;
    std::optional<ScenarioError> error_;
};

}  // namespace nearcast::lines
