// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace nearcast {

/// Hashes what comes from the air, for the tables of the standard library: by a secret of the process (`hashFactor`),
/// so that nobody out there can choose texts or numbers that all fall on one place.
///
/// Not `noexcept`, though it never throws: so the library keeps a text's hash beside it, and neither a table that grows
/// nor a walk past other texts computes it again.
struct SecretHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const;
    std::size_t operator()(std::uint64_t number) const;
};

}  // namespace nearcast
