# Files that Debian wants compressed: the same bytes at every build of the same file.
find_program(PARDEL_GZIP gzip REQUIRED)
mark_as_advanced(PARDEL_GZIP)

# pardel_compress(FILE NAME): makes NAME.gz of FILE in this folder of the build.
function(pardel_compress file name)
    set(compressed ${CMAKE_CURRENT_BINARY_DIR}/${name}.gz)
    add_custom_command(OUTPUT ${compressed} COMMAND ${PARDEL_GZIP} -9nc ${file} > ${compressed} DEPENDS ${file} VERBATIM)
    add_custom_target(pardel_${name} ALL DEPENDS ${compressed})
endfunction()
