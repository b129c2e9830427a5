// SPDX-License-Identifier: Apache-2.0
#include "common/Interruption.h"

#include "platform/files/ByteSource.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>

namespace nearcast::cli {

namespace {

sigset_t endingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

int checked(int descriptor) {
    if (descriptor < 0) throw std::system_error(errno, std::generic_category(), "signals cannot be watched");
    return descriptor;
}

}  // namespace

struct Interruption::State {
    std::function<void()> interrupted;
    int signals = -1;
    int ending = -1;
    std::atomic<bool> happened{false};
    std::thread thread;

    void wait() {
        pollfd waiting[] = {{signals, POLLIN, 0}, {ending, POLLIN, 0}};
        while (poll(waiting, 2, -1) < 0 && errno == EINTR) {
        }
        if (waiting[1].revents != 0 || waiting[0].revents == 0) return;
        signalfd_siginfo taken{};
        if (read(signals, &taken, sizeof taken) != static_cast<ssize_t>(sizeof taken)) return;
        happened.store(true);
        const sigset_t again = endingSignals();
        pthread_sigmask(SIG_UNBLOCK, &again, nullptr);  // from now on the default: the process ends
        endInputs();
        interrupted();
        pollfd last{ending, POLLIN, 0};
        while (poll(&last, 1, -1) < 0 && errno == EINTR) {
        }
    }
};

Interruption::Interruption(std::function<void()> interrupted) : state_(std::make_unique<State>()) {
    const sigset_t signals = endingSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    state_->interrupted = std::move(interrupted);
    state_->signals = checked(signalfd(-1, &signals, SFD_CLOEXEC));
    state_->ending = checked(eventfd(0, EFD_CLOEXEC));
    state_->thread = std::thread([state = state_.get()] { state->wait(); });
}

Interruption::~Interruption() {
    eventfd_write(state_->ending, 1);
    state_->thread.join();
    close(state_->signals);
    close(state_->ending);
}

bool Interruption::happened() const noexcept { return state_->happened.load(); }

}  // namespace nearcast::cli
