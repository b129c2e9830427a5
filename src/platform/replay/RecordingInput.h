// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/files/ByteSource.h"
#include "platform/replay/RecordingReader.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace nearcast::replay {

/// A recording's bytes from front to back, with as much read ahead as somebody asks to see at once. The views that it
/// gives hold until the next call.
class RecordingInput {
public:
    explicit RecordingInput(ByteSource source) : source_(std::move(source)) {}

    /// Where the next byte stands in the recording.
    [[nodiscard]] std::uint64_t offset() const noexcept { return offset_; }
    /// @throws RecordingDamage there when the recording was packed and is cut or damaged
    [[nodiscard]] bool atEnd();
    /// Why the bytes ended, where what they were packed in is cut or damaged. They end there like any others, so that
    /// what comes before can be used.
    [[nodiscard]] const std::optional<std::string>& damage() const noexcept { return damage_; }

    /// The next `count` bytes, fewer at the end; they stay the next ones.
    std::span<const std::uint8_t> peek(std::size_t count);
    /// The next `count` bytes, fewer at the end.
    std::span<const std::uint8_t> take(std::size_t count);
    /// As many of the next bytes as have come, one to `most`; none only at the end.
    std::span<const std::uint8_t> takeSome(std::size_t most);
    /// The next `count` bytes, all of them.
    /// @throws RecordingDamage at `start` when the recording ends before them
    std::span<const std::uint8_t> takeAll(std::size_t count, std::uint64_t start);
    /// Passes over `count` bytes.
    /// @throws RecordingDamage at `start` when the recording ends before them
    void skipAll(std::uint64_t count, std::uint64_t start);

private:
    [[nodiscard]] std::span<const std::uint8_t> ahead() const noexcept {
        return std::span(buffer_).subspan(begin_, end_ - begin_);
    }
    bool readMore();
    void consume(std::size_t count) noexcept;

    ByteSource source_;
    std::vector<std::uint8_t> buffer_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    std::uint64_t offset_ = 0;
    bool ended_ = false;
    std::optional<std::string> damage_;
};

}  // namespace nearcast::replay
