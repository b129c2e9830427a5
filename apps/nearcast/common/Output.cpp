// SPDX-License-Identifier: Apache-2.0
#include "common/Output.h"

#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace nearcast::cli {

namespace {

bool writtenInPlace(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

/// What a file made by `open` would be readable by.
mode_t ordinaryMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

}  // namespace

AtomicFile::AtomicFile(std::string path) : path_(std::move(path)) {
    if (writtenInPlace(path_)) {
        file_ = std::fopen(path_.c_str(), "wb");
    } else {
        temporary_ = path_ + ".XXXXXX";
        const int descriptor = mkstemp(temporary_.data());
        if (descriptor < 0) {
            temporary_.clear();
            fail("cannot be made");
        }
        fchmod(descriptor, ordinaryMode());
        file_ = fdopen(descriptor, "wb");
    }
    if (file_ == nullptr) fail("cannot be opened");
}

AtomicFile::~AtomicFile() {
    if (file_ != nullptr) std::fclose(file_);
    if (!temporary_.empty()) std::remove(temporary_.c_str());
}

void AtomicFile::fail(const char* what) const {
    throw std::system_error(errno, std::generic_category(), path_ + ": " + what);
}

void AtomicFile::write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) fail("cannot be written");
}

void AtomicFile::commit() {
    if (std::fflush(file_) != 0) fail("cannot be written");
    if (!temporary_.empty() && fsync(fileno(file_)) != 0) fail("cannot be written");
    std::FILE* file = file_;
    file_ = nullptr;
    if (std::fclose(file) != 0) fail("cannot be written");
    if (temporary_.empty()) return;
    if (std::rename(temporary_.c_str(), path_.c_str()) != 0) fail("cannot be replaced");
    temporary_.clear();
}

}  // namespace nearcast::cli
