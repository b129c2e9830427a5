// SPDX-License-Identifier: Apache-2.0
#include <nearcast/SettingsFile.h>

#include "application/KeptRecords.h"
#include "platform/json/JSONSerialization.h"
#include "platform/system/AtomicFile.h"
#include "platform/system/FileLock.h"
#include "platform/system/FileVersions.h"
#include "platform/system/TemporaryName.h"
#include "platform/system/WholeFile.h"
#include "settings/SavedSettings.h"
#include "support/Printable.h"

#include <utility>
#include <variant>

namespace nearcast {

namespace {

constexpr std::size_t largestFile = std::size_t{256} << 20;

/// A registry as it stands in a file, and as the manager reads it.
struct Content {
    std::optional<std::string> text;  ///< nothing: there is no file
    SettingValue::Dictionary members;
    Settings settings;
};

Content contentOf(const std::string& path) {
    Content content;
    content.text = readWholeFile(path, largestFile);
    if (!content.text) return content;
    auto parsed = JSONSerialization::parse(*content.text);
    if (const auto* problem = std::get_if<JSONProblem>(&parsed)) {
        throw SettingsFileError(path + ": " + notJSON(placeOf(*content.text, problem->offset), problem->text));
    }
    try {
        content.settings = settingsOf(std::get<SettingValue>(parsed));
    } catch (const std::invalid_argument& error) {
        throw SettingsFileError(path + ": " + error.what());
    }
    content.members = std::move(*std::get<SettingValue>(parsed).as<SettingValue::Dictionary>());
    return content;
}

void replace(const std::string& path, const std::string& text) {
    AtomicFile file(path, AtomicFile::Foreign::refused);
    file.write(text);
    file.commit();
}

}  // namespace

SettingsFileError::~SettingsFileError() = default;

struct SettingsFile::Change::State {
    explicit State(const std::string& name) : path(AtomicFile::followed(name)), lock(path), content(contentOf(path)) {}

    std::string path;
    FileLock lock;
    Content content;
    Settings edited = content.settings;
};

SettingsFile::Change::Change(const SettingsFile& file) : state_(std::make_unique<State>(file.path())) {}

SettingsFile::Change::~Change() = default;

Settings& SettingsFile::Change::settings() noexcept { return state_->edited; }

void SettingsFile::Change::commit() {
    Content& before = state_->content;
    Content after{.text = {}, .members = keptMembers(before.members, before.settings, state_->edited), .settings = {}};
    if (before.text && after.members == before.members) return;
    const JSONSerialization JSON;
    if (!JSON.isValidJSONObject(after.members)) {
        throw SettingsFileError(state_->path + ": the settings hold what JSON cannot express");
    }
    after.text = printableJSON(JSON.dataWithJSONObject(after.members)) + "\n";
    after.settings = state_->edited;
    TemporaryName::removeLeftovers(state_->path);
    if (before.text) FileVersions(state_->path, mostVersions).add(*before.text);
    replace(state_->path, *after.text);
    before = std::move(after);
}

SettingsFile::SettingsFile(std::string path) : path_(std::move(path)) {}

std::optional<Settings> SettingsFile::load() const {
    Content content = contentOf(path_);
    if (!content.text) return std::nullopt;
    return std::move(content.settings);
}

void SettingsFile::save(const Settings& settings) const {
    Change change(*this);
    change.settings() = settings;
    change.commit();
}

bool SettingsFile::undo() const {
    const std::string path = AtomicFile::followed(path_);
    const FileLock lock(path);
    const FileVersions versions(path, mostVersions);
    const auto present = readWholeFile(path, largestFile);
    const auto kept = versions.list();
    // A change that was cut off before the file was replaced has left what the file still holds.
    for (auto version = kept.rbegin(); version != kept.rend(); ++version) {
        const auto text = readWholeFile(version->path, largestFile);
        if (!text || text == present) continue;
        replace(path, *text);
        versions.removeFrom(version->number);
        return true;
    }
    return false;
}

std::size_t SettingsFile::undoable() const {
    return FileVersions(AtomicFile::followed(path_), mostVersions).list().size();
}

}  // namespace nearcast
