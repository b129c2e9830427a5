// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast {

/// The former contents of a file, octet by octet, each in a file of its own in a folder beside it:
/// ".devices.json.versions/000012". Whoever uses it holds the file's lock.
class FileVersions {
public:
    /// @param path of the file, with its links followed
    /// @param most that are kept; the oldest go first
    FileVersions(std::string path, std::size_t most);

    struct Version {
        std::uint64_t number = 0;
        std::string path;
    };
    /// The oldest first. What else lies in the folder is passed over.
    /// @throws std::system_error when the folder is there and cannot be read
    [[nodiscard]] std::vector<Version> list() const;
    /// Keeps a content as the newest version; on the disk when it returns.
    /// @throws std::system_error naming what cannot be written
    void add(std::string_view content);
    /// Forgets the versions from `number` on.
    /// @throws std::system_error naming what cannot be removed
    void removeFrom(std::uint64_t number) const;

private:
    void makeFolder() const;

    const std::string path_;
    const std::string folder_;
    const std::size_t most_;
};

}  // namespace nearcast
