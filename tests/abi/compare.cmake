# Describes the binary interface of LIBRARY and of RECORDS and compares it with the description stored here; with STORE
# it becomes the stored one. A new function is no difference, as programs that are there do not know it.

include(${CMAKE_CURRENT_LIST_DIR}/../support/run.cmake)

set(differs FALSE)
foreach(library IN ITEMS ${LIBRARY} ${RECORDS})
    cmake_path(GET library STEM name)
    set(stored ${CMAKE_CURRENT_LIST_DIR}/${name}.abi)
    set(current ${SCRATCH}/${name}.abi)
    file(MAKE_DIRECTORY ${SCRATCH})
    run(${ABIDW} --headers-dir ${SOURCE}/include/Pardel --drop-private-types
        --suppressions ${CMAKE_CURRENT_LIST_DIR}/suppressions.ini
        --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed --no-parameter-names --type-id-style hash
        --out-file ${current} ${library})
    file(READ ${current} description)
    string(REPLACE "path='${BUILD}/" "path='" description "${description}")
    string(REPLACE "path='${SOURCE}/" "path='" description "${description}")
    if(NOT description MATCHES "<class-decl name='[A-Za-z]+' size-in-bits")
        message(FATAL_ERROR "${library} holds no descriptions of types: it was not compiled with -g")
    endif()
    if(STORE)
        file(WRITE ${stored} "${description}")
        continue()
    endif()
    file(WRITE ${current} "${description}")

    execute_process(COMMAND ${ABIDIFF} --no-added-syms ${stored} ${current} RESULT_VARIABLE result)
    if(NOT result EQUAL 0)
        set(differs TRUE)
    endif()
endforeach()
if(differs)
    message(FATAL_ERROR "The binary interface is not the stored one, as told above: programs that are linked with the "
        "library may fail. Where that is meant, scripts/abi stores the new one.")
endif()
