// SPDX-License-Identifier: Apache-2.0
#pragma once

// Clang's thread-safety analysis (-Wthread-safety); other compilers see nothing.
#if defined(__clang__)
#define NEARCAST_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define NEARCAST_THREAD_ANNOTATION(x)
#endif

#define NEARCAST_CAPABILITY(x) NEARCAST_THREAD_ANNOTATION(capability(x))
#define NEARCAST_SCOPED_CAPABILITY NEARCAST_THREAD_ANNOTATION(scoped_lockable)
#define NEARCAST_GUARDED_BY(x) NEARCAST_THREAD_ANNOTATION(guarded_by(x))
#define NEARCAST_REQUIRES(...) NEARCAST_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define NEARCAST_ACQUIRE(...) NEARCAST_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define NEARCAST_RELEASE(...) NEARCAST_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define NEARCAST_EXCLUDES(...) NEARCAST_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define NEARCAST_ACQUIRED_BEFORE(...) NEARCAST_THREAD_ANNOTATION(acquired_before(__VA_ARGS__))
#define NEARCAST_NO_THREAD_SAFETY_ANALYSIS NEARCAST_THREAD_ANNOTATION(no_thread_safety_analysis)
