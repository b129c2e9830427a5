// SPDX-License-Identifier: Apache-2.0
#include "support/log/RecordRing.h"

#include <bit>
#include <utility>

namespace nearcast {

void OwnedRecord::assign(const LogRecord& record) {
    texts_.reserve(record.fileName.size() + record.methodName.size() + record.anyString.size());
    texts_.assign(record.fileName);
    texts_.append(record.methodName);
    texts_.append(record.anyString);
    fileNameLength_ = record.fileName.size();
    methodNameLength_ = record.methodName.size();
    fields_ = record;
}

LogRecord OwnedRecord::view() const {
    LogRecord record = fields_;
    const std::string_view texts = texts_;
    record.fileName = texts.substr(0, fileNameLength_);
    record.methodName = texts.substr(fileNameLength_, methodNameLength_);
    record.anyString = texts.substr(fileNameLength_ + methodNameLength_);
    return record;
}

void OwnedRecord::swap(OwnedRecord& other) noexcept {
    std::swap(fields_, other.fields_);
    std::swap(fileNameLength_, other.fileNameLength_);
    std::swap(methodNameLength_, other.methodNameLength_);
    texts_.swap(other.texts_);
}

void OwnedRecord::trim() noexcept {
    constexpr std::size_t usual = 4096;
    if (texts_.capacity() > usual) *this = OwnedRecord();
}

RecordRing::RecordRing(std::size_t capacity)
    : mask_(capacity - 1), shift_(std::countr_zero(capacity)), cells_(std::make_unique<Cell[]>(capacity)) {}

RecordRing::Push RecordRing::push(const LogRecord& record) noexcept {
    std::uint64_t place = tail_.load(std::memory_order_relaxed);
    while (true) {
        if (cell(place).turn.load(std::memory_order_acquire) == turn(place)) {
            if (tail_.compare_exchange_weak(place, place + 1)) break;
        } else {
            const std::uint64_t seen = std::exchange(place, tail_.load(std::memory_order_relaxed));
            if (seen == place) return Push::full;
        }
    }
    Cell& mine = cell(place);
    try {
        mine.record.assign(record);
        mine.gap = false;
    } catch (...) {
        mine.gap = true;
    }
    const bool gap = mine.gap;  // once it is published the cell is no longer this thread's
    mine.turn.store(turn(place) + 1);
    return gap ? Push::outOfMemory : Push::taken;
}

RecordRing::Pop RecordRing::pop(OwnedRecord& record) noexcept {
    Cell& front = cell(head_);
    if (front.turn.load(std::memory_order_acquire) != turn(head_) + 1) return Pop::empty;
    const bool gap = front.gap;
    if (!gap) record.swap(front.record);
    front.turn.store(turn(head_) + 2, std::memory_order_release);
    ++head_;
    return gap ? Pop::gap : Pop::record;
}

bool RecordRing::ready() const noexcept { return cell(head_).turn.load() == turn(head_) + 1; }

}  // namespace nearcast
