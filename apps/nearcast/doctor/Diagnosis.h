// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/RadioHealth.h>

#include "common/UsageError.h"
#include "doctor/Checks.h"
#include "doctor/Hearing.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace nearcast::cli {

/// The result of `doctor`.
enum class Verdict : std::uint8_t {
    well,
    remarks,  ///< it works, but something could be better
    noScan,   ///< there is no working scan
};

/// Both remarks and the want of a scan are something for the user to do.
inline ExitStatus statusOf(Verdict verdict) { return verdict == Verdict::well ? exitGood : exitWanting; }

/// Everything that `doctor` has found.
struct Diagnosis {
    std::string radio;  ///< the radio string used
    std::vector<CheckedFinding> findings;
    std::optional<Hearing> hearing;  ///< nothing: the radio could not be opened, or is missing
    RadioHealth health;              ///< at the end of the scan
    bool failed = false;             ///< there is no radio, or what it played is damaged

    [[nodiscard]] Verdict verdict() const;
    /// Where there is no radio, the scan could not be tried at all; else the verdict.
    [[nodiscard]] int status() const;
};

/// One finding, with its advice on a line of its own.
std::string findingInColumns(const CheckedFinding& finding);
/// What was heard of each dongle.
std::string hearingInColumns(const Hearing& hearing);
std::string verdictInWords(Verdict verdict);
/// Everything as one JSON object on one line.
std::string diagnosisAsJSON(const Diagnosis& diagnosis);

}  // namespace nearcast::cli
