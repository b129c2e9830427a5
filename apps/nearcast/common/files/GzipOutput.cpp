// SPDX-License-Identifier: Apache-2.0
#include "common/files/GzipOutput.h"

#define ZLIB_CONST
#include <zlib.h>
#include <algorithm>
#include <array>
#include <new>
#include <utility>

namespace nearcast::cli {

namespace {

constexpr int gzipForm = 16 + MAX_WBITS;
constexpr int ordinaryMemory = 8;
constexpr std::size_t longestPiece = std::size_t{1} << 30;  // what the library counts with 32 bits

}  // namespace

struct GzipOutput::Stream {
    z_stream state{};

    Stream() {
        if (deflateInit2(&state, Z_DEFAULT_COMPRESSION, Z_DEFLATED, gzipForm, ordinaryMemory, Z_DEFAULT_STRATEGY) !=
            Z_OK) {
            throw std::bad_alloc();
        }
    }
    ~Stream() { deflateEnd(&state); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    /// Hands out what comes of the input that was set.
    void run(int flush, const Out& out) {
        std::array<char, 16384> packed{};
        do {
            state.next_out = reinterpret_cast<Bytef*>(packed.data());
            state.avail_out = static_cast<uInt>(packed.size());
            deflate(&state, flush);
            const std::size_t count = packed.size() - state.avail_out;
            if (count != 0) out({packed.data(), count});
        } while (state.avail_out == 0);
    }
};

GzipOutput::GzipOutput(Out out, bool eachAtOnce)
    : out_(std::move(out)), eachAtOnce_(eachAtOnce), stream_(std::make_unique<Stream>()) {}

GzipOutput::~GzipOutput() = default;

void GzipOutput::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const std::string_view piece = bytes.substr(0, longestPiece);
        bytes.remove_prefix(piece.size());
        stream_->state.next_in = reinterpret_cast<const Bytef*>(piece.data());
        stream_->state.avail_in = static_cast<uInt>(piece.size());
        stream_->run(eachAtOnce_ && bytes.empty() ? Z_SYNC_FLUSH : Z_NO_FLUSH, out_);
    }
}

void GzipOutput::finish() {
    stream_->state.avail_in = 0;
    stream_->run(Z_FINISH, out_);
}

}  // namespace nearcast::cli
