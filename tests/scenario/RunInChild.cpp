// SPDX-License-Identifier: Apache-2.0
#include "scenario/RunInChild.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <system_error>

namespace nearcast::scenario {

namespace {

[[noreturn]] void fail(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

/// A file without a name, which parent and child share.
class SharedFile {
public:
    SharedFile() : descriptor_(memfd_create("nearcast", 0)) {
        if (descriptor_ < 0) fail("memfd_create");
    }
    ~SharedFile() { close(descriptor_); }
    SharedFile(const SharedFile&) = delete;
    SharedFile& operator=(const SharedFile&) = delete;

    void write(std::string_view text) const {
        while (!text.empty()) {
            const ssize_t written = ::write(descriptor_, text.data(), text.size());
            if (written <= 0) fail("write");
            text.remove_prefix(static_cast<std::size_t>(written));
        }
    }
    [[nodiscard]] std::string read() const {
        std::string text;
        char part[1 << 16];
        off_t place = 0;
        while (true) {
            const ssize_t got = pread(descriptor_, part, sizeof part, place);
            if (got < 0) fail("pread");
            if (got == 0) return text;
            text.append(part, static_cast<std::size_t>(got));
            place += got;
        }
    }
    [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    int descriptor_;
};

[[noreturn]] void runHere(const SharedFile& input, const SharedFile& output, const SharedFile& problem,
                          const lab::RunOptions& options) {
    try {
        lab::run({input.path()}, options, [&](std::string_view text) { output.write(text); });
    } catch (const std::exception& error) {
        problem.write(error.what());
    }
    _exit(0);
}

}  // namespace

Outcome runInChild(const std::vector<std::string>& lines, const lab::RunOptions& options) {
    const SharedFile input;
    const SharedFile output;
    const SharedFile problem;
    for (const std::string& line : lines) input.write(line + "\n");
    const pid_t child = fork();
    if (child < 0) fail("fork");
    if (child == 0) runHere(input, output, problem, options);
    int status = 0;
    if (waitpid(child, &status, 0) != child) fail("waitpid");
    Outcome outcome{output.read(), problem.read(), false};
    outcome.clean = WIFEXITED(status) && WEXITSTATUS(status) == 0 && outcome.problem.empty();
    return outcome;
}

}  // namespace nearcast::scenario
