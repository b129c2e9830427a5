// SPDX-License-Identifier: Apache-2.0
#include "common/files/TemporaryName.h"

#include "platform/system/SignalsBlocked.h"

#include <fcntl.h>
#include <unistd.h>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

namespace nearcast::cli {

namespace {

using Name = std::atomic<const char*>;
static_assert(Name::is_always_lock_free, "a handler of signals reads them");

std::array<Name, 4> names{};

/// Reset to what it was when it is called, so that the signal ends the process then.
extern "C" void removeAndEnd(int signal) {
    for (const Name& name : names) {
        if (const char* path = name.load(); path != nullptr) unlink(path);
    }
    raise(signal);
}

/// Those that end a process and are no fault of its own. What was ignored before stays so.
void catchSignals() {
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

std::size_t enter(const char* path) {
    for (std::size_t place = 0; place < names.size(); ++place) {
        const char* expected = nullptr;
        if (names[place].compare_exchange_strong(expected, path)) return place;
    }
    unlink(path);
    throw std::logic_error("too many temporary files");
}

}  // namespace

TemporaryName::TemporaryName(const std::string& beside) : path_(beside + ".XXXXXX") {
    catchSignals();
    const SignalsBlocked notBetween;  // the file's making and the entry
    descriptor_ = mkostemp(path_.data(), O_CLOEXEC);
    if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), beside + ": cannot be made");
    place_ = enter(path_.c_str());
}

TemporaryName::~TemporaryName() {
    unlink(path_.c_str());  // without effect where it was moved away
    names[place_].store(nullptr);
}

}  // namespace nearcast::cli
