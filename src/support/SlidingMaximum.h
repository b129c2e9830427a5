// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace nearcast {

/// The largest of the newest samples, in constant time a sample (on average) whatever the size of the window.
///
/// A sample that a later one reaches can never be the largest again. So only the others are held, which fall from the
/// oldest to the newest, each with the number of samples that it stands for: itself and those before it that it has
/// reached. Memory is taken for samples held, not for the window, which may be any number; up to seven need no heap.
/// Not for several threads at once.
/// @tparam Count counts the samples that one stands for; a larger number is spread over several
template <class Count>
class SlidingMaximumOf {
public:
    /// @param capacity of the window; one of 0 stays empty
    explicit SlidingMaximumOf(std::uint64_t capacity) noexcept : capacity_(capacity) {}

    /// Takes a sample in; a full window first loses its oldest one. Where there is no memory for it, nothing has
    /// changed.
    /// @return the largest in the window; the sample itself where the capacity is 0
    std::int32_t add(std::int32_t sample) {
        if (capacity_ == 0) return sample;
        if (runs_ == room()) makeRoomFor(sample);  // from here on nothing fails
        if (samples_ == capacity_) {
            dropOldest();
        } else {
            ++samples_;
        }
        std::uint64_t reached = 1;
        while (runs_ != 0 && run(runs_ - 1).sample <= sample) reached += run(--runs_).samples;
        for (; reached > most; reached -= most) append({sample, static_cast<Count>(most)});
        append({sample, static_cast<Count>(reached)});
        return run(0).sample;
    }

    /// How many samples are in the window.
    [[nodiscard]] std::uint64_t count() const noexcept { return samples_; }
    [[nodiscard]] std::uint64_t capacity() const noexcept { return capacity_; }

private:
    struct Run {
        std::int32_t sample;
        Count samples;
    };
    static constexpr std::uint32_t nearRoom = 7;
    static constexpr std::uint64_t most = std::numeric_limits<Count>::max();  ///< samples that a run can stand for

    [[nodiscard]] std::uint32_t room() const noexcept {
        return far_ ? static_cast<std::uint32_t>(far_->size()) : nearRoom;
    }
    Run& run(std::uint32_t index) noexcept {
        const std::uint32_t behind = room() - first_;
        const std::uint32_t place = index < behind ? first_ + index : index - behind;
        return (far_ ? far_->data() : near_.data())[place];
    }
    void dropOldest() noexcept {
        if (--run(0).samples != 0) return;
        first_ = first_ + 1 == room() ? 0 : first_ + 1;
        --runs_;
    }
    void append(Run next) noexcept { run(runs_++) = next; }
    /// For a sample that comes while all room is taken: grows, unless the sample leaves no more runs than there are.
    [[gnu::cold, gnu::noinline]] void makeRoomFor(std::int32_t sample) {
        if (samples_ == capacity_ && run(0).samples == 1) return;  // the oldest one goes
        std::uint64_t reached = 1;
        std::uint32_t left = runs_;
        while (left != 0 && run(left - 1).sample <= sample) reached += run(--left).samples;
        if (left + (reached + most - 1) / most > room()) grow();
    }
    void grow() {
        if (runs_ > std::numeric_limits<std::uint32_t>::max() / 2) throw std::bad_alloc();
        auto larger = std::make_unique<std::vector<Run>>(std::size_t{runs_} * 2);
        for (std::uint32_t index = 0; index < runs_; ++index) (*larger)[index] = run(index);
        far_ = std::move(larger);
        first_ = 0;
    }

    std::uint64_t capacity_;
    std::uint64_t samples_ = 0;
    std::unique_ptr<std::vector<Run>> far_;  ///< where the runs are once they were too many for `near_`
    std::uint32_t runs_ = 0;
    std::uint32_t first_ = 0;  ///< the place of the oldest run
    std::array<Run, nearRoom> near_{};
};

using SlidingMaximum = SlidingMaximumOf<std::uint32_t>;

}  // namespace nearcast
