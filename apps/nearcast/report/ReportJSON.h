// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "report/ReportData.h"

#include <string>

namespace nearcast::cli {

/// The data as the page reads it (docs/reports.md): JSON that may stand inside a `script` element, whatever the names
/// in it are. Text that is not UTF-8 is written with the replacement character. Columns hold whole numbers, each as its
/// difference from the one before.
/// @param program which program wrote it
std::string reportJSON(const ReportData& data, const std::string& program);

}  // namespace nearcast::cli
