# SPDX-License-Identifier: Apache-2.0
# What is installed and where. Nothing in it names the prefix, so an installed tree can be moved.

include(CMakePackageConfigHelpers)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Nearcast)

install(TARGETS nearcast_shared EXPORT NearcastTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
install(TARGETS nearcast_static EXPORT NearcastTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/nearcast DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT development FILES_MATCHING PATTERN "*.h")

install(EXPORT NearcastTargets NAMESPACE Nearcast:: DESTINATION ${package_folder} COMPONENT development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/NearcastConfig.cmake.in
    ${PROJECT_BINARY_DIR}/package/NearcastConfig.cmake INSTALL_DESTINATION ${package_folder})
# Before 1.0 a minor version may change the interface.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/NearcastConfigVersion.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/package/NearcastConfig.cmake
    ${PROJECT_BINARY_DIR}/package/NearcastConfigVersion.cmake
    DESTINATION ${package_folder} COMPONENT development)

# From the folder of nearcast.pc back to the prefix.
file(RELATIVE_PATH pkgconfig_to_prefix /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(${PROJECT_SOURCE_DIR}/cmake/nearcast.pc.in ${PROJECT_BINARY_DIR}/package/nearcast.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/package/nearcast.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT development)

install(TARGETS nearcast RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
install(FILES ${PROJECT_SOURCE_DIR}/packaging/man/nearcast.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
    COMPONENT tools)
install(FILES ${PROJECT_SOURCE_DIR}/packaging/completion/nearcast.bash RENAME nearcast
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
install(FILES ${PROJECT_SOURCE_DIR}/packaging/completion/nearcast.zsh RENAME _nearcast
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions COMPONENT tools)
install(FILES ${PROJECT_SOURCE_DIR}/packaging/completion/nearcast.fish
    DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d COMPONENT tools)


install(FILES ${PROJECT_SOURCE_DIR}/LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/licenses/nearcast COMPONENT tools)

include(NearcastPackage)
