// SPDX-License-Identifier: Apache-2.0
#pragma once

#if __cplusplus < 201709L
#error \
    "Nearcast needs C++20: compile with -std=c++20 or newer (CMake: target_compile_features(TARGET PRIVATE cxx_std_20))"
#endif

/// Marks what the shared library shows; everything else is hidden.
#define NEARCAST_EXPORT __attribute__((visibility("default")))
