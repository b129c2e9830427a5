// SPDX-License-Identifier: Apache-2.0
#include "watch/TerminalSignals.h"

#include "platform/system/SignalsBlocked.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <exception>
#include <initializer_list>
#include <system_error>
#include <thread>
#include <utility>

namespace nearcast::cli {

namespace {

sigset_t setOf(std::initializer_list<int> numbers) {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : numbers) sigaddset(&signals, number);
    return signals;
}

int checked(int descriptor) {
    if (descriptor < 0) throw std::system_error(errno, std::generic_category(), "signals cannot be watched");
    return descriptor;
}

/// Stops the process as the signal does that was caught, and takes the one that makes it go on: the caller knows.
void stop() {
    const sigset_t stopping = setOf({SIGTSTP});
    raise(SIGTSTP);  // waits until this thread lets it through
    pthread_sigmask(SIG_UNBLOCK, &stopping, nullptr);
    pthread_sigmask(SIG_BLOCK, &stopping, nullptr);
    const sigset_t going = setOf({SIGCONT});
    const timespec now{0, 0};
    sigtimedwait(&going, nullptr, &now);
}

}  // namespace

struct TerminalSignals::State {
    std::function<void(const Take& take)> come;
    int signals = -1;
    int ending = -1;
    std::thread thread;

    void wait() const {
        while (true) {
            pollfd waiting[] = {{signals, POLLIN, 0}, {ending, POLLIN, 0}};
            if (poll(waiting, 2, -1) < 0 && errno != EINTR) return;
            if (waiting[1].revents != 0) return;
            if (waiting[0].revents == 0) continue;
            try {
                come([this] { return take(); });
            } catch (const std::exception&) {
                // For want of memory: the next drawing comes all the same.
            }
        }
    }

    [[nodiscard]] bool take() const {
        signalfd_siginfo taken{};
        if (read(signals, &taken, sizeof taken) != static_cast<ssize_t>(sizeof taken)) return false;
        if (taken.ssi_signo == SIGTSTP) stop();
        return taken.ssi_signo != SIGWINCH;
    }
};

TerminalSignals::TerminalSignals(std::function<void(const Take& take)> come) : state_(std::make_unique<State>()) {
    const sigset_t signals = setOf({SIGTSTP, SIGCONT, SIGWINCH});
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    state_->come = std::move(come);
    state_->signals = checked(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    state_->ending = checked(eventfd(0, EFD_CLOEXEC));
    const SignalsBlocked blocked;
    state_->thread = std::thread([state = state_.get()] { state->wait(); });
}

TerminalSignals::~TerminalSignals() {
    eventfd_write(state_->ending, 1);
    state_->thread.join();
    close(state_->signals);
    close(state_->ending);
}

}  // namespace nearcast::cli
