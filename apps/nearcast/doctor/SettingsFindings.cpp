// SPDX-License-Identifier: Apache-2.0
#include "doctor/SettingsFindings.h"

#include "common/Words.h"
#include "common/files/SettingsFile.h"

#include <algorithm>

namespace nearcast::cli {

std::vector<Finding> settingsFindings(const std::string& path) {
    const CheckedSettings settings = checkedSettings(path);
    if (settings.findings.empty()) {
        return {{Level::good, path + ": " + counted(settings.registry->size(), "device"), ""}};
    }
    std::vector<Finding> findings;
    const std::size_t said = std::min(settings.findings.size(), mostSettingsFindings);
    for (std::size_t index = 0; index < said; ++index) {
        findings.push_back({Level::remark, settings.findings[index].inFile(path), "correct it in the file"});
    }
    if (const std::size_t more = settings.findings.size() - said; more != 0) {
        findings.push_back({Level::remark, path + ": and " + counted(more, "finding") + " more", ""});
    }
    return findings;
}

}  // namespace nearcast::cli
