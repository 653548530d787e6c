# SPDX-License-Identifier: MIT
# What every target of the project shares.

add_library(strandloom_options INTERFACE)
target_compile_options(strandloom_options INTERFACE
    -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual -Wshadow=local)
target_compile_definitions(strandloom_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_USE_QSTRINGBUILDER QT_NO_KEYWORDS QT_NO_FOREACH
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(STRANDLOOM_SANITIZE)
    target_compile_options(strandloom_options INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    target_link_options(strandloom_options INTERFACE -fsanitize=address,undefined)
endif()

if(STRANDLOOM_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "libFuzzer needs clang: -DCMAKE_CXX_COMPILER=clang++")
    endif()
    target_compile_options(strandloom_options INTERFACE
        -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined
        -fno-sanitize=function # which clang 14 cannot do in coroutines, nor does it announce those
        -D__cpp_impl_coroutine=201902L -Wno-unknown-warning-option)
    target_link_options(strandloom_options INTERFACE -fsanitize=address,undefined)
endif()

add_library(threads INTERFACE)
target_compile_options(threads INTERFACE -pthread)

# strandloom_library(NAME SOURCES ... LINKS ...): the static library of one folder. Its headers are
# seen only by what links it, so an include against the direction of the arrows does not build.
function(strandloom_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE strandloom_options)
endfunction()

# Modules lie at the same place beside the program where it is built and where it is installed.
file(RELATIVE_PATH STRANDLOOM_MODULE_PATH
    ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR}/strandloom)
set(STRANDLOOM_PROGRAM_DIR ${PROJECT_BINARY_DIR}/src/app)

# strandloom_module(NAME SOURCE ... LINKS ...): a part of the program that is loaded when it is first
# needed, as base/Module.h has it.
function(strandloom_module name)
    cmake_parse_arguments(ARG "" "SOURCE" "LINKS" ${ARGN})
    add_library(${name}_module MODULE ${ARG_SOURCE})
    target_link_libraries(${name}_module PRIVATE ${ARG_LINKS} strandloom_options)
    target_link_options(${name}_module PRIVATE -Wl,--exclude-libs,ALL -Wl,--as-needed)
    set_target_properties(${name}_module PROPERTIES PREFIX "" OUTPUT_NAME ${name}
        CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
        LIBRARY_OUTPUT_DIRECTORY ${STRANDLOOM_PROGRAM_DIR}/${STRANDLOOM_MODULE_PATH})
    install(TARGETS ${name}_module LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/strandloom)
endfunction()

# strandloom_test(NAME SOURCES ... LINKS ...): a Qt Test program that ctest runs. Widgets are drawn off
# screen; a test that needs a real display server starts its own.
function(strandloom_test name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ${ARG_LINKS} fakes Qt6::Test strandloom_options)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 120
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;LANGUAGE=")
endfunction()
