// SPDX-License-Identifier: Apache-2.0
#include "common/files/SettingsFile.h"

#include "common/Output.h"
#include "common/Words.h"
#include "lines/TextReader.h"
#include "platform/json/JSONSerialization.h"
#include "settings/SavedSettings.h"
#include "support/Printable.h"

#include <algorithm>
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

}  // namespace

CheckedSettings checkedSettings(const std::string& path) {
    const std::string content = contentOf(path);
    const auto parsed = JSONSerialization::parse(content);
    if (const auto* problem = std::get_if<JSONProblem>(&parsed)) {
        throw lines::InputError(path + ": " + notJSON(placeOf(content, problem->offset), problem->text));
    }
    try {
        auto registry = std::make_shared<const Settings>(loadedSettings(content, JSONSerialization()).value());
        return {std::move(registry), checkSettings(std::get<SettingValue>(parsed))};
    } catch (const std::invalid_argument& error) {
        throw lines::InputError(path + ": " + error.what());
    }
}

std::shared_ptr<const Settings> registryOfFile(const std::string& path, std::string_view command) {
    const CheckedSettings settings = checkedSettings(path);
    const std::size_t said = std::min(settings.findings.size(), mostSettingsFindings);
    for (std::size_t index = 0; index < said; ++index) {
        complain(command, settings.findings[index].inFile(path), exitGood);
    }
    if (const std::size_t more = settings.findings.size() - said; more != 0) {
        complain(command, path + ": and " + counted(more, "finding") + " more", exitGood);
    }
    return settings.registry;
}

std::string settingsFileOf(const Settings& registry) {
    const auto text = savedSettings(registry, JSONSerialization());
    if (!text) throw std::runtime_error("the settings hold what JSON cannot express");
    return printableJSON(*text) + "\n";
}

}  // namespace nearcast::cli
