// SPDX-License-Identifier: Apache-2.0
#include <nearcast/PortException.h>

#include <utility>

namespace nearcast {

PortException::PortException(std::string name, std::string reason, std::string portName, std::string MACAddr)
    : name_(std::move(name)),
      reason_(std::move(reason)),
      portName_(std::move(portName)),
      MACAddr_(std::move(MACAddr)) {}

PortException::~PortException() = default;

}  // namespace nearcast
