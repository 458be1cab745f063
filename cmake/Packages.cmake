# The Debian packages. Each is the component of its name: an install rule names the package that its files belong to,
# and what names none belongs to the library (see CMAKE_INSTALL_DEFAULT_COMPONENT_NAME).

# The folders of a package are those of a build for /usr; the preset package is one.
if(NOT CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    return()
endif()

include(GNUInstallDirs)
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME pardel)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # else it would be the first line of every description
set(CPACK_PACKAGE_CONTACT "Pardel authors <pardel@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)

# By this, dpkg-shlibdeps finds the package of the library for packages of applications.
file(CONFIGURE OUTPUT packages/shlibs CONTENT "libPardel 1 libpardel1 (>= ${PROJECT_VERSION})\n")

# pardel_package(NAME SECTION SUMMARY DESCRIPTION [DEPENDS]): dpkg-shlibdeps adds to DEPENDS what the binaries need.
macro(pardel_package name section summary description)
    string(TOUPPER ${name} component)
    list(APPEND CPACK_COMPONENTS_ALL ${name})
    set(CPACK_DEBIAN_${component}_PACKAGE_NAME ${name})
    set(CPACK_DEBIAN_${component}_PACKAGE_SECTION ${section})
    set(CPACK_DEBIAN_${component}_PACKAGE_DEPENDS "${ARGN}")
    set(CPACK_DEBIAN_${component}_DESCRIPTION "${summary}\n${description}")
    install(FILES ${PROJECT_SOURCE_DIR}/LICENSE RENAME copyright
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${name} COMPONENT ${name})
endmacro()

pardel_package(libpardel1 libs "telemetry, database and widget library"
    "The library under the desktop applications of an object-monitoring system.")
set(CPACK_DEBIAN_LIBPARDEL1_PACKAGE_CONTROL_EXTRA ${PROJECT_BINARY_DIR}/packages/shlibs)
set(CPACK_DEBIAN_LIBPARDEL1_PACKAGE_RECOMMENDS "libqt5sql5-psql, libqt5sql5-sqlite")

pardel_package(libpardel-dev libdevel "telemetry, database and widget library - development files"
    "Headers, CMake package, pkg-config file and Qt Designer plug-in of libpardel1."
    "libpardel1 (= ${PROJECT_VERSION}), qtbase5-dev")
pardel_package(pardel-tools utils "command line tools for packets of tracking terminals"
    "Simulates packets of tracking terminals, decodes them, imports them into the archive and keeps that in order."
    "libpardel1 (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PARDEL-TOOLS_PACKAGE_RECOMMENDS "libqt5sql5-psql, libqt5sql5-sqlite")

include(CPack)
