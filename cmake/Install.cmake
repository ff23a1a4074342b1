# What is installed, in two components: `runtime`, which programs need to run, and `development`, which others need to
# build such programs.
include(CMakePackageConfigHelpers)

set(packageDir ${CMAKE_INSTALL_LIBDIR}/cmake/vyn_connector_common)

install(
    TARGETS vyn_connector_common
    EXPORT vyn_connector_commonTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
            COMPONENT runtime
            NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(
    DIRECTORY lyr_ipc/source/common/include/ runtime/include/
    DESTINATION ${headerInstallDir}
    COMPONENT development
    FILES_MATCHING
    PATTERN "*.h")

install(
    EXPORT vyn_connector_commonTargets
    NAMESPACE vyn_connector_common::
    DESTINATION ${packageDir}
    COMPONENT development)
configure_package_config_file(cmake/vyn_connector_commonConfig.cmake.in vyn_connector_commonConfig.cmake
                              INSTALL_DESTINATION ${packageDir})
write_basic_package_version_file(vyn_connector_commonConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(
    FILES ${CMAKE_CURRENT_BINARY_DIR}/vyn_connector_commonConfig.cmake
          ${CMAKE_CURRENT_BINARY_DIR}/vyn_connector_commonConfigVersion.cmake
    DESTINATION ${packageDir}
    COMPONENT development)

# The pkg-config file finds the prefix from its own place, so that an installed tree can be moved. Where a
# directory was given as an absolute path that cannot be, and the path is written as it is.
set(pcDir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE "${pcDir}")
    set(pcPrefix ${CMAKE_INSTALL_PREFIX})
else()
    file(RELATIVE_PATH fromPcToPrefix /prefix/${pcDir} /prefix)
    string(REGEX REPLACE "/$" "" fromPcToPrefix "${fromPcToPrefix}")
    set(pcPrefix "\${pcfiledir}/${fromPcToPrefix}")
endif()
set(pcLibDir "\${prefix}")
cmake_path(APPEND pcLibDir "${CMAKE_INSTALL_LIBDIR}")
set(pcIncludeDir "\${prefix}")
cmake_path(APPEND pcIncludeDir "${headerInstallDir}")
configure_file(cmake/vyn_connector_common.pc.in vyn_connector_common.pc @ONLY)
install(
    FILES ${CMAKE_CURRENT_BINARY_DIR}/vyn_connector_common.pc
    DESTINATION ${pcDir}
    COMPONENT development)

if(TARGET vyn-inspect)
    install(TARGETS vyn-inspect RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT development)
    install(
        FILES tools/inspect/completions/vyn-inspect
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
        COMPONENT development)
    # Debian's manual pages are compressed; cmake/Debian.cmake installs that one.
    if(NOT VYN_CONNECTOR_COMMON_DEBIAN)
        install(
            FILES tools/inspect/vyn-inspect.1
            DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
            COMPONENT development)
    endif()
endif()

if(VYN_CONNECTOR_COMMON_DEBIAN)
    include(cmake/Debian.cmake)
endif()
