// SPDX-License-Identifier: Apache-2.0
#include <nearcast/PortException.h>

#include <utility>

namespace nearcast {

PortException::PortException(std::string name, std::string reason)
    : name_(std::move(name)), reason_(std::move(reason)) {}

PortException::~PortException() = default;

}  // namespace nearcast
