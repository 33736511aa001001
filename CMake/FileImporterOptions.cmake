# SPDX-License-Identifier: Apache-2.0
# What a build can be told, and the compiler settings that every target shares.

option(FILEIMPORTER_TESTS "Build the tests" OFF)
option(FILEIMPORTER_BENCH "Build the benchmarks" OFF)
option(FILEIMPORTER_FUZZ "Build libFuzzer targets (clang only)" OFF)
option(FILEIMPORTER_WERROR "Treat warnings as errors" OFF)
option(FILEIMPORTER_COVERAGE "Instrument for line coverage" OFF)
set(FILEIMPORTER_SANITIZE "" CACHE STRING "Sanitizers: address,undefined or thread")

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(FILEIMPORTER_CCACHE ccache)
if(FILEIMPORTER_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${FILEIMPORTER_CCACHE}")
endif()

add_library(fi_compile_settings INTERFACE)
target_compile_definitions(fi_compile_settings INTERFACE _FILE_OFFSET_BITS=64)
target_compile_options(fi_compile_settings INTERFACE
  # Contraction and fast-math would make pixels and dates depend on the compiler.
  -ffp-contract=off -fno-fast-math
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wformat=2 -Wimplicit-fallthrough
  -Wundef -Wunused
  # g++ 12 sees an overlap in every "text" + std::to_string(n) that it inlines.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  $<$<BOOL:${FILEIMPORTER_WERROR}>:-Werror>)
if(FILEIMPORTER_SANITIZE)
  target_compile_options(fi_compile_settings INTERFACE
    -fsanitize=${FILEIMPORTER_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_link_options(fi_compile_settings INTERFACE -fsanitize=${FILEIMPORTER_SANITIZE})
endif()
if(FILEIMPORTER_FUZZ)
  target_compile_options(fi_compile_settings INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(FILEIMPORTER_COVERAGE)
  target_compile_options(fi_compile_settings INTERFACE --coverage)
  target_link_options(fi_compile_settings INTERFACE --coverage)
endif()
