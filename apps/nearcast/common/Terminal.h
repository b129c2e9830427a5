// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace nearcast::cli {

/// Whether the descriptor is a terminal on which what was written can be written over.
bool canDrawOver(int descriptor);

}  // namespace nearcast::cli
