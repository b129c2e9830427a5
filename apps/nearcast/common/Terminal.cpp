// SPDX-License-Identifier: Apache-2.0
#include "common/Terminal.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace nearcast::cli {

bool canDrawOver(int descriptor) {
    const char* const kind = std::getenv("TERM");
    if (kind == nullptr || *kind == '\0' || std::string_view(kind) == "dumb") return false;
    return isatty(descriptor) != 0;
}

}  // namespace nearcast::cli
