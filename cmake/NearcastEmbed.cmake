# SPDX-License-Identifier: Apache-2.0
# Files that are part of a program, so that it needs none beside it.

set(NEARCAST_EMBED_SCRIPTS ${CMAKE_CURRENT_LIST_DIR})

# nearcast_bundle(OUTPUT FILES...): one file of JavaScript from modules, each after those that it imports. In it they
# share their names, so two modules may neither give different things the same name nor have the same name themselves.
function(nearcast_bundle output)
    add_custom_command(OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} "-DOUTPUT=${output}" "-DFILES=${ARGN}" -P ${NEARCAST_EMBED_SCRIPTS}/BundleModules.cmake
        DEPENDS ${ARGN} ${NEARCAST_EMBED_SCRIPTS}/BundleModules.cmake VERBATIM)
endfunction()

# nearcast_embed(TARGET FUNCTION FILES...): compiles the files into the target, which gets a function
# `std::span<const nearcast::cli::Asset> FUNCTION() noexcept` (apps/nearcast/web/Page.h), to be declared where it is
# used. An asset has the file's name without its folder.
function(nearcast_embed target function)
    set(output ${CMAKE_CURRENT_BINARY_DIR}/embedded/${function}.cpp)
    add_custom_command(OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} "-DOUTPUT=${output}" -DFUNCTION=${function} "-DFILES=${ARGN}"
                -P ${NEARCAST_EMBED_SCRIPTS}/EmbedFiles.cmake
        DEPENDS ${ARGN} ${NEARCAST_EMBED_SCRIPTS}/EmbedFiles.cmake VERBATIM)
    target_sources(${target} PRIVATE ${output})
endfunction()
