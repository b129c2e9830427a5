// SPDX-License-Identifier: Apache-2.0
#include "platform/system/ProcessEnd.h"

#include "support/Mutex.h"

#include <sys/types.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

namespace nearcast {

namespace {

struct Works {
    const pid_t process = getpid();
    Mutex mutex;
    std::list<std::function<void()>> all NEARCAST_GUARDED_BY(mutex);
};

/// Never destroyed: the process may end before those that have something in it.
Works& works() {
    static auto* const one = new Works;
    return *one;
}

void doAll() {
    // In a child that was forked, the threads that have made the works are missing.
    if (getpid() != works().process) return;
    const MutexLock lock(works().mutex);
    for (const auto& work : works().all) work();
}

}  // namespace

ProcessEnd::ProcessEnd(std::function<void()> work) {
    [[maybe_unused]] static const int registered = std::atexit(doAll);
    const MutexLock lock(works().mutex);
    place_ = works().all.insert(works().all.end(), std::move(work));
}

ProcessEnd::~ProcessEnd() {
    const MutexLock lock(works().mutex);
    works().all.erase(place_);
}

}  // namespace nearcast
