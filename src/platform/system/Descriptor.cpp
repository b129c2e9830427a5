// SPDX-License-Identifier: Apache-2.0
#include "platform/system/Descriptor.h"

#include <unistd.h>
#include <cerrno>
#include <system_error>

namespace nearcast {

Descriptor::Descriptor(int value, const char* what) : value_(value) {
    if (value < 0) throw std::system_error(errno, std::generic_category(), what);
}

Descriptor::~Descriptor() { close(value_); }

}  // namespace nearcast
