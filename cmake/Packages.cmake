# The Debian packages for one version of Qt, installable beside those for the other. Each is the component of its name: an
# install rule names the package that its files belong to, and what names none belongs to the library (see
# CMAKE_INSTALL_DEFAULT_COMPONENT_NAME).

# The folders of a package are those of a build for /usr; the preset package is one.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    return()
endif()

include(GNUInstallDirs)
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME pardel)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # else it would be the first line of every description
set(CPACK_PACKAGE_CONTACT "${PARDEL_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)

# The date of the release is that of the changelog and of every file in the packages: what is packed twice is the same.
set(PARDEL_RELEASE_SECONDS 1795392000) # since 1970, 2026-11-23 00:00:00 UTC
file(CONFIGURE OUTPUT packages/project.cmake CONTENT "set(ENV{SOURCE_DATE_EPOCH} ${PARDEL_RELEASE_SECONDS})\n")
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_BINARY_DIR}/packages/project.cmake)
set(ENV{SOURCE_DATE_EPOCH} ${PARDEL_RELEASE_SECONDS})
string(TIMESTAMP PARDEL_RELEASE_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
unset(ENV{SOURCE_DATE_EPOCH})
configure_file(cmake/changelog.in packages/changelog @ONLY)
pardel_compress(${PROJECT_BINARY_DIR}/packages/changelog changelog)

# By this, dpkg-shlibdeps finds the package of the library for packages of applications.
file(CONFIGURE OUTPUT packages/shlibs CONTENT "lib${PARDEL_NAME} 1 ${PARDEL_RUNTIME_PACKAGE} (>= ${PROJECT_VERSION})\n")
file(CONFIGURE OUTPUT packages/triggers CONTENT "activate-noawait ldconfig\n")

# pardel_package(NAME SECTION SUMMARY DESCRIPTION [DEPENDS]): dpkg-shlibdeps adds to DEPENDS what the binaries need.
# The lines of DESCRIPTION have at most 79 columns. The package's name as CPack's variables have it stays in component.
macro(pardel_package name section summary description)
    string(TOUPPER ${name} component)
    list(APPEND CPACK_COMPONENTS_ALL ${name})
    set(CPACK_DEBIAN_${component}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${component}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${component}_PACKAGE_DEPENDS "${ARGN}")
    set(CPACK_DEBIAN_${component}_DESCRIPTION "${summary}\n${description}")
    install(FILES ${PROJECT_SOURCE_DIR}/LICENSE RENAME copyright
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${name})
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${name})
endmacro()

if(PARDEL_QT_MAJOR EQUAL 5)
    set(drivers "libqt5sql5-psql, libqt5sql5-sqlite")
    set(qt_package qtbase5-dev)
else()
    set(drivers "libqt6sql6-psql, libqt6sql6-sqlite")
    set(qt_package qt6-base-dev)
endif()

set(about
"The library under the desktop applications of an object-monitoring system:
decodes the packets of tracking terminals, streams records between
applications, reads the archive in PostgreSQL or SQLite, keeps logs, and has
the applications' common widgets.
.")
pardel_package(${PARDEL_RUNTIME_PACKAGE} libs "telemetry, database and widget library for Qt ${PARDEL_QT_MAJOR}"
"${about}
This package holds the shared library for Qt ${PARDEL_QT_MAJOR} and its translations.")
# CPack would add scripts that call ldconfig to a package of a shared library, where a trigger does. It writes no script
# that is listed as there, and leaves out what is not there.
set(CPACK_DEBIAN_${component}_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/packages/shlibs
    ${PROJECT_BINARY_DIR}/packages/triggers none/postinst none/postrm)
set(CPACK_DEBIAN_${component}_PACKAGE_RECOMMENDS "${drivers}")

pardel_package(${PARDEL_DEV_PACKAGE} libdevel
    "telemetry, database and widget library for Qt ${PARDEL_QT_MAJOR} - development files"
"${about}
This package holds the headers, the CMake package, the pkg-config file and
the Qt Designer plug-in of ${PARDEL_RUNTIME_PACKAGE}, and the formats of packets,
streams and archive."
    "${PARDEL_RUNTIME_PACKAGE} (= ${PROJECT_VERSION}), ${qt_package}")
install(FILES CHANGELOG.md
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${PARDEL_DEV_PACKAGE} COMPONENT ${PARDEL_DEV_PACKAGE})
configure_file(cmake/lintian-overrides.in packages/lintian-overrides @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/packages/lintian-overrides RENAME ${PARDEL_DEV_PACKAGE}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides COMPONENT ${PARDEL_DEV_PACKAGE})

# The programs come with the library for Qt 5.
if(PARDEL_BUILD_PROGRAMS AND PARDEL_QT_MAJOR EQUAL 5)
    pardel_package(pardel-tools utils "command line tools for packets of tracking terminals"
"pardel-simulate makes the packets that tracking terminals would send,
pardel-decode shows what packets hold, pardel-import stores it in an archive
in PostgreSQL or SQLite, and pardel-archive keeps that in order: makes its
tables, moves reports into partitions and drops old ones."
        "${PARDEL_RUNTIME_PACKAGE} (= ${PROJECT_VERSION})")
    set(CPACK_DEBIAN_${component}_PACKAGE_RECOMMENDS "${drivers}")

    pardel_package(pardel-receiver net "service that stores what tracking terminals send"
"pardel-receive takes the connections of tracking terminals and stores their
reports in an archive in PostgreSQL or SQLite. What it has received outlives
it on disk until it is stored.
.
The service is not started before it is configured and enabled."
        "${PARDEL_RUNTIME_PACKAGE} (= ${PROJECT_VERSION})")
    set(CPACK_DEBIAN_${component}_PACKAGE_RECOMMENDS "${drivers}")
    set(CPACK_DEBIAN_${component}_PACKAGE_SUGGESTS "pardel-tools, postgresql")
    file(CONFIGURE OUTPUT packages/conffiles CONTENT "/etc/pardel/receiver.ini\n")
    set(CPACK_DEBIAN_${component}_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/packages/conffiles)

    # The archive that the desk makes at its first start is of SQLite.
    pardel_package(pardel-desk misc "dispatcher's console of a vehicle-monitoring system"
"pardel-desk shows vehicles and other objects that carry tracking terminals on
a map, in a table and in a tree: where they are, which are silent, and which
have raised an alarm. It replays past days, draws the course of sensors, and
reports trips, stops, speeding and alarms.
.
The data lie in PostgreSQL or SQLite. At its first start the desk makes
itself an archive of a simulated day to try it with."
        "${PARDEL_RUNTIME_PACKAGE} (= ${PROJECT_VERSION}), libqt5sql5-sqlite")
    set(CPACK_DEBIAN_${component}_PACKAGE_RECOMMENDS "libqt5sql5-psql, qttranslations5-l10n")
    set(CPACK_DEBIAN_${component}_PACKAGE_SUGGESTS "pardel-receiver, pardel-tools")
endif()

include(CPack)
