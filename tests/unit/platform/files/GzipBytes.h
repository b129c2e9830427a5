// SPDX-License-Identifier: Apache-2.0
#pragma once

#define ZLIB_CONST
#include <zlib.h>
#include <stdexcept>
#include <string>
#include <string_view>

// Packed bytes for tests, made by the library itself and not by what is tested.

namespace nearcast {

/// One member of gzip.
inline std::string gzipped(std::string_view bytes) {
    z_stream state{};
    if (deflateInit2(&state, 9, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY) != Z_OK) {
        throw std::runtime_error("zlib has no memory");
    }
    std::string packed(deflateBound(&state, static_cast<uLong>(bytes.size())) + 32, '\0');
    state.next_in = reinterpret_cast<const Bytef*>(bytes.data());
    state.avail_in = static_cast<uInt>(bytes.size());
    state.next_out = reinterpret_cast<Bytef*>(packed.data());
    state.avail_out = static_cast<uInt>(packed.size());
    const int result = deflate(&state, Z_FINISH);
    packed.resize(packed.size() - state.avail_out);
    deflateEnd(&state);
    if (result != Z_STREAM_END) throw std::runtime_error("zlib did not pack");
    return packed;
}

}  // namespace nearcast
