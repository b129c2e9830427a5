// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/RecordingInput.h"

#include <algorithm>

namespace nearcast::replay {

namespace {

constexpr std::size_t chunk = 65536;
constexpr const char* endsInside = "the file ends inside what begins here";

}  // namespace

bool RecordingInput::readMore() {
    if (ended_) return false;
    buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(begin_));
    end_ -= begin_;
    begin_ = 0;
    if (buffer_.size() < end_ + chunk) buffer_.resize(end_ + chunk);
    std::size_t count = 0;
    try {
        count = source_(std::span(buffer_).subspan(end_));
    } catch (const PackedDamage& damage) {
        damage_ = damage.what();
    }
    end_ += count;
    ended_ = count == 0;
    return !ended_;
}

void RecordingInput::consume(std::size_t count) noexcept {
    begin_ += count;
    offset_ += count;
}

bool RecordingInput::atEnd() {
    if (!peek(1).empty()) return false;
    if (damage_) throw RecordingDamage(offset_, *damage_);
    return true;
}

std::span<const std::uint8_t> RecordingInput::peek(std::size_t count) {
    while (end_ - begin_ < count && readMore()) {
    }
    return ahead().first(std::min(count, end_ - begin_));
}

std::span<const std::uint8_t> RecordingInput::take(std::size_t count) {
    const auto taken = peek(count);
    consume(taken.size());
    return taken;
}

std::span<const std::uint8_t> RecordingInput::takeSome(std::size_t most) {
    peek(1);
    return take(std::min(most, end_ - begin_));
}

std::span<const std::uint8_t> RecordingInput::takeAll(std::size_t count, std::uint64_t start) {
    const auto taken = take(count);
    if (taken.size() < count) throw RecordingDamage(start, damage_.value_or(endsInside));
    return taken;
}

void RecordingInput::skipAll(std::uint64_t count, std::uint64_t start) {
    while (count > 0) {
        const auto passed = take(static_cast<std::size_t>(std::min<std::uint64_t>(count, chunk)));
        if (passed.empty()) throw RecordingDamage(start, damage_.value_or(endsInside));
        count -= passed.size();
    }
}

}  // namespace nearcast::replay
