// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/controller/Bytes.h"

#include <optional>

namespace nearcast::lab {

/// What a controller without Low Energy is asked when a host brings it up: the answer's parameters; nothing for what it
/// does not know. It hears nothing and connects to nobody.
std::optional<Packet> answerClassic(unsigned opcode);

}  // namespace nearcast::lab
