// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <initializer_list>

/// The program's own `operator new`: it counts, and fails when a test says so. A file of tests whose name ends in
/// AllocationTest.cpp has it; the sanitizers have their own, and leave such tests out.
namespace nearcast::allocation {

/// Allocations since the program began, of all threads.
std::uint64_t count() noexcept;
/// Bytes asked for since then.
std::uint64_t bytes() noexcept;

enum class Failing {
    once,      ///< one allocation fails, and there is memory again
    fromThen,  ///< and all after it
};

/// Makes the allocation `n` from now on fail, 1 the next one and 0 none, on whatever thread it is. One at a time.
class Failure {
public:
    explicit Failure(std::uint64_t n, Failing failing = Failing::once) noexcept;
    ~Failure();
    Failure(const Failure&) = delete;
    Failure& operator=(const Failure&) = delete;

    /// Ends it early.
    /// @return whether an allocation has failed
    static bool end() noexcept;
};

/// Runs `attempt(n, failing)` for n = 1, 2, ... until it says that nothing has failed; first with one failure, then
/// with all from there on.
template <class Attempt>
void failEachAllocation(const Attempt& attempt) {
    for (const Failing failing : {Failing::once, Failing::fromThen}) {
        std::uint64_t n = 1;
        while (attempt(n, failing)) ++n;
    }
}

}  // namespace nearcast::allocation
