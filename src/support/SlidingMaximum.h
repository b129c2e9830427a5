// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <vector>

namespace nearcast {

/// Samples of which each is weaker than those before it, each with the number of samples that it stands for: itself
/// and those before it that it has reached. A ring on the heap. Not for several threads at once.
template <class Count>
class FallingSamples {
public:
    /// Takes the newest sample in. Where that throws, nothing has changed.
    void add(std::int32_t sample) {
        if (runs_ == ring_.size()) grow();
        std::uint64_t reached = 1;
        while (runs_ != 0 && run(runs_ - 1).sample <= sample) reached += run(--runs_).samples;
        constexpr std::uint64_t most = std::numeric_limits<Count>::max();
        for (; reached > most; reached -= most) append({sample, static_cast<Count>(most)});
        append({sample, static_cast<Count>(reached)});
    }
    void dropOldest() noexcept {
        if (--run(0).samples != 0) return;
        first_ = first_ + 1 == ring_.size() ? 0 : first_ + 1;
        --runs_;
    }
    [[nodiscard]] std::int32_t largest() noexcept { return run(0).sample; }

private:
    struct Run {
        std::int32_t sample;
        Count samples;
    };
    static constexpr std::size_t fewest = 8;

    Run& run(std::size_t index) noexcept {
        const std::size_t behind = ring_.size() - first_;
        return ring_[index < behind ? first_ + index : index - behind];
    }
    // A run takes the place of those that it has reached, so there is never more than one more than before.
    void append(Run next) noexcept { run(runs_++) = next; }
    void grow() {
        std::vector<Run> larger(ring_.size() * 2);
        for (std::size_t index = 0; index < runs_; ++index) larger[index] = run(index);
        ring_.swap(larger);
        first_ = 0;
    }

    std::vector<Run> ring_ = std::vector<Run>(fewest);
    std::size_t runs_ = 0;
    std::size_t first_ = 0;  ///< the place of the oldest run
};

/// The largest of the newest samples, in constant time a sample (on average) whatever the size of the window.
///
/// A window of up to eight samples is held as it is, and looked through without a branch that depends on a sample: what
/// comes from the air cannot be predicted. Of a larger one only those are held that can still become the largest: a
/// sample that a later one reaches can not. So memory is taken for samples held, not for the window, which may be any
/// number; a small one needs no heap. Not for several threads at once.
/// @tparam Count counts the samples that one stands for; a larger number is spread over several
template <class Count>
class SlidingMaximumOf {
public:
    /// @param capacity of the window; one of 0 stays empty
    explicit SlidingMaximumOf(std::uint64_t capacity) noexcept : capacity_(capacity) {
        near_.fill(std::numeric_limits<std::int32_t>::min());
    }

    /// Takes a sample in; a full window first loses its oldest one. Where that throws, nothing has changed.
    /// @return the largest in the window; the sample itself where the capacity is 0
    std::int32_t add(std::int32_t sample) {
        if (capacity_ == 0) return sample;
        const std::int32_t largest = capacity_ <= nearRoom ? addNear(sample) : addFar(sample);
        if (samples_ != capacity_) ++samples_;
        return largest;
    }

    /// How many samples are in the window.
    [[nodiscard]] std::uint64_t count() const noexcept { return samples_; }
    [[nodiscard]] std::uint64_t capacity() const noexcept { return capacity_; }

private:
    static constexpr std::size_t nearRoom = 8;

    std::int32_t addNear(std::int32_t sample) noexcept {
        near_[next_] = sample;
        next_ = next_ + 1 == capacity_ ? 0 : next_ + 1;
        std::int32_t largest = near_[0];
        for (const std::int32_t one : near_) largest = std::max(largest, one);
        return largest;
    }
    std::int32_t addFar(std::int32_t sample) {
        if (!far_) far_ = std::make_unique<FallingSamples<Count>>();
        const bool full = samples_ == capacity_;
        far_->add(sample);
        if (full) far_->dropOldest();
        return far_->largest();
    }

    std::uint64_t capacity_;
    std::uint64_t samples_ = 0;
    std::unique_ptr<FallingSamples<Count>> far_;  ///< of a large window
    std::array<std::int32_t, nearRoom> near_;     ///< of a small one
    std::uint32_t next_ = 0;                      ///< the place in it that the next sample takes
};

using SlidingMaximum = SlidingMaximumOf<std::uint32_t>;

}  // namespace nearcast
