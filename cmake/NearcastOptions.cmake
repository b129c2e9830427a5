# SPDX-License-Identifier: Apache-2.0
# What every target is compiled with.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "" FORCE)
endif()

find_package(Threads REQUIRED)

# A compiler cache that serves several source trees names files from the build folder on.
file(RELATIVE_PATH nearcast_source_from_build ${CMAKE_BINARY_DIR} ${PROJECT_SOURCE_DIR})
string(REGEX REPLACE "/$" "" nearcast_source_from_build "${nearcast_source_from_build}")

add_library(nearcast_options INTERFACE)
target_compile_features(nearcast_options INTERFACE cxx_std_20)
target_link_libraries(nearcast_options INTERFACE Threads::Threads)
target_compile_options(nearcast_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
    # Trace records name their file; it must be the same whatever machine built them.
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
if(nearcast_source_from_build)
    target_compile_options(nearcast_options INTERFACE -ffile-prefix-map=${nearcast_source_from_build}/=)
endif()
# GCC 12 sees an overlap in a text that is put before another, where there is none (GCC bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(nearcast_options INTERFACE -Wno-restrict)
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(nearcast_options INTERFACE -Wthread-safety -Werror=thread-safety)
endif()
if(NEARCAST_WERROR)
    target_compile_options(nearcast_options INTERFACE -Werror)
endif()
if(NEARCAST_SANITIZE)
    target_compile_options(nearcast_options INTERFACE -fsanitize=${NEARCAST_SANITIZE} -fno-omit-frame-pointer
        -fno-sanitize-recover=all)
    target_link_options(nearcast_options INTERFACE -fsanitize=${NEARCAST_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # GCC 12 warns about code that a sanitizer inserted itself.
        target_compile_options(nearcast_options INTERFACE -Wno-maybe-uninitialized -Wno-tsan)
    endif()
endif()
