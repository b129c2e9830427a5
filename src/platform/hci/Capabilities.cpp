// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/Capabilities.h"

#include <filesystem>
#include <fstream>
#include <system_error>

namespace nearcast {

namespace {

// capabilities(7): the numbers of the bits.
constexpr unsigned netAdminBit = 12;
constexpr unsigned netRawBit = 13;

}  // namespace

Capabilities ownCapabilities(const std::string& status) {
    std::ifstream file(status);
    std::string word;
    while (file >> word) {
        if (word != "CapEff:") continue;
        unsigned long long effective = 0;
        if (!(file >> std::hex >> effective)) break;
        return {(effective >> netAdminBit & 1) != 0, (effective >> netRawBit & 1) != 0};
    }
    return {};
}

std::string ownProgram() {
    std::error_code unknown;
    const auto path = std::filesystem::read_symlink("/proc/self/exe", unknown);
    return unknown ? "PROGRAM" : path.string();
}

}  // namespace nearcast
