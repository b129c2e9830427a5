# SPDX-License-Identifier: Apache-2.0
# cmake -DOUTPUT=FILE -DFILES=LIST -P: see nearcast_bundle.

cmake_policy(VERSION 3.25)

set(bundle "")
set(before "")
foreach(file IN LISTS FILES)
    get_filename_component(name ${file} NAME)
    file(READ ${file} text)
    string(REGEX MATCHALL "\nimport [^\n]* from '[^'\n]*'" imports "${text}")
    foreach(import IN LISTS imports)
        string(REGEX REPLACE ".*/([^/']*)'" "\\1" imported "${import}")
        if(NOT imported IN_LIST before)
            message(FATAL_ERROR "${name} imports ${imported}, which does not stand before it")
        endif()
    endforeach()
    string(REGEX REPLACE "\nimport [^\n]* from '[^'\n]*'[^\n]*" "" text "${text}")
    string(REGEX REPLACE "\nexport (const|function|class|async)" "\n\\1" text "${text}")
    # Neither an import over several lines nor another kind of export is understood here.
    if(text MATCHES "\n(import|export)[^\n]*")
        message(FATAL_ERROR "${name}: cannot be bundled: ${CMAKE_MATCH_0}")
    endif()
    string(APPEND bundle "${text}")
    list(APPEND before ${name})
endforeach()
file(WRITE ${OUTPUT} "${bundle}")
