# Holds every source against clang-format's layout; "clang-format -i FILE" mends what it tells.

set(sources "")
foreach(folder IN ITEMS benchmarks designer examples include programs src tests)
    file(GLOB_RECURSE files ${SOURCE}/${folder}/*.cpp ${SOURCE}/${folder}/*.h)
    list(APPEND sources ${files})
endforeach()
if(NOT sources)
    message(FATAL_ERROR "There are no sources in ${SOURCE}")
endif()
execute_process(COMMAND ${CLANG_FORMAT} --dry-run -Werror ${sources} COMMAND_ERROR_IS_FATAL ANY)
