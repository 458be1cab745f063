# How everything in this project is compiled. Link PRIVATE; nothing of it reaches an application.
find_package(Qt5 5.15 REQUIRED COMPONENTS Core Gui Sql Widgets)

add_library(pardel_build_settings INTERFACE)
target_compile_features(pardel_build_settings INTERFACE cxx_std_17)
target_compile_definitions(pardel_build_settings INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_KEYWORDS
    QT_STRICT_ITERATORS
    QT_DEPRECATED_WARNINGS
    QT_DISABLE_DEPRECATED_BEFORE=0x050F00)
target_compile_options(pardel_build_settings INTERFACE
    -Wall -Wextra -Wshadow -Wpedantic -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
    -Woverloaded-virtual -Wcast-align -Wnull-dereference -Wformat=2
    $<$<BOOL:${PARDEL_WARNINGS_AS_ERRORS}>:-Werror>)
if(PARDEL_SANITIZE)
    target_compile_options(pardel_build_settings INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -O1
        # GCC's instrumented code makes this warning see null pointers that are not there.
        -Wno-null-dereference)
    target_link_options(pardel_build_settings INTERFACE -fsanitize=address,undefined)
endif()
