// SPDX-License-Identifier: Apache-2.0
// Any controller, and anything that may happen to it.
#include "CheckHciSession.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    nearcast::fuzz::checkHciSession({data, size});
    return 0;
}
