// SPDX-License-Identifier: Apache-2.0
#include "common/SettingsFile.h"

#include "lines/TextReader.h"
#include "platform/json/JSONSerialization.h"
#include "settings/SavedSettings.h"
#include "support/Printable.h"

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

namespace nearcast::cli {

namespace {

constexpr std::size_t largestFile = std::size_t{256} << 20;

std::string contentOf(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
    if (file == nullptr) throw std::system_error(errno, std::generic_category(), path + ": cannot be opened");
    std::string content;
    std::string chunk(std::size_t{1} << 16, '\0');
    while (const std::size_t got = std::fread(chunk.data(), 1, chunk.size(), file.get())) {
        content.append(chunk, 0, got);
        if (content.size() > largestFile) throw lines::InputError(path + ": is larger than 256 MiB");
    }
    if (std::ferror(file.get()) != 0)
        throw std::system_error(errno, std::generic_category(), path + ": cannot be read");
    return content;
}

/// "line 3, column 7" of an offset.
std::string placeOf(std::string_view content, std::size_t offset) {
    std::size_t line = 1;
    std::size_t start = 0;
    for (std::size_t place = 0; place < offset && place < content.size(); ++place) {
        if (content[place] != '\n') continue;
        ++line;
        start = place + 1;
    }
    return "line " + std::to_string(line) + ", column " + std::to_string(offset - start + 1);
}

}  // namespace

std::shared_ptr<const Settings> registryOfFile(const std::string& path) {
    const std::string content = contentOf(path);
    try {
        if (auto settings = loadedSettings(content, JSONSerialization())) {
            return std::make_shared<const Settings>(*std::move(settings));
        }
    } catch (const std::invalid_argument& error) {
        throw lines::InputError(path + ": " + error.what());
    }
    const auto parsed = JSONSerialization::parse(content);
    const auto* problem = std::get_if<JSONProblem>(&parsed);
    throw lines::InputError(path + ": is not JSON, " +
                            (problem != nullptr ? placeOf(content, problem->offset) + ": " + problem->text : ""));
}

std::string settingsFileOf(const Settings& registry) {
    const auto text = savedSettings(registry, JSONSerialization());
    if (!text) throw std::runtime_error("the settings hold what JSON cannot express");
    return printableJSON(*text) + "\n";
}

}  // namespace nearcast::cli
