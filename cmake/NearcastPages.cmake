# SPDX-License-Identifier: Apache-2.0
# The pages that the program writes: what web/ holds, and uPlot, which npm puts into web/node_modules.

set(NEARCAST_WEB ${CMAKE_CURRENT_LIST_DIR}/../web)
cmake_path(NORMAL_PATH NEARCAST_WEB)

# nearcast_plot(VARIABLE FOLDER): the files of uPlot in the folder of its package that a page needs. Empty where one of
# them is missing. The build looks again each time it runs.
function(nearcast_plot variable folder)
    file(GLOB files CONFIGURE_DEPENDS ${folder}/dist/uPlot.iife.min.js ${folder}/dist/uPlot.min.css ${folder}/LICENSE)
    list(LENGTH files count)
    if(NOT count EQUAL 3)
        set(files "")
    endif()
    set(${variable} ${files} PARENT_SCOPE)
endfunction()

# nearcast_pages(TARGET PLOT...): gives the target `pageAssets()` (apps/nearcast/web/Page.h): the pages, and these files
# of uPlot. Without them the program says what it lacks when it is to make a page.
function(nearcast_pages target)
    # A module stands after those that it imports.
    set(shared dom start store tables theme)
    set(report columns search range stretches decimate model texts palette choice paint plot bands panel legend details
        gestures toolbar page)
    set(evaluate model names chart marks figures page)
    set(assets ${NEARCAST_WEB}/shared/page.html ${NEARCAST_WEB}/shared/page.css)
    foreach(page IN ITEMS report evaluate)
        set(modules ${shared})
        list(TRANSFORM modules REPLACE "(.+)" "${NEARCAST_WEB}/shared/\\1.js")
        list(TRANSFORM ${page} REPLACE "(.+)" "${NEARCAST_WEB}/${page}/\\1.js")
        set(bundle ${CMAKE_CURRENT_BINARY_DIR}/embedded/${page}.js)
        nearcast_bundle(${bundle} ${modules} ${${page}})
        list(APPEND assets ${NEARCAST_WEB}/${page}/${page}.html ${NEARCAST_WEB}/${page}/${page}.css ${bundle})
    endforeach()
    nearcast_embed(${target} pageAssets ${assets} ${ARGN})
endfunction()
