// SPDX-License-Identifier: Apache-2.0
#include "platform/system/TemporaryName.h"

#include "platform/system/SignalsBlocked.h"

#include <fcntl.h>
#include <unistd.h>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace nearcast {

namespace {

using Name = std::atomic<const char*>;
static_assert(Name::is_always_lock_free, "a handler of signals reads them");

std::array<Name, 4> names{};

extern "C" {
/// Reset to what it was when it is called, so that the signal ends the process then.
static void removeAndEnd(int signal) {
    for (const Name& name : names) {
        if (const char* path = name.load(); path != nullptr) unlink(path);
    }
    raise(signal);
}
}

/// Where there is no place any more, a signal leaves the file behind.
std::optional<std::size_t> enter(const char* path) {
    for (std::size_t place = 0; place < names.size(); ++place) {
        const char* expected = nullptr;
        if (names[place].compare_exchange_strong(expected, path)) return place;
    }
    return std::nullopt;
}

constexpr std::string_view letters = "XXXXXX";  // which mkostemps replaces
constexpr std::string_view ending = ".new";

std::string folderOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

/// What the names begin with that stand beside a file.
std::string beginOf(const std::string& path) {
    const std::string folder = folderOf(path);
    return folder + "." + path.substr(folder.size()) + ".";
}

}  // namespace

TemporaryName::TemporaryName(const std::string& beside) : path_(beginOf(beside).append(letters).append(ending)) {
    const SignalsBlocked notBetween;  // the file's making and the entry
    descriptor_ = mkostemps(path_.data(), static_cast<int>(ending.size()), O_CLOEXEC);
    if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), beside + ": cannot be made");
    place_ = enter(path_.c_str());
}

TemporaryName::~TemporaryName() {
    unlink(path_.c_str());  // without effect where it was moved away
    if (place_) names[*place_].store(nullptr);
}

/// Those that end a process and are no fault of its own. What was ignored before stays so.
void TemporaryName::removeOnSignals() {
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM, SIGXCPU, SIGXFSZ}) {
        struct sigaction before {};
        if (sigaction(signal, nullptr, &before) != 0 || before.sa_handler != SIG_DFL) continue;
        struct sigaction ours {};
        ours.sa_handler = removeAndEnd;
        ours.sa_flags = static_cast<int>(SA_RESETHAND);
        sigfillset(&ours.sa_mask);
        sigaction(signal, &ours, nullptr);
    }
}

void TemporaryName::removeLeftovers(const std::string& beside) noexcept {
    try {
        const std::string begin = beginOf(beside);
        const std::string folder = folderOf(beside);
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator(folder.empty() ? "." : folder, none)) {
            const std::string path = folder + entry.path().filename().string();
            const bool ours = path.size() == begin.size() + letters.size() + ending.size() && path.starts_with(begin) &&
                              path.ends_with(ending);
            if (ours) unlink(path.c_str());
        }
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): they harm nobody
    }
}

}  // namespace nearcast
