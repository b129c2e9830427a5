# SPDX-License-Identifier: Apache-2.0
# The headers that nearly every source reads, compiled once for each kind of target. Builds that ship are made without
# them, and so notice an include line that is missing.

option(NEARCAST_PRECOMPILE "Precompile the headers that most sources include" OFF)

set(nearcast_standard_headers <algorithm> <array> <atomic> <charconv> <chrono> <cmath> <condition_variable> <cstdint>
    <deque> <functional> <map> <memory> <mutex> <optional> <span> <stdexcept> <string> <string_view> <thread>
    <unordered_map> <utility> <variant> <vector>)
# Of libraries that are headers only, just GoogleTest: whatever a precompiled header calls of its templates, GCC makes
# anew in each source, used or not (docs/decisions/0007-the-build-keeps-the-layers.md has the figures).
set(nearcast_stream_headers <filesystem> <fstream> <iostream> <sstream>)
set(nearcast_headers_library ${nearcast_standard_headers})
set(nearcast_headers_program ${nearcast_standard_headers} ${nearcast_stream_headers})
set(nearcast_headers_test ${nearcast_standard_headers} ${nearcast_stream_headers} <gtest/gtest.h>)

# nearcast_precompile(TARGET KIND): KIND is `library`, `program` or `test`. The targets of one kind are compiled with the
# same flags: the first one makes the header, the others use it.
function(nearcast_precompile target kind)
    if(NOT NEARCAST_PRECOMPILE)
        return()
    endif()
    get_property(maker GLOBAL PROPERTY nearcast_precompiled_${kind})
    if(maker)
        target_precompile_headers(${target} REUSE_FROM ${maker})
    else()
        target_precompile_headers(${target} PRIVATE ${nearcast_headers_${kind}})
        set_property(GLOBAL PROPERTY nearcast_precompiled_${kind} ${target})
    endif()
endfunction()
