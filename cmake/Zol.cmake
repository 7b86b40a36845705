# Build conventions shared by every part of the product: strict warnings, the sanitizer build,
# and the product-root layout (bin/, lib/, data/, log/) that installs and the staged root follow.

set(CMAKE_INSTALL_MESSAGE LAZY)
set(ZOL_STAGE_DIR ${CMAKE_BINARY_DIR}/stage CACHE INTERNAL "Product root staged inside the build tree")

add_compile_options(-Wall -Wextra -Wshadow -Werror -Wno-error=deprecated-declarations)
# __FILE__ (trace lines, assertions) names a unit by its path below src/, or below the source
# folder for tests/, bench/ and fuzz/: "services/rptset/basesetting.cpp" and
# "baseset/basesetting.cpp" stay apart. The general map comes first: GCC applies the last
# matching one, clang the longest. A compiler launcher may hand the compiler the source by a path
# relative to the build folder, so that spelling is mapped too.
add_compile_options(-fmacro-prefix-map=${CMAKE_SOURCE_DIR}/= -fmacro-prefix-map=${CMAKE_SOURCE_DIR}/src/=)
file(RELATIVE_PATH ZOL_SOURCE_FROM_BUILD ${CMAKE_BINARY_DIR} ${CMAKE_SOURCE_DIR})
string(REGEX REPLACE "/+$" "" ZOL_SOURCE_FROM_BUILD "${ZOL_SOURCE_FROM_BUILD}")
if(ZOL_SOURCE_FROM_BUILD STREQUAL "")
    add_compile_options(-fmacro-prefix-map=src/=)  # built inside the source folder
else()
    add_compile_options(-fmacro-prefix-map=${ZOL_SOURCE_FROM_BUILD}/=
                        -fmacro-prefix-map=${ZOL_SOURCE_FROM_BUILD}/src/=)
endif()
# The service libraries must really unload with FreeLibrary. GCC gives inline variables and the
# static locals of library templates "unique" binding, which pins a shared object in memory for
# the rest of the process; ordinary weak symbols do not.
# Clang never gives that binding and has no option for it.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-fno-gnu-unique)
endif()
# GCC 12 at -O3 reports overlapping copies inside libstdc++'s own std::string code for plain
# concatenations and assignments of literals (GCC bug 105329, fixed in GCC 13); clang and -O2 see
# nothing. The warning stays on for every other compiler.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()
# The libFuzzer build instruments everything for coverage and runs under the sanitizers.
if(ZOL_FUZZ_ENGINE STREQUAL "libfuzzer")
    if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        message(FATAL_ERROR "ZOL_FUZZ_ENGINE=libfuzzer needs clang (configure with CC=clang CXX=clang++)")
    endif()
    set(ZOL_SANITIZE ON)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(ZOL_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=address,undefined)
else()
    # Every interface between the program, the platform layer and the service libraries is C, so
    # each links its own C++ runtime: not loading and relocating libstdc++.so at every start saves
    # about half a millisecond. --exclude-libs keeps a library's runtime copy private to it.
    add_link_options(-static-libstdc++ -static-libgcc -Wl,--as-needed)
    string(APPEND CMAKE_SHARED_LINKER_FLAGS " -Wl,--exclude-libs,ALL")
    string(APPEND CMAKE_MODULE_LINKER_FLAGS " -Wl,--exclude-libs,ALL")
endif()

# Programs of the product root go to bin/ and find libzolwin.so in ../lib; an installed system
# links each from /usr/sbin (cmake/Package.cmake).
function(zol_product_program target)
    set_target_properties(${target} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin
        BUILD_RPATH "${CMAKE_BINARY_DIR}/lib"
        INSTALL_RPATH "$ORIGIN/../lib")
    install(TARGETS ${target} RUNTIME DESTINATION bin)
    set_property(GLOBAL APPEND PROPERTY ZOL_PRODUCT_TARGETS ${target})
    set_property(GLOBAL APPEND PROPERTY ZOL_PRODUCT_PROGRAMS ${target})
endfunction()

# A service library is loaded by file name ("rptset.dll") from lib/; dlopen ignores the suffix.
# Usage: zol_service_library(<target> <file name> <sources>...)
function(zol_service_library target file)
    add_library(${target} MODULE ${ARGN})
    # Only the functions marked ZOLWIN_API are the library's interface. Everything else stays
    # inside: calls to it need no symbol look-up when the program loads the library.
    set_target_properties(${target} PROPERTIES
        PREFIX "" SUFFIX "" OUTPUT_NAME ${file}
        CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
        LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib
        BUILD_RPATH "${CMAKE_BINARY_DIR}/lib"
        INSTALL_RPATH "$ORIGIN")
    target_link_libraries(${target} PRIVATE zolwin)
    if(NOT ZOL_SANITIZE)
        target_link_options(${target} PRIVATE -Wl,--no-undefined)
    endif()
    # A library that calls only the platform layer would lose libc to --as-needed; Debian wants
    # every shared object to name the C library it runs with.
    # One linker option: the compiler driver drops a -lc of its own.
    target_link_libraries(${target} PRIVATE "-Wl,--push-state,--no-as-needed,-lc,--pop-state")
    install(TARGETS ${target} LIBRARY DESTINATION lib)
    set_property(GLOBAL APPEND PROPERTY ZOL_PRODUCT_TARGETS ${target})
endfunction()

# The staged product root: a real install into build/stage after every build, so that tests
# run exactly what an installed system runs.
function(zol_add_stage_target)
    get_property(targets GLOBAL PROPERTY ZOL_PRODUCT_TARGETS)
    add_custom_target(stage ALL
        COMMAND ${CMAKE_COMMAND} --install ${CMAKE_BINARY_DIR} --prefix ${ZOL_STAGE_DIR}
        COMMENT "Staging the product root in ${ZOL_STAGE_DIR}"
        VERBATIM)
    if(targets)
        add_dependencies(stage ${targets})
    endif()
endfunction()
