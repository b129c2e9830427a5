// SPDX-License-Identifier: Apache-2.0
// Any bytes as HCI events and the advertisements in them.
#include "CheckHciEvents.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    nearcast::fuzz::checkHciEvents({data, size});
    return 0;
}
