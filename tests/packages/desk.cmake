# Runs the desk that lies in TREE as its package installs it: where its files come to lie, in a new home or elsewhere, and
# that it changes nothing in its own folders.

include(${CMAKE_CURRENT_LIST_DIR}/../support/run.cmake)

# desk(HOME OPTION...): starts the desk of tree, which makes all its files for the first password.
function(desk home)
    execute_process(COMMAND ${CMAKE_COMMAND} -E env
        --unset=XDG_CONFIG_HOME --unset=XDG_DATA_HOME --unset=XDG_CACHE_HOME XDG_RUNTIME_DIR=${SCRATCH}/runtime HOME=${home}
        ${tree}/bin/pardel-desk --set-password admin ${ARGN}
        INPUT_FILE ${SCRATCH}/password RESULT_VARIABLE result ERROR_VARIABLE errors)
    set(result "${result}" PARENT_SCOPE)
    set(errors "${errors}" PARENT_SCOPE)
endfunction()

# files(FOLDER RESULT): what lies there, but for the day in the log's name.
function(files folder result)
    file(GLOB_RECURSE files LIST_DIRECTORIES false RELATIVE ${folder} ${folder}/*)
    list(TRANSFORM files REPLACE "[0-9]+-[0-9]+-[0-9]+" DAY)
    set(${result} "${files}" PARENT_SCOPE)
endfunction()

# expect(FOLDER FILE...): the last desk ended well, and these files are in the folder.
function(expect folder)
    files(${folder} found)
    list(SORT ARGN)
    list(SORT found)
    if(NOT result EQUAL 0 OR NOT found STREQUAL ARGN)
        message(FATAL_ERROR "The desk ended with ${result} and has in ${folder}\n${found}\ninstead of\n${ARGN}\n${errors}")
    endif()
endfunction()

file(REMOVE_RECURSE ${SCRATCH})
file(WRITE ${SCRATCH}/password "secret\n")
file(MAKE_DIRECTORY ${SCRATCH}/runtime)
file(CHMOD ${SCRATCH}/runtime PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE) # else Qt complains
set(tree ${TREE})
set(data pardel-desk.db pardel-desk-archive.db Logs/Log_Desk/DAY.txt)

files(${tree} before)
desk(${SCRATCH}/home)
set(expected ${data})
list(TRANSFORM expected PREPEND .local/share/pardel-desk/)
expect(${SCRATCH}/home ${expected} .config/pardel-desk/pardel-desk.ini)
file(STRINGS ${SCRATCH}/home/.config/pardel-desk/pardel-desk.ini keys REGEX "^(BaseName|SpeedLimit)=")
if(NOT keys STREQUAL "BaseName=pardel-desk.db;SpeedLimit=90")
    message(FATAL_ERROR "The settings are not those of the template: ${keys}")
endif()
desk(/dev/null --data ${SCRATCH}/named)
expect(${SCRATCH}/named ${data} pardel-desk.ini)
desk(/dev/null)
if(NOT result EQUAL 2 OR NOT errors MATCHES "^pardel-desk: /dev/null/[^\n]* cannot be written to; --data FOLDER [^\n]*\n$")
    message(FATAL_ERROR "A desk that cannot write anywhere ended with ${result} and told\n${errors}")
endif()
run(${CMAKE_COMMAND} -E env HOME=/dev/null XDG_RUNTIME_DIR=${SCRATCH}/runtime QT_QPA_PLATFORM=offscreen
    ${tree}/bin/pardel-desk --tour ${SCRATCH}/pictures)
files(${tree} after)
if(NOT after STREQUAL before)
    message(FATAL_ERROR "The desk has written into the folders of its package:\n${after}")
endif()

# With the template beside it, as in a folder that somebody has unpacked, it keeps to that folder.
set(tree ${SCRATCH}/unpacked)
file(COPY ${TREE}/bin/pardel-desk ${TREE}/share/pardel-desk/pardel-desk.ini_def DESTINATION ${tree}/bin)
file(COPY ${TREE}/${LIBDIR}/ DESTINATION ${tree}/${LIBDIR})
desk(/dev/null)
expect(${tree}/bin ${data} pardel-desk pardel-desk.ini pardel-desk.ini_def)
