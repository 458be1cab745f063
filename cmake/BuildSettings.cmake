# How everything in this project is compiled, and what is called after the version of Qt.

# The library for each version of Qt is installed under names of its own, so that both may lie on one machine.
if(PARDEL_QT_MAJOR EQUAL 5)
    set(PARDEL_QT_MINIMUM 5.15)
    set(PARDEL_NAME Pardel) # of the library's file, the CMake package, the pkg-config file and their folders
    set(PARDEL_INCLUDEDIR_SUFFIX "")
    set(PARDEL_RUNTIME_PACKAGE libpardel1)
    set(PARDEL_DEV_PACKAGE libpardel-dev)
elseif(PARDEL_QT_MAJOR EQUAL 6)
    set(PARDEL_QT_MINIMUM 6.4)
    set(PARDEL_NAME Pardel-qt6)
    set(PARDEL_INCLUDEDIR_SUFFIX /Pardel-qt6)
    set(PARDEL_RUNTIME_PACKAGE libpardel-qt6-1)
    set(PARDEL_DEV_PACKAGE libpardel-qt6-dev)
else()
    message(FATAL_ERROR "PARDEL_QT_MAJOR is ${PARDEL_QT_MAJOR}; it must be 5 or 6")
endif()
set(PARDEL_QT Qt${PARDEL_QT_MAJOR})
find_package(${PARDEL_QT} ${PARDEL_QT_MINIMUM} REQUIRED COMPONENTS Core Gui Sql Widgets)

set(CMAKE_CXX_EXTENSIONS OFF)

# Link PRIVATE; nothing of it reaches an application.
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
    $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments> # as the macros of Qt Test need
    $<$<BOOL:${PARDEL_WARNINGS_AS_ERRORS}>:-Werror>)
if(PARDEL_SANITIZE)
    target_compile_options(pardel_build_settings INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -O1
        # GCC's instrumented code makes this warning see null pointers that are not there.
        -Wno-null-dereference)
    target_link_options(pardel_build_settings INTERFACE -fsanitize=address,undefined)
endif()
if(PARDEL_FUZZ)
    target_compile_options(pardel_build_settings INTERFACE -fsanitize=fuzzer-no-link)
    target_compile_definitions(pardel_build_settings INTERFACE FUZZING_BUILD_MODE_UNSAFE_FOR_PRODUCTION)
endif()
