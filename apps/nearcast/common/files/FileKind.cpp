// SPDX-License-Identifier: Apache-2.0
#include "common/files/FileKind.h"

#include "common/files/SettingsFile.h"
#include "platform/simulator/SceneReader.h"

#include <exception>
#include <filesystem>

namespace nearcast::cli {

namespace {

/// Whether the reader takes it.
template <class Reader>
bool reads(const Reader& reader) {
    try {
        return reader();
    } catch (const std::exception&) {
        return false;
    }
}

bool isScene(const std::string& path) {
    simulator::readSceneFile(path);
    return true;
}

bool isSettings(const std::string& path) { return !checkedSettings(path).registry->empty(); }

}  // namespace

std::string whatItIs(const std::string& path) {
    std::error_code none;
    if (!std::filesystem::is_regular_file(path, none)) return "";  // a pipe would be read for good
    if (reads([&] { return isScene(path); })) return "; it is a scene, for --radio simulator:" + path;
    if (reads([&] { return isSettings(path); })) return "; it is a settings file, for --settings";
    return "";
}

}  // namespace nearcast::cli
