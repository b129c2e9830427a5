// SPDX-License-Identifier: Apache-2.0
#include "allocation/Allocations.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace nearcast::allocation {

namespace {

std::atomic<std::uint64_t> allocations{0};
std::atomic<std::uint64_t> octets{0};
std::atomic<std::uint64_t> failsAt{0};  ///< a number of `allocations`; 0: none
std::atomic<bool> failsOn{false};
std::atomic<bool> hasFailed{false};

bool fails(std::uint64_t number) noexcept {
    const std::uint64_t first = failsAt;
    if (first == 0 || number < first || (number > first && !failsOn)) return false;
    hasFailed = true;
    return true;
}

void* counted(std::size_t size, void* (*allocate)(std::size_t size, std::size_t alignment), std::size_t alignment) {
    const std::uint64_t number = ++allocations;
    octets += size;
    if (!fails(number)) {
        if (void* const memory = allocate(size == 0 ? 1 : size, alignment)) return memory;
    }
    throw std::bad_alloc();
}

void* plain(std::size_t size, std::size_t /*alignment*/) { return std::malloc(size); }
void* aligned(std::size_t size, std::size_t alignment) {
    return std::aligned_alloc(alignment, (size + alignment - 1) / alignment * alignment);
}

}  // namespace

std::uint64_t count() noexcept { return allocations; }

std::uint64_t bytes() noexcept { return octets; }

Failure::Failure(std::uint64_t n, Failing failing) noexcept {
    hasFailed = false;
    failsOn = failing == Failing::fromThen;
    failsAt = n == 0 ? 0 : allocations + n;
}

Failure::~Failure() { end(); }

bool Failure::end() noexcept {
    failsAt = 0;
    return hasFailed;
}

}  // namespace nearcast::allocation

using nearcast::allocation::aligned;
using nearcast::allocation::counted;
using nearcast::allocation::plain;

// NOLINTBEGIN(misc-definitions-in-headers)
void* operator new(std::size_t size) { return counted(size, plain, 0); }
void* operator new[](std::size_t size) { return counted(size, plain, 0); }
void* operator new(std::size_t size, std::align_val_t alignment) {
    return counted(size, aligned, static_cast<std::size_t>(alignment));
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return counted(size, aligned, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
// NOLINTEND(misc-definitions-in-headers)
