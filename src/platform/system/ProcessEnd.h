// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <list>

namespace nearcast {

/// Has something done when the process ends by the return of `main` or by `exit`, for what belongs to objects that are
/// never destroyed. A process that is killed, or that ends by `_exit`, does nothing of it; neither does a child that it
/// has forked.
class ProcessEnd {
public:
    /// @param work called on the thread that ends the process, while the others go on. It takes a bounded time, and
    ///             throws nothing
    explicit ProcessEnd(std::function<void()> work);
    /// From now on it is not called; waits for a call that is under way.
    ~ProcessEnd();
    ProcessEnd(const ProcessEnd&) = delete;
    ProcessEnd& operator=(const ProcessEnd&) = delete;

private:
    std::list<std::function<void()>>::iterator place_;
};

}  // namespace nearcast
