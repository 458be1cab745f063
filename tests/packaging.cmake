# Tests of what is made beside the library, each where its programs are.

# pardel_find_programs(TEST PACKAGE PROGRAM...): whether the programs are there, in found; says who has them if not.
function(pardel_find_programs test package)
    set(found TRUE)
    foreach(program IN LISTS ARGN)
        find_program(PARDEL_${program} ${program})
        mark_as_advanced(PARDEL_${program})
        if(NOT PARDEL_${program})
            message(STATUS "No test ${test}: ${program} is missing (Debian package ${package})")
            set(found FALSE)
        endif()
    endforeach()
    set(found ${found} PARENT_SCOPE)
endfunction()

pardel_find_programs(packages "dpkg-dev and file" dpkg-deb dpkg-shlibdeps file)
if(found)
    add_test(NAME packages COMMAND ${CMAKE_COMMAND}
        -D CPACK=${CMAKE_CPACK_COMMAND} -D NAME=${PARDEL_NAME} -D BUILD=${PROJECT_BINARY_DIR} -D CONFIG=$<CONFIG>
        -D VERSION=${PROJECT_VERSION} -D REVISION=${PARDEL_REVISION}
        -D COMPILER=${CMAKE_CXX_COMPILER} -D GENERATOR=${CMAKE_GENERATOR} -D LIBDIR=${CMAKE_INSTALL_LIBDIR}
        -D TRANSLATIONS=${PARDEL_BUILD_TRANSLATIONS} -D SCRATCH=${CMAKE_CURRENT_BINARY_DIR}/packages
        -P ${CMAKE_CURRENT_SOURCE_DIR}/packages/run.cmake)
    set_tests_properties(packages PROPERTIES TIMEOUT 300 FIXTURES_SETUP packages RESOURCE_LOCK build)
    pardel_find_programs(packages.lintian lintian lintian)
    if(found)
        add_test(NAME packages.lintian COMMAND ${CMAKE_COMMAND}
            -D LINTIAN=${PARDEL_lintian} -D PACKAGES=${CMAKE_CURRENT_BINARY_DIR}/packages/packages
            -P ${CMAKE_CURRENT_SOURCE_DIR}/packages/lintian.cmake)
        set_tests_properties(packages.lintian PROPERTIES FIXTURES_REQUIRED packages ENVIRONMENT LC_ALL=C.UTF-8)
    endif()
    if(PARDEL_QT_MAJOR EQUAL 5)
        add_test(NAME packages.desk COMMAND ${CMAKE_COMMAND} -D TREE=${CMAKE_CURRENT_BINARY_DIR}/packages/tree/usr
            -D LIBDIR=${CMAKE_INSTALL_LIBDIR} -D SCRATCH=${CMAKE_CURRENT_BINARY_DIR}/packages-desk
            -P ${CMAKE_CURRENT_SOURCE_DIR}/packages/desk.cmake)
        set_tests_properties(packages.desk PROPERTIES FIXTURES_REQUIRED packages ENVIRONMENT LC_ALL=C.UTF-8)
    endif()
endif()

# What menus and software centres read of the desk.
set(desk ${PROJECT_SOURCE_DIR}/programs/pardel-desk)
pardel_find_programs(pardel-desk.menu desktop-file-utils desktop-file-validate)
if(found)
    add_test(NAME pardel-desk.menu COMMAND ${PARDEL_desktop-file-validate} ${desk}/pardel-desk.desktop)
endif()
pardel_find_programs(pardel-desk.metainfo appstream appstreamcli)
if(found)
    add_test(NAME pardel-desk.metainfo
        COMMAND ${PARDEL_appstreamcli} validate --no-net ${desk}/org.example.pardel_desk.metainfo.xml)
endif()

if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug" OR NOT CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    message(STATUS "No test abi: the stored binary interface is that of a debug build for x86_64")
else()
    pardel_find_programs(abi abigail-tools abidw abidiff)
    if(found)
        add_library(pardel_abi_records SHARED abi/records.cpp)
        string(REPLACE Pardel pardel_abi_records records ${PARDEL_NAME})
        set_target_properties(pardel_abi_records PROPERTIES OUTPUT_NAME ${records})
        target_link_libraries(pardel_abi_records PRIVATE Pardel::Pardel pardel_build_settings)
        set(compare ${CMAKE_COMMAND} -D ABIDW=${PARDEL_abidw} -D ABIDIFF=${PARDEL_abidiff}
            -D LIBRARY=$<TARGET_FILE:Pardel> -D RECORDS=$<TARGET_FILE:pardel_abi_records>
            -D SOURCE=${PROJECT_SOURCE_DIR} -D BUILD=${PROJECT_BINARY_DIR} -D SCRATCH=${CMAKE_CURRENT_BINARY_DIR}/abi)
        add_test(NAME abi COMMAND ${compare} -P ${CMAKE_CURRENT_SOURCE_DIR}/abi/compare.cmake)
        add_custom_target(abi COMMAND ${compare} -D STORE=ON -P ${CMAKE_CURRENT_SOURCE_DIR}/abi/compare.cmake
            DEPENDS Pardel pardel_abi_records VERBATIM)
    endif()
endif()

pardel_find_programs(format clang-format clang-format)
if(found)
    add_test(NAME format COMMAND ${CMAKE_COMMAND}
        -D CLANG_FORMAT=${PARDEL_clang-format} -D SOURCE=${PROJECT_SOURCE_DIR}
        -P ${CMAKE_CURRENT_SOURCE_DIR}/format/run.cmake)
endif()

pardel_find_programs(reference doxygen doxygen)
if(found)
    add_test(NAME reference COMMAND ${CMAKE_COMMAND}
        -D DOXYGEN=${PARDEL_doxygen} -D SOURCE=${PROJECT_SOURCE_DIR} -D PAGES=${PROJECT_BINARY_DIR}/docs
        -P ${CMAKE_CURRENT_SOURCE_DIR}/reference/run.cmake)
endif()
