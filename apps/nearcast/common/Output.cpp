// SPDX-License-Identifier: Apache-2.0
#include "common/Output.h"

#include "common/Words.h"
#include "support/Mutex.h"
#include "support/Printable.h"

#include <sys/ioctl.h>
#include <unistd.h>
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

constexpr const char* wiped = "\r\x1b[K";

/// Standard error, where it holds a line that is no message. Never destroyed: a radio's thread may have something to
/// say until the very end of the process.
struct DrawnLine {
    Mutex mutex;
    bool there NEARCAST_GUARDED_BY(mutex) = false;
};

DrawnLine& drawnLine() {
    static auto& one = *new DrawnLine;
    return one;
}

std::size_t columnsOfTheTerminal() {
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0 ? size.ws_col : 80;
}

/// Prints lines in place of the drawn one.
void printOver(const char* lines) {
    DrawnLine& line = drawnLine();
    const MutexLock lock(line.mutex);
    if (std::exchange(line.there, false)) std::fputs(wiped, stderr);
    std::fputs(lines, stderr);
}

}  // namespace

void drawLine(std::string_view text) {
    // In the last column some terminals go on to the next line.
    std::string cut = column(text, columnsOfTheTerminal() - 1);
    cut.erase(cut.find_last_not_of(' ') + 1);
    cut.insert(0, wiped);
    DrawnLine& line = drawnLine();
    const MutexLock lock(line.mutex);
    line.there = true;
    std::fputs(cut.c_str(), stderr);
    std::fflush(stderr);
}

void wipeLine() {
    printOver("");
    std::fflush(stderr);
}

bool isTerminal(const std::string& output) { return isStandardOutput(output) && isatty(STDOUT_FILENO) != 0; }

std::string problemWithOutput(const std::string& text) { return text.empty() ? "is empty" : ""; }

void sayWritten(std::string_view command, const std::string& output, const std::string& what) {
    const std::string name = isStandardOutput(output) ? "standard output" : output;
    complain(command, "wrote " + name + ": " + what, exitGood);
}

void writeOut(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) failOut();
}

void finishOut() {
    if (std::fflush(stdout) != 0) failOut();
}

int complain(std::string_view command, std::string_view problem, ExitStatus status) noexcept {
    std::fflush(stdout);
    try {
        printOver(lineFor(command, problem).c_str());
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
