// SPDX-License-Identifier: Apache-2.0
#include "common/Output.h"

#include "support/Printable.h"

#include <cerrno>
#include <exception>
#include <system_error>
#include <utility>

namespace nearcast::cli {

namespace {

/// Throws what `errno` says of a file.
[[noreturn]] void fail(const std::string& path, const char* what) {
    throw std::system_error(errno, std::generic_category(), path + ": " + what);
}

[[noreturn]] void failOut() { throw OutputError(errno, std::generic_category(), "standard output cannot be written"); }

std::string lineFor(std::string_view command, std::string_view problem) {
    std::string line = "nearcast";
    if (!command.empty()) line.append(" ").append(command);
    return line.append(": ").append(printable(problem)).append("\n");
}

}  // namespace

void writeOut(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) failOut();
}

void finishOut() {
    if (std::fflush(stdout) != 0) failOut();
}

int complain(std::string_view command, std::string_view problem, ExitStatus status) noexcept {
    std::fflush(stdout);
    try {
        std::fputs(lineFor(command, problem).c_str(), stderr);
    } catch (const std::exception&) {
        std::fputs("nearcast: there is not enough memory\n", stderr);
    }
    return status;
}

GrowingFile::GrowingFile(std::string path) : path_(std::move(path)), file_(std::fopen(path_.c_str(), "wbe")) {
    if (!file_) fail(path_, "cannot be opened");
}

void GrowingFile::write(std::string_view bytes) {
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) == bytes.size();
    if (!written || std::fflush(file_.get()) != 0) fail(path_, "cannot be written");
}

}  // namespace nearcast::cli
