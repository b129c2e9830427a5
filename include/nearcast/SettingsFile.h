// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Export.h>
#include <nearcast/SettingRecord.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace nearcast {

/// A settings file holds something that is no registry. Its text names the file and what is wrong where:
/// "devices.json: not JSON at line 3, column 7: ...".
class NEARCAST_EXPORT SettingsFileError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    ~SettingsFileError() override;
};

/// A registry in a file, as `QXNearcastManager::serializedSettings` writes it (docs/settings-format.md), kept safe:
///
/// - A change replaces the file in one step, on the disk when it returns: whoever reads, and whenever the power goes,
///   finds the old content or the new one. Owner and permissions stay, and so does a symbolic link that leads to it.
/// - One changes it at a time; another who tries meanwhile is refused.
/// - The last ten contents are kept, octet by octet, for `undo`.
/// - A damaged file is never overwritten.
/// - What was not changed stays as it stood: other records, keys that Nearcast does not know, device types whose word
///   it does not know.
///
/// Beside "devices.json" stand ".devices.json.lock" and the folder ".devices.json.versions".
///
/// @code
/// nearcast::SettingsFile file("devices.json");
/// if (auto settings = file.load()) manager.setSettings(std::move(*settings));
/// ...
/// file.save(*manager.getSettings());
/// @endcode
///
/// It holds nothing but the path: one object may be used by several threads, and several objects for one file.
class NEARCAST_EXPORT SettingsFile {
public:
    /// How many former contents are kept.
    static constexpr std::size_t mostVersions = 10;

    /// @param path of the file, which need not be there yet; its folder must
    explicit SettingsFile(std::string path);

    /// As it was given.
    [[nodiscard]] const std::string& path() const noexcept { return path_; }

    /// Reads the registry; nothing where there is no file. Others may change the file meanwhile.
    /// @throws SettingsFileError when it holds no registry
    /// @throws std::system_error naming the file when it cannot be read
    [[nodiscard]] std::optional<Settings> load() const;

    /// Makes the file hold this registry. Of a record that the file has, only the keys whose values differ are written
    /// anew. Where nothing differs, the file stays untouched.
    /// @throws SettingsFileError when the file holds no registry, or `settings` what JSON cannot express (bytes, a
    ///         number that is not finite, text that is not UTF-8); the file is unchanged
    /// @throws std::system_error naming the file when it, its lock or its versions cannot be written; when it belongs
    /// to
    ///         another user, whose it could not stay; `std::errc::operation_would_block` while another changes it. The
    ///         file is unchanged
    void save(const Settings& settings) const;

    /// Brings back the content before the last change, octet by octet; that change is then forgotten.
    /// @return false when there is none
    /// @throws std::system_error as `save`
    bool undo() const;
    /// How many changes `undo` can take back.
    /// @throws std::system_error when that cannot be read
    [[nodiscard]] std::size_t undoable() const;

    /// A change of the file in steps: read, edit, `commit`. Nobody else can change the file while it lives.
    ///
    /// @code
    /// nearcast::SettingsFile::Change change(file);
    /// change.settings()["BT:Front"] = nearcast::withThreshold(*change.settings().at("BT:Front"), -60);
    /// change.commit();
    /// @endcode
    class NEARCAST_EXPORT Change {
    public:
        /// Locks and reads the file; the registry is empty where there is none.
        /// @throws as `load`, and std::system_error as `save`
        explicit Change(const SettingsFile& file);
        ~Change();
        Change(const Change&) = delete;
        Change& operator=(const Change&) = delete;

        /// The registry, to be edited.
        [[nodiscard]] Settings& settings() noexcept;
        /// Writes it as `save` does. May be called again after further edits.
        /// @throws as `save`
        void commit();

    private:
        struct State;
        std::unique_ptr<State> state_;
    };

private:
    std::string path_;
};

}  // namespace nearcast
