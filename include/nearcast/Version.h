// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Export.h>

#include <string_view>

/// The version of these headers, in numbers. Before 1.0 another minor version may change the interface.
#define NEARCAST_VERSION_MAJOR 0
#define NEARCAST_VERSION_MINOR 1
#define NEARCAST_VERSION_PATCH 0
/// The same as one number to compare: `#if NEARCAST_VERSION >= NEARCAST_MAKE_VERSION(0, 2, 0)`.
#define NEARCAST_MAKE_VERSION(major, minor, patch) ((major)*1000000 + (minor)*1000 + (patch))
#define NEARCAST_VERSION NEARCAST_MAKE_VERSION(NEARCAST_VERSION_MAJOR, NEARCAST_VERSION_MINOR, NEARCAST_VERSION_PATCH)

namespace nearcast {

/// The version of the library that runs, which may be newer than the headers: "0.1.0". From any thread.
NEARCAST_EXPORT std::string_view version() noexcept;

}  // namespace nearcast
