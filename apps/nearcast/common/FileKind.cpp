// SPDX-License-Identifier: Apache-2.0
#include "common/FileKind.h"

#include "common/SettingsFile.h"
#include "platform/replay/RecordingReader.h"
#include "platform/simulator/SceneReader.h"

#include <algorithm>
#include <array>
#include <exception>
#include <filesystem>
#include <fstream>

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

/// Lines hold no zero octet, and each capture's header does.
bool isCapture(const std::string& path) {
    std::array<char, 16> head{};
    const auto length = std::ifstream(path, std::ios::binary).read(head.data(), head.size()).gcount();
    if (std::count(head.begin(), head.begin() + length, '\0') == 0) return false;
    replay::openRecording(path);
    return true;
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
    if (reads([&] { return isCapture(path); })) return "; it is a capture, of which 'nearcast import' makes lines";
    return "";
}

}  // namespace nearcast::cli
