// SPDX-License-Identifier: Apache-2.0
#include "platform/system/FileVersions.h"

#include "platform/system/AtomicFile.h"
#include "platform/system/Companion.h"
#include "platform/system/TemporaryName.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <system_error>
#include <utility>

namespace nearcast {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t digits = 6;  // at least, so that a folder is listed in order

std::optional<std::uint64_t> numberOf(const std::string& name) {
    std::uint64_t number = 0;
    const char* const end = name.data() + name.size();
    const auto read = std::from_chars(name.data(), end, number);
    if (name.size() < digits || read.ec != std::errc() || read.ptr != end) return std::nullopt;
    return number;
}

std::string nameOf(std::uint64_t number) {
    std::string name = std::to_string(number);
    return std::string(digits - std::min(name.size(), digits), '0') + name;
}

[[noreturn]] void fail(int error, const std::string& what) {
    throw std::system_error(error, std::generic_category(), what);
}

}  // namespace

FileVersions::FileVersions(std::string path, std::size_t most)
    : path_(std::move(path)), folder_(companionOf(path_, "versions")), most_(most) {}

std::vector<FileVersions::Version> FileVersions::list() const {
    std::vector<Version> versions;
    std::error_code error;
    for (fs::directory_iterator entry(folder_, error), end; !error && entry != end; entry.increment(error)) {
        if (const auto number = numberOf(entry->path().filename().string())) {
            versions.push_back({*number, entry->path().string()});
        }
    }
    if (error && error != std::errc::no_such_file_or_directory) {
        throw std::system_error(error, folder_ + ": cannot be read");
    }
    std::sort(versions.begin(), versions.end(), [](const auto& a, const auto& b) { return a.number < b.number; });
    return versions;
}

void FileVersions::makeFolder() const {
    constexpr mode_t everybody = 0777;  // less what the process's mask takes away
    if (mkdir(folder_.c_str(), everybody) != 0) {
        if (errno == EEXIST) return;
        fail(errno, folder_ + ": cannot be made");
    }
    const int descriptor = open(folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor < 0) fail(errno, folder_ + ": cannot be opened");
    giveToOwnerOf(path_, descriptor);
    close(descriptor);
}

void FileVersions::add(std::string_view content) {
    makeFolder();
    const std::vector<Version> before = list();
    const std::uint64_t number = before.empty() ? 1 : before.back().number + 1;
    const std::string name = folder_ + "/" + nameOf(number);
    TemporaryName::removeLeftovers(name);
    AtomicFile file(name);
    file.alike(path_);
    file.write(content);
    file.commit();
    for (std::size_t index = 0; index + most_ <= before.size(); ++index) {
        if (unlink(before[index].path.c_str()) != 0) fail(errno, before[index].path + ": cannot be removed");
    }
}

void FileVersions::removeFrom(std::uint64_t number) const {
    for (const Version& version : list()) {
        if (version.number < number || unlink(version.path.c_str()) == 0) continue;
        fail(errno, version.path + ": cannot be removed");
    }
}

}  // namespace nearcast
