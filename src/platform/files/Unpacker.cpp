// SPDX-License-Identifier: Apache-2.0
#include "platform/files/ByteSource.h"

#define ZLIB_CONST
#include <zlib.h>
#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

namespace nearcast {

namespace {

constexpr std::array<std::uint8_t, 2> gzipMagic{0x1F, 0x8B};
constexpr std::size_t chunk = 65536;
constexpr int gzipOnly = 16 + MAX_WBITS;

class Unpacker {
public:
    Unpacker(ByteSource source, std::string name) : source_(std::move(source)), name_(std::move(name)) {}
    ~Unpacker() {
        if (form_ == Form::gzip) inflateEnd(&stream_);
    }
    Unpacker(const Unpacker&) = delete;
    Unpacker& operator=(const Unpacker&) = delete;

    std::size_t read(std::span<std::uint8_t> room) {
        if (form_ == Form::unknown) recognise();
        return form_ == Form::plain ? pass(room) : unpack(room);
    }

private:
    enum class Form { unknown, plain, gzip };

    void recognise();
    bool readMore();
    std::size_t pass(std::span<std::uint8_t> room);
    std::size_t unpack(std::span<std::uint8_t> room);
    std::size_t unpackSome(std::span<std::uint8_t> room);
    void beginNextMember();
    void refusePackedTwice(std::span<const std::uint8_t> unpacked);
    void damaged(std::string why) {
        damage_ = std::move(why);
        ended_ = true;
    }

    ByteSource source_;
    const std::string name_;
    Form form_ = Form::unknown;
    /// Packed bytes, or those that the form was told by; not yet used from `begin_` on.
    std::vector<std::uint8_t> held_;
    std::size_t begin_ = 0;
    bool sourceEnded_ = false;
    z_stream stream_{};
    bool ended_ = false;
    std::optional<std::string> damage_;
    std::vector<std::uint8_t> first_;  ///< the first bytes that came out, as many as tell gzip
};

/// Appends what the source has to what is held.
bool Unpacker::readMore() {
    if (sourceEnded_) return false;
    held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(std::exchange(begin_, 0)));
    const std::size_t before = held_.size();
    held_.resize(before + chunk);
    const std::size_t count = source_(std::span(held_).subspan(before));
    held_.resize(before + count);
    sourceEnded_ = count == 0;
    return !sourceEnded_;
}

void Unpacker::recognise() {
    while (held_.size() < gzipMagic.size() && readMore()) {
    }
    if (held_.size() < gzipMagic.size() || !std::equal(gzipMagic.begin(), gzipMagic.end(), held_.begin())) {
        form_ = Form::plain;
        return;
    }
    if (inflateInit2(&stream_, gzipOnly) != Z_OK) throw std::bad_alloc();
    form_ = Form::gzip;
}

std::size_t Unpacker::pass(std::span<std::uint8_t> room) {
    if (begin_ == held_.size()) return sourceEnded_ ? 0 : source_(room);
    const std::size_t count = std::min(room.size(), held_.size() - begin_);
    std::copy_n(held_.begin() + static_cast<std::ptrdiff_t>(begin_), count, room.begin());
    begin_ += count;
    return count;
}

std::size_t Unpacker::unpack(std::span<std::uint8_t> room) {
    std::size_t count = 0;
    while (count == 0 && !ended_) count = unpackSome(room);
    refusePackedTwice(room.first(count));
    if (count == 0 && damage_) throw PackedDamage(*std::exchange(damage_, std::nullopt));
    return count;
}

/// What is held goes first, for some of what was read before may not have come out yet.
std::size_t Unpacker::unpackSome(std::span<std::uint8_t> room) {
    stream_.next_in = held_.data() + begin_;
    stream_.avail_in = static_cast<uInt>(held_.size() - begin_);
    stream_.next_out = room.data();
    stream_.avail_out = static_cast<uInt>(std::min(room.size(), chunk));
    const std::size_t most = stream_.avail_out;
    const int result = inflate(&stream_, Z_NO_FLUSH);
    begin_ = held_.size() - stream_.avail_in;
    const std::size_t count = most - stream_.avail_out;
    if (result == Z_STREAM_END) {
        beginNextMember();
    } else if (result == Z_MEM_ERROR) {
        throw std::bad_alloc();
    } else if (result != Z_OK && result != Z_BUF_ERROR) {
        damaged(std::string("the gzip data are damaged: ") + (stream_.msg != nullptr ? stream_.msg : "no gzip"));
    } else if (count == 0 && begin_ == held_.size() && !readMore()) {
        ended_ = true;
        if (!inputsEnded()) damaged("the gzip data end before their end");
    }
    return count;
}

/// After a member come zeros at most, with which tapes are filled, or another member.
void Unpacker::beginNextMember() {
    do {
        while (begin_ < held_.size() && held_[begin_] == 0) ++begin_;
    } while (begin_ == held_.size() && readMore());
    if (begin_ == held_.size()) {
        ended_ = true;
    } else if (held_[begin_] != gzipMagic[0]) {
        damaged("what follows the gzip data is no gzip");
    } else {
        inflateReset(&stream_);
    }
}

void Unpacker::refusePackedTwice(std::span<const std::uint8_t> unpacked) {
    if (first_.size() == gzipMagic.size()) return;
    const auto some = unpacked.first(std::min(unpacked.size(), gzipMagic.size() - first_.size()));
    first_.insert(first_.end(), some.begin(), some.end());
    if (!std::equal(gzipMagic.begin(), gzipMagic.end(), first_.begin(), first_.end())) return;
    ended_ = true;
    throw std::invalid_argument(name_ + ": is packed by gzip more than once; unpack it first");
}

}  // namespace

ByteSource unpacked(ByteSource source, const std::string& name) {
    return [unpacker = std::make_shared<Unpacker>(std::move(source), name)](std::span<std::uint8_t> room) {
        return unpacker->read(room);
    };
}

}  // namespace nearcast
