// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Version.h>

#define NEARCAST_TEXT_OF(number) #number
#define NEARCAST_VERSION_TEXT(major, minor, patch) \
    NEARCAST_TEXT_OF(major) "." NEARCAST_TEXT_OF(minor) "." NEARCAST_TEXT_OF(patch)

namespace nearcast {

std::string_view version() noexcept {
    return NEARCAST_VERSION_TEXT(NEARCAST_VERSION_MAJOR, NEARCAST_VERSION_MINOR, NEARCAST_VERSION_PATCH);
}

}  // namespace nearcast
