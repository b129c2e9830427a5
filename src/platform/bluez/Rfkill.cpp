// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/Rfkill.h"

#include <algorithm>
#include <fstream>
#include <system_error>

namespace nearcast::bluez {

namespace {

std::string firstWord(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::string word;
    stream >> word;
    return word;
}

/// Whether the switch is one that the adapter obeys: its own, or one that belongs to no adapter.
bool concerns(const std::filesystem::path& entry, std::string_view adapter) {
    if (firstWord(entry / "type") != "bluetooth") return false;
    const std::string name = firstWord(entry / "name");
    return name == adapter || !name.starts_with("hci");
}

Block blockOfSwitch(const std::filesystem::path& entry) {
    if (firstWord(entry / "hard") == "1") return Block::hard;
    return firstWord(entry / "soft") == "1" ? Block::soft : Block::none;
}

}  // namespace

Block Rfkill::blockOf(std::string_view adapter) const {
    Block result = Block::none;
    std::error_code none;
    for (std::filesystem::directory_iterator entry(folder_, none), end; !none && entry != end; entry.increment(none)) {
        if (concerns(entry->path(), adapter)) result = std::max(result, blockOfSwitch(entry->path()));
    }
    return result;
}

}  // namespace nearcast::bluez
