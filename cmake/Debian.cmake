# Two packages for Debian: the library, which programs depend on, and what is needed to build them. scripts/package
# builds them.
set(sourceName vyn-connector-common)
set(libraryPackage lib${sourceName}${PROJECT_VERSION_MAJOR})
set(developmentPackage lib${sourceName}-dev)
# Revisions that begin with 1 are Debian's own.
set(revision 0vyn1)
# An address that can never be anybody's.
set(maintainer "Vyn connector team <vyn-connector@packages.invalid>")

set(CPACK_GENERATOR DEB)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${maintainer})
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
                                                WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${revision})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${libraryPackage})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SOURCE ${sourceName})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "Processes of the Vyn connector exchange messages in fixed-layout wire
structures with an arena for strings, lists and optional members. This
library turns records into such messages, and messages, which may be
hostile, back into records.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${developmentPackage})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SOURCE ${sourceName})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${libraryPackage} (= ${PROJECT_VERSION}-${revision}), libfmt-dev (>= 9), libfmt-dev (<< 10)")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Headers, CMake package and pkg-config file, to build programs that convert
between records of the Vyn connector and messages.")

# What Debian asks of every package.
find_package(Python3 3.9 REQUIRED COMPONENTS Interpreter)
set(debianDir ${PROJECT_BINARY_DIR}/debian)
file(MAKE_DIRECTORY ${debianDir})
add_custom_command(
    OUTPUT ${debianDir}/changelog.Debian.gz
    COMMAND Python3::Interpreter ${PROJECT_SOURCE_DIR}/packaging/changelog.py ${PROJECT_SOURCE_DIR}/CHANGELOG.md
            ${sourceName} ${PROJECT_VERSION} ${revision} ${maintainer} ${debianDir}/changelog.Debian.gz
    DEPENDS CHANGELOG.md packaging/changelog.py
    VERBATIM)
foreach(package IN ITEMS runtime:${libraryPackage} development:${developmentPackage})
    string(REPLACE ":" ";" package ${package})
    list(GET package 0 component)
    list(GET package 1 name)
    install(
        FILES packaging/copyright ${debianDir}/changelog.Debian.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name}
        COMPONENT ${component})
endforeach()

install(
    FILES packaging/lintian-overrides
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides
    RENAME ${libraryPackage}
    COMPONENT runtime)
function(strip_installed file component)
    install(CODE "execute_process(COMMAND ${CMAKE_STRIP} --strip-unneeded --remove-section=.comment
                                          \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${file}\"
                                  COMMAND_ERROR_IS_FATAL ANY)"
            COMPONENT ${component})
endfunction()
strip_installed(${CMAKE_INSTALL_LIBDIR}/libvyn_connector_common.so.${PROJECT_VERSION} runtime)

# Since which version the library has each name, so that a program depends on the oldest one that it can run with.
# packaging/symbols has the names of the versions that were released; a name that is new has the version at hand, and
# where one is missing the build fails.
find_program(VYN_CONNECTOR_COMMON_GENSYMBOLS dpkg-gensymbols REQUIRED)
add_custom_command(
    OUTPUT ${debianDir}/symbols
    COMMAND
        ${VYN_CONNECTOR_COMMON_GENSYMBOLS} -q -c1 -p${libraryPackage} -v${PROJECT_VERSION}
        -e$<TARGET_FILE:vyn_connector_common> -I${PROJECT_SOURCE_DIR}/packaging/symbols -O${debianDir}/symbols
    DEPENDS vyn_connector_common packaging/symbols
    VERBATIM)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${debianDir}/symbols ${PROJECT_SOURCE_DIR}/packaging/triggers)

set(debianFiles ${debianDir}/changelog.Debian.gz ${debianDir}/symbols)
if(TARGET vyn-inspect)
    string(APPEND CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
           " With vyn-inspect, which\nshows such messages field by field.")
    add_custom_command(
        OUTPUT ${debianDir}/vyn-inspect.1.gz
        COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/tools/inspect/vyn-inspect.1 >${debianDir}/vyn-inspect.1.gz
        DEPENDS tools/inspect/vyn-inspect.1)
    install(
        FILES ${debianDir}/vyn-inspect.1.gz
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1
        COMPONENT development)
    list(APPEND debianFiles ${debianDir}/vyn-inspect.1.gz)
    strip_installed(${CMAKE_INSTALL_BINDIR}/vyn-inspect development)
endif()
add_custom_target(debian_files ALL DEPENDS ${debianFiles})

include(CPack)
