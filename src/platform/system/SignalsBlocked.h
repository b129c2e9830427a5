// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pthread.h>

#include <csignal>

namespace nearcast {

/// Signals are for the application's threads. Blocked for a scope, they are in the threads that are made there.
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
