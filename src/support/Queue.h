// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace nearcast {

/// A sliding window of samples: it holds the newest `maxCount` of them, oldest first.
///
/// The smoothing's rule speaks of three of these. `Smoothing` keeps of them only what the rule asks for, so that a
/// reading costs the same whatever the window; a test compares it with the rule written with the windows themselves.
///
/// Memory is taken for samples held, not for the capacity, which may be any number. Not for several threads at once.
template <class Sample>
class Queue {
public:
    /// @param maxCount the capacity; a queue of capacity 0 stays empty
    explicit Queue(std::uint64_t maxCount) : maxCount_(maxCount) {}
    /// The same, by the name that the operation has.
    static Queue queueWithSize(std::uint64_t maxCount) { return Queue(maxCount); }

    /// Appends the newest sample; a full queue first discards the oldest one.
    void enqueue(const Sample& sample) {
        if (maxCount_ == 0) return;
        if (samples_.size() < maxCount_) {
            samples_.push_back(sample);
            return;
        }
        samples_[oldest_] = sample;
        oldest_ = oldest_ + 1 == samples_.size() ? 0 : oldest_ + 1;
    }

    [[nodiscard]] std::size_t count() const noexcept { return samples_.size(); }
    [[nodiscard]] std::uint64_t maxCount() const noexcept { return maxCount_; }
    /// The newest sample, or null of an empty queue.
    [[nodiscard]] const Sample* lastObject() const noexcept {
        return samples_.empty() ? nullptr : &(*this)[samples_.size() - 1];
    }
    /// `objectAtIndexedSubscript:`, 0 the oldest; `index` is below `count()`.
    [[nodiscard]] const Sample& operator[](std::size_t index) const noexcept {
        const std::size_t place = oldest_ + index;
        return samples_[place < samples_.size() ? place : place - samples_.size()];
    }

    /// Oldest first.
    class Iterator {
    public:
        Iterator(const Queue& queue, std::size_t index) : queue_(&queue), index_(index) {}
        const Sample& operator*() const { return (*queue_)[index_]; }
        Iterator& operator++() {
            ++index_;
            return *this;
        }
        friend bool operator==(const Iterator& left, const Iterator& right) { return left.index_ == right.index_; }

    private:
        const Queue* queue_;
        std::size_t index_;
    };
    [[nodiscard]] Iterator begin() const { return {*this, 0}; }
    [[nodiscard]] Iterator end() const { return {*this, count()}; }

private:
    std::uint64_t maxCount_;
    std::vector<Sample> samples_;
    std::size_t oldest_ = 0;
};

}  // namespace nearcast
