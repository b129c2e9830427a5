// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "evaluate/Evaluation.h"

#include <string>

namespace nearcast::cli {

/// The evaluation as a page of HTML that needs nothing beside itself: charts and tables.
std::string pageOf(const Evaluation& evaluation);

}  // namespace nearcast::cli
