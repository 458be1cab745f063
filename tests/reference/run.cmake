# Makes the reference pages, in which a public item without a comment is a fault, and looks for what Doxygen passes over
# in silence: functions of a header that has no @file, examples that nothing leads to.

include(${CMAKE_CURRENT_LIST_DIR}/../support/run.cmake)

file(REMOVE_RECURSE ${PAGES}/html)
run(${CMAKE_COMMAND} -E chdir ${PAGES} ${DOXYGEN} Doxyfile)

set(faults "")
file(GLOB headers ${SOURCE}/include/Pardel/*.h)
foreach(header IN LISTS headers)
    cmake_path(GET header STEM name)
    file(STRINGS ${header} functions REGEX "^(PARDEL_EXPORT|#define) ")
    string(REPLACE _ __ page ${name})
    if(functions AND NOT EXISTS ${PAGES}/html/${page}_8h.html)
        list(APPEND faults "${name}.h needs @file: its functions have no page")
    endif()
endforeach()

file(READ ${PAGES}/html/index.html mainPage)
file(GLOB examples RELATIVE ${SOURCE}/examples ${SOURCE}/examples/*/main.cpp)
foreach(example IN LISTS examples)
    string(REPLACE /main.cpp _2main_8cpp-example.html page ${example})
    string(FIND "${mainPage}" "href=\"${page}\"" found)
    if(found EQUAL -1)
        list(APPEND faults "docs/reference.md does not lead to ${example} (docs/examples.dox describes it)")
    endif()
endforeach()

if(faults OR NOT headers OR NOT examples)
    list(JOIN faults "\n  " faults)
    message(FATAL_ERROR "The reference pages are not complete:\n  ${faults}")
endif()
