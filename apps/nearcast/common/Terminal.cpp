// SPDX-License-Identifier: Apache-2.0
#include "common/Terminal.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace nearcast::cli {

bool canDrawOver(int descriptor) {
    const char* const kind = std::getenv("TERM");
    const bool dumb = kind != nullptr && std::string_view(kind) == "dumb";
    return !dumb && isatty(descriptor) != 0;
}

}  // namespace nearcast::cli
