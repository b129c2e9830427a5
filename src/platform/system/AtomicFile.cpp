// SPDX-License-Identifier: Apache-2.0
#include "platform/system/AtomicFile.h"

#include "platform/system/Companion.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

namespace nearcast {

namespace {

namespace fs = std::filesystem;

std::optional<struct stat> statusOf(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? std::optional(status) : std::nullopt;
}

/// What a file made by `open` would be readable by.
mode_t ordinaryMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

std::string AtomicFile::followed(const std::string& path) {
    constexpr int mostLinks = 40;  // as the kernel's
    std::error_code none;
    fs::path place = path;
    for (int links = 0; links < mostLinks && fs::is_symlink(place, none); ++links) {
        place = place.parent_path() / fs::read_symlink(place, none);
    }
    return place.string();
}

AtomicFile::AtomicFile(std::string path, Foreign foreign) : path_(std::move(path)), target_(followed(path_)) {
    std::error_code none;
    if (fs::is_symlink(target_, none)) {
        errno = ELOOP;
        fail("cannot be made");
    }
    const auto before = statusOf(target_);
    if (before && !S_ISREG(before->st_mode)) {
        openInPlace();
    } else {
        openBeside(foreign);
    }
}

void AtomicFile::openInPlace() {
    file_.reset(std::fopen(target_.c_str(), "wbe"));
    if (!file_) fail("cannot be opened");
}

void AtomicFile::openBeside(Foreign foreign) {
    try {
        temporary_.emplace(target_);
    } catch (const std::system_error& error) {
        errno = error.code().value();
        fail("cannot be made");
    }
    file_.reset(fdopen(temporary_->descriptor(), "wb"));
    if (!file_) {
        close(temporary_->descriptor());
        fail("cannot be opened");
    }
    copied_ = !takeOver(temporary_->descriptor());
    if (copied_ && foreign == Foreign::refused) {
        errno = EPERM;
        fail("belongs to somebody else, which it would not afterwards");
    }
    if (copied_ && access(target_.c_str(), W_OK) != 0) fail("cannot be written");
}

/// Gives the new file the mode and the owner of the old one. @return whether it has them
bool AtomicFile::takeOver(int descriptor) const {
    const auto before = statusOf(target_);
    if (!before) {
        fchmod(descriptor, ordinaryMode());
        return true;
    }
    struct stat now {};
    if (fstat(descriptor, &now) != 0) return false;
    const bool owned = now.st_uid == before->st_uid && now.st_gid == before->st_gid;
    if (!owned && fchown(descriptor, before->st_uid, before->st_gid) != 0) return false;
    return fchmod(descriptor, before->st_mode & 07777U) == 0;  // after the owner, whose change takes bits away
}

void AtomicFile::alike(const std::string& other) noexcept {
    struct stat status {};
    if (stat(other.c_str(), &status) != 0) return;
    giveToOwnerOf(other, fileno(file_.get()));
    fchmod(fileno(file_.get()), status.st_mode & 0777U);
}

void AtomicFile::write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), file_.get()) != text.size()) fail("cannot be written");
}

void AtomicFile::commit() {
    if (copied_) {
        if (std::fflush(file_.get()) != 0) fail("cannot be written");
        copyInto();
        file_.reset();
    } else {
        finish(std::move(file_), temporary_.has_value());
        if (temporary_ && std::rename(temporary_->path().c_str(), target_.c_str()) != 0) fail("cannot be replaced");
        if (temporary_) keepName();
    }
    temporary_.reset();
}

void AtomicFile::finish(File file, bool toTheDisk) const {
    if (std::fflush(file.get()) != 0) fail("cannot be written");
    if (toTheDisk && fsync(fileno(file.get())) != 0) fail("cannot be written");
    if (std::fclose(file.release()) != 0) fail("cannot be written");
}

void AtomicFile::copyInto() const {
    const File from(std::fopen(temporary_->path().c_str(), "rbe"));
    File to(std::fopen(target_.c_str(), "wbe"));
    if (!from || !to) fail("cannot be replaced");
    std::array<char, 1 << 16> part{};
    while (const std::size_t length = std::fread(part.data(), 1, part.size(), from.get())) {
        if (std::fwrite(part.data(), 1, length, to.get()) != length) fail("cannot be written");
    }
    if (std::ferror(from.get()) != 0) fail("cannot be replaced");
    finish(std::move(to), true);
}

/// The folder holds the name. Some file systems cannot write a folder out, and need not.
void AtomicFile::keepName() const {
    const std::string folder = fs::path(target_).parent_path().string();
    const int descriptor = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;  // a folder that may be written and not read
    const int result = fsync(descriptor);
    const int error = errno;
    close(descriptor);
    if (result == 0 || error == EINVAL || error == ENOTSUP) return;
    errno = error;
    fail("cannot be written");
}

void AtomicFile::fail(const char* what) const {
    throw std::system_error(errno, std::generic_category(), path_ + ": " + what);
}

}  // namespace nearcast
