# SPDX-License-Identifier: Apache-2.0
# Layers of src, each seeing only what it may include.

# nearcast_view(RESULT NAME FOLDERS...): an include folder that holds these folders of src and nothing else. "platform"
# stands for the headers directly in it; its folders are named one by one. A header may be named in place of its folder.
function(nearcast_view result name)
    set(view ${PROJECT_BINARY_DIR}/views/${name})
    file(REMOVE_RECURSE ${view})
    file(MAKE_DIRECTORY ${view}/platform)
    foreach(folder IN LISTS ARGN)
        set(origin ${PROJECT_SOURCE_DIR}/src/${folder})
        if(folder MATCHES "[.]h$" AND EXISTS ${origin})
            get_filename_component(parent ${folder} DIRECTORY)
            file(MAKE_DIRECTORY ${view}/${parent})
        elseif(NOT IS_DIRECTORY ${origin})
            message(FATAL_ERROR "there is no layer src/${folder}")
        endif()
        if(folder STREQUAL "platform")
            file(GLOB headers CONFIGURE_DEPENDS RELATIVE ${origin} ${origin}/*.h)
            foreach(header IN LISTS headers)
                file(CREATE_LINK ${origin}/${header} ${view}/platform/${header} SYMBOLIC)
            endforeach()
        else()
            file(CREATE_LINK ${origin} ${view}/${folder} SYMBOLIC)
        endif()
    endforeach()
    set(${result} ${view} PARENT_SCOPE)
endfunction()

set(nearcast_layers "")

# nearcast_layer(FOLDER [COLD] [SEES FOLDERS...] [LINKS LIBRARIES...]): the target nearcast_NAME of src/FOLDER, where NAME
# is the last part of the folder. Its name is appended to nearcast_layers. What is cold is built for its size where it
# ships: of a program that runs for months, memory is what its text costs.
function(nearcast_layer folder)
    cmake_parse_arguments(PARSE_ARGV 1 layer "COLD" "" "SEES;LINKS")
    get_filename_component(name ${folder} NAME)
    set(target nearcast_${name})
    set(origin ${PROJECT_SOURCE_DIR}/src/${folder})
    set(patterns ${origin}/*.cpp)
    if(NOT folder STREQUAL "platform")
        list(APPEND patterns ${origin}/*/*.cpp)
    endif()
    file(GLOB sources CONFIGURE_DEPENDS ${patterns})
    list(REMOVE_DUPLICATES layer_SEES)
    list(REMOVE_ITEM layer_SEES ${folder})
    nearcast_view(view ${name} ${folder} ${layer_SEES})
    add_library(${target} OBJECT ${sources})
    target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/include ${view})
    target_link_libraries(${target} PRIVATE nearcast_options ${layer_LINKS})
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE ON CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON)
    if(layer_COLD)
        target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-Os>)
    endif()
    if(NEARCAST_FUZZ)
        # What a fuzzer looks into: not the tests, which share the build.
        target_compile_options(${target} PRIVATE -fsanitize=fuzzer-no-link)
    endif()
    nearcast_precompile(${target} library)
    set(nearcast_layers ${nearcast_layers} ${target} PARENT_SCOPE)
endfunction()
