// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pthread.h>

#include <csignal>

namespace nearcast {

/// Blocks signals for a scope, and so in the threads that are started in it: signals are for the application's threads.
class SignalsBlocked {
public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

private:
    sigset_t before_{};
};

}  // namespace nearcast
