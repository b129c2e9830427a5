// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/LogWriter.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace nearcast {

/// A record with its texts, which it keeps in one buffer that is used again and again.
class OwnedRecord {
public:
    OwnedRecord() = default;
    explicit OwnedRecord(const LogRecord& record) { assign(record); }

    /// @throws std::bad_alloc; the record is then as it was
    void assign(const LogRecord& record);
    /// The record; its texts are valid until this object changes.
    [[nodiscard]] LogRecord view() const;
    void swap(OwnedRecord& other) noexcept;
    /// Gives memory back when one long text took much of it.
    void trim() noexcept;

private:
    LogRecord fields_;  ///< its texts are not used
    std::size_t fileNameLength_ = 0;
    std::size_t methodNameLength_ = 0;
    std::string texts_;  ///< file name, method name and text, one after the other
};

/// A bounded queue of records without locks: many threads push, one pops.
///
/// Each cell carries a turn: even when it is free for that round of the ring, odd when it is filled. A thread that
/// pushes claims a place by moving the tail, fills the cell and publishes it by its turn, so that nobody waits for
/// anybody: a full ring refuses at once.
class RecordRing {
public:
    enum class Push {
        taken,
        full,
        outOfMemory,  ///< the place that was claimed is passed over by `pop`
    };
    enum class Pop {
        record,
        gap,    ///< a place without a record, see `Push::outOfMemory`
        empty,  ///< nothing is published at the front
    };

    /// @param capacity a power of two
    explicit RecordRing(std::size_t capacity);

    /// Copies a record in. From any thread.
    Push push(const LogRecord& record) noexcept;
    /// Takes the oldest record out. One thread only.
    Pop pop(OwnedRecord& record) noexcept;
    /// Whether `pop` would find something. For the thread that pops.
    ///
    /// Sequentially consistent with `push`: a thread that announces its sleep and then sees nothing here is seen
    /// asleep by whoever pushes next.
    [[nodiscard]] bool ready() const noexcept;
    /// How many places have been claimed since the beginning.
    [[nodiscard]] std::uint64_t claimed() const noexcept { return tail_.load(); }
    /// How many places have been passed by `pop`. For the thread that pops.
    [[nodiscard]] std::uint64_t popped() const noexcept { return head_; }

private:
    static constexpr std::size_t cacheLine = 64;
    struct Cell {
        std::atomic<std::uint64_t> turn{0};
        bool gap = false;
        OwnedRecord record;
    };

    [[nodiscard]] Cell& cell(std::uint64_t place) const noexcept { return cells_[place & mask_]; }
    [[nodiscard]] std::uint64_t turn(std::uint64_t place) const noexcept { return (place >> shift_) * 2; }

    std::uint64_t mask_;
    int shift_;
    std::unique_ptr<Cell[]> cells_;
    alignas(cacheLine) std::atomic<std::uint64_t> tail_{0};
    alignas(cacheLine) std::uint64_t head_ = 0;
};

}  // namespace nearcast
