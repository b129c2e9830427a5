// SPDX-License-Identifier: Apache-2.0
#include "common/Output.h"

#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace nearcast::cli {

namespace {

/// Throws what `errno` says of a file.
[[noreturn]] void fail(const std::string& path, const char* what) {
    throw std::system_error(errno, std::generic_category(), path + ": " + what);
}

[[noreturn]] void failOut() {
    throw std::system_error(errno, std::generic_category(), "standard output cannot be written");
}

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

void writeOut(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) failOut();
}

void finishOut() {
    if (std::fflush(stdout) != 0) failOut();
}

int complain(std::string_view command, std::string_view problem, ExitStatus status) {
    std::fflush(stdout);
    const std::string line = "nearcast" + (command.empty() ? "" : " " + std::string(command)) + ": ";
    std::fprintf(stderr, "%s%.*s\n", line.c_str(), static_cast<int>(problem.size()), problem.data());
    return status;
}

AtomicFile::AtomicFile(std::string path) : path_(std::move(path)) {
    if (writtenInPlace(path_)) {
        file_ = std::fopen(path_.c_str(), "wb");
    } else {
        temporary_ = path_ + ".XXXXXX";
        const int descriptor = mkstemp(temporary_.data());
        if (descriptor < 0) {
            temporary_.clear();
            fail(path_, "cannot be made");
        }
        fchmod(descriptor, ordinaryMode());
        file_ = fdopen(descriptor, "wb");
    }
    if (file_ == nullptr) fail(path_, "cannot be opened");
}

AtomicFile::~AtomicFile() {
    if (file_ != nullptr) std::fclose(file_);
    if (!temporary_.empty()) std::remove(temporary_.c_str());
}

void AtomicFile::write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) fail(path_, "cannot be written");
}

void AtomicFile::commit() {
    if (std::fflush(file_) != 0) fail(path_, "cannot be written");
    if (!temporary_.empty() && fsync(fileno(file_)) != 0) fail(path_, "cannot be written");
    std::FILE* file = std::exchange(file_, nullptr);
    if (std::fclose(file) != 0) fail(path_, "cannot be written");
    if (temporary_.empty()) return;
    if (std::rename(temporary_.c_str(), path_.c_str()) != 0) fail(path_, "cannot be replaced");
    temporary_.clear();
}

GrowingFile::GrowingFile(std::string path) : path_(std::move(path)), file_(std::fopen(path_.c_str(), "wbe")) {
    if (!file_) fail(path_, "cannot be opened");
}

void GrowingFile::write(std::string_view bytes) {
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) == bytes.size();
    if (!written || std::fflush(file_.get()) != 0) fail(path_, "cannot be written");
}

}  // namespace nearcast::cli
