// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::lines {

/// A file that says something wrong. The message names it, the line number where there is one, and what is wrong. What
/// cannot be opened or read at all is a `std::system_error` instead.
class InputError : public std::invalid_argument {
public:
    using std::invalid_argument::invalid_argument;
};

/// A line that is longer than its reader allows.
class LineTooLong : public std::length_error {
public:
    using std::length_error::length_error;
};

/// Reads text line by line, several inputs as one. It holds one line at a time, and some bytes read ahead.
class TextReader {
public:
    /// Fills the span from its beginning and returns the number of bytes, 0 only at the end. What it throws passes
    /// through `next`.
    using Source = std::function<std::size_t(std::span<std::uint8_t> room)>;
    struct Input {
        std::string name;  ///< for messages
        Source source;
    };

    /// Opens files, all of them before any is read; what is packed by gzip is unpacked. "-" is standard input.
    /// @throws std::system_error naming the file that cannot be opened; its source throws it when the file cannot be
    /// read, and InputError where what is packed is damaged
    static std::vector<Input> openFiles(const std::vector<std::string>& paths);

    /// @param longest bytes that a line may have, without its line feed
    TextReader(std::vector<Input> inputs, std::size_t longest) : inputs_(std::move(inputs)), longest_(longest) {}

    /// The next line without its line feed, valid until the next call; nothing at the end. Blank lines are skipped but
    /// counted. Each input ends its last line.
    /// @throws LineTooLong for a longer line; the reader cannot go on after that
    std::optional<std::string_view> next();

    /// @name The line that `next` returned last, or could not return
    /// @{

    /// Of its input.
    [[nodiscard]] const std::string& name() const noexcept { return inputs_[current_].name; }
    /// From 1 in each input.
    [[nodiscard]] std::uint64_t number() const noexcept { return number_; }
    /// Where it starts in its input, in bytes.
    [[nodiscard]] std::uint64_t offset() const noexcept { return offset_; }
    /// Whether it has its line feed; the last line of an input that was cut has none.
    [[nodiscard]] bool ended() const noexcept { return ended_; }
    /// "name:number", for messages.
    [[nodiscard]] std::string place() const { return inputs_[current_].name + ":" + std::to_string(number_); }
    /// @}

private:
    std::optional<std::string_view> nextInInput();
    bool fill();

    std::vector<Input> inputs_;
    std::size_t longest_;
    std::size_t current_ = 0;
    std::uint64_t number_ = 0;
    std::uint64_t offset_ = 0;
    bool ended_ = true;
    std::string buffer_;
    std::size_t consumed_ = 0;    ///< bytes of the buffer
    std::uint64_t position_ = 0;  ///< of the first byte not consumed, in its input
};

}  // namespace nearcast::lines
