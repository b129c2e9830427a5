// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <time.h>

namespace nearcast::bench {

/// Nanoseconds that `work` has the processor: for what neither waits nor blocks the same as by the wall, but less of
/// what else the machine does.
template <class Work>
double processorNanoseconds(Work&& work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return 1e9 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec);
    };
    const double begin = now();
    work();
    return now() - begin;
}

}  // namespace nearcast::bench
