# Installs the library into a scratch folder, moves it, builds the consumer against it and runs it.
# WAY is cmake or pkgconfig, NAME the library's for its version of Qt. With PREFIX it is one that lies there already.

include(${CMAKE_CURRENT_LIST_DIR}/../support/run.cmake)

file(REMOVE_RECURSE ${SCRATCH})
if(PREFIX)
    set(prefix ${PREFIX})
else()
    run(${CMAKE_COMMAND} --install ${BUILD} --config ${CONFIG} --prefix ${SCRATCH}/installed)
    file(RENAME ${SCRATCH}/installed ${SCRATCH}/moved)
    set(prefix ${SCRATCH}/moved)
endif()

set(program ${SCRATCH}/build/consumer)
if(WAY STREQUAL "cmake")
    run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${SCRATCH}/build -G ${GENERATOR}
        -D CMAKE_CXX_COMPILER=${COMPILER} -D CMAKE_PREFIX_PATH=${prefix} -D NAME=${NAME} -D VERSION=${VERSION})
    run(${CMAKE_COMMAND} --build ${SCRATCH}/build)
else()
    set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
    run(pkg-config --cflags --libs ${NAME})
    separate_arguments(flags UNIX_COMMAND "${output}")
    file(MAKE_DIRECTORY ${SCRATCH}/build)
    run(${COMPILER} -std=c++17 ${CMAKE_CURRENT_LIST_DIR}/main.cpp -o ${program} ${flags})
endif()

# Nothing but the library under its contract's name, and what lies beside it.
set(files ${LIBDIR}/lib${NAME}.so.1)
if(TRANSLATIONS)
    list(APPEND files share/${NAME}/translations/pardel_de.qm share/${NAME}/translations/pardel_ru.qm)
endif()
# The tools come with the library for Qt 5, and find it beside them.
if(NAME STREQUAL "Pardel")
    run(${prefix}/bin/pardel-decode --version)
    list(APPEND files bin/pardel-simulate share/man/man1/pardel-decode.1.gz)
endif()
set(ENV{LD_LIBRARY_PATH} ${prefix}/${LIBDIR})
run(${program})
set(expected "${VERSION}.${REVISION} object 17 sensors 4 supply 6 TUtils\n")
if(NOT output STREQUAL expected)
    message(FATAL_ERROR "the consumer printed\n${output}instead of\n${expected}")
endif()
foreach(file IN LISTS files)
    if(NOT EXISTS ${prefix}/${file})
        message(FATAL_ERROR "${file} is not installed")
    endif()
endforeach()
