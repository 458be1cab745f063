# Tests of what is made beside the library, each where its programs are.

# pardel_find_programs(TEST PACKAGE PROGRAM...): whether the programs are there; says which Debian package has them if not.
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
        -D CPACK=${CMAKE_CPACK_COMMAND} -D BUILD=${PROJECT_BINARY_DIR} -D CONFIG=$<CONFIG> -D VERSION=${PROJECT_VERSION}
        -D COMPILER=${CMAKE_CXX_COMPILER} -D GENERATOR=${CMAKE_GENERATOR} -D LIBDIR=${CMAKE_INSTALL_LIBDIR}
        -D TRANSLATIONS=${PARDEL_BUILD_TRANSLATIONS} -D SCRATCH=${CMAKE_CURRENT_BINARY_DIR}/packages
        -P ${CMAKE_CURRENT_SOURCE_DIR}/packages/run.cmake)
    set_tests_properties(packages PROPERTIES TIMEOUT 300)
endif()
