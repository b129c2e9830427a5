// SPDX-License-Identifier: Apache-2.0
// Any bytes as a recording: all containers, link layers and lines.
#include "CheckRecording.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    nearcast::fuzz::checkRecording({data, size});
    return 0;
}
