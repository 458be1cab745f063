# Describes the binary interface of LIBRARY and of RECORDS and compares it with the description stored here. Every
# difference is told: what is gone or changed breaks existing programs; what is new breaks none, but only what the stored
# description holds is guarded from then on. With STORE a description that differs becomes the stored one.

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
    string(REPLACE "path='../../" "path='" description "${description}") # as ccache may give them
    if(NOT description MATCHES "<class-decl name='[A-Za-z]+' size-in-bits")
        message(FATAL_ERROR "${library} holds no descriptions of types: it was not compiled with -g")
    endif()
    file(WRITE ${current} "${description}")

    # Harmless differences too. Not the texts: their order depends on the paths that the compiler was given.
    set(same FALSE)
    if(EXISTS ${stored})
        execute_process(COMMAND ${ABIDIFF} --harmless ${stored} ${current} RESULT_VARIABLE result)
        if(result EQUAL 0)
            set(same TRUE)
        endif()
    endif()
    if(NOT same AND STORE)
        file(COPY_FILE ${current} ${stored})
    elseif(NOT same)
        set(differs TRUE)
    endif()
endforeach()
if(differs)
    message(FATAL_ERROR "The binary interface is not the stored one, as told above. What is removed or changed there may "
        "break programs that are linked with the library; what is added is not guarded yet. Where that is meant, "
        "scripts/abi stores the new one.")
endif()
