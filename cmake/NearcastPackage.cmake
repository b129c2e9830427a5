# SPDX-License-Identifier: Apache-2.0
# Debian packages, one a component: the library, what one compiles with, and the command line. `cpack` in a build
# directory makes them; `./dev package` makes the build directory too.

set(abi ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME nearcast)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The Nearcast developers <nearcast@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library development tools)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libnearcast${abi})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "${PROJECT_DESCRIPTION}
 Shared library for applications that print on, or open, the device that the
 user stands next to.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libnearcast-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libnearcast${abi} (= ${PROJECT_VERSION}), libsystemd-dev, zlib1g-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "${PROJECT_DESCRIPTION} (development)
 Headers, the static library, and the CMake and pkg-config files.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME nearcast)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "${PROJECT_DESCRIPTION} (command line)
 Watches the air, a recording or a simulated shop; runs scenarios; imports
 captures.")

# nearcast_copyright(COMPONENT PACKAGE TEXT...): every package says its licence where Debian looks for it.
function(nearcast_copyright component package)
    file(READ ${PROJECT_SOURCE_DIR}/packaging/copyright text)
    file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/package/${package}/copyright CONTENT "${text}${ARGN}" @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/package/${package}/copyright
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
endfunction()

# The program holds uPlot where the build found it.
set(plot_copyright "")
if(NEARCAST_PLOT)
    set(file ${NEARCAST_PLOT})
    list(FILTER file INCLUDE REGEX "/LICENSE$")
    file(READ ${file} licence)
    string(REGEX MATCH "Copyright \\(c\\) ([^\n]+)" holder "${licence}")
    set(holder ${CMAKE_MATCH_1})
    string(REGEX REPLACE "^.*Copyright[^\n]*\n+" "" licence "${licence}")
    string(STRIP "${licence}" licence)
    # In this format a line is indented, and an empty one is a dot.
    string(REGEX REPLACE "\n\n+" "\n.\n" licence "${licence}")
    string(REPLACE "\n" "\n " licence "${licence}")
    string(CONCAT plot_copyright "\nFiles: web/node_modules/uplot/*\nCopyright: ${holder}\nLicense: Expat\n"
        "Comment: Part of the program, and of the pages that it writes.\n\nLicense: Expat\n ${licence}\n")
endif()

nearcast_copyright(library libnearcast${abi})
nearcast_copyright(development libnearcast-dev)
nearcast_copyright(tools nearcast "${plot_copyright}")

include(CPack)
