# SPDX-License-Identifier: Apache-2.0
# A room is a folder of the library: compiled once, linked into the shared library and into the
# internal static library that the tests use.

set_property(GLOBAL PROPERTY FI_ROOMS "")
set_property(GLOBAL PROPERTY FI_ROOM_LIBRARIES "")

# fi_room(NAME SOURCES file... [LINK library...])
function(fi_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;LINK" ${ARGN})
  add_library(fi_${name} OBJECT ${ROOM_SOURCES})
  target_compile_definitions(fi_${name} PRIVATE FI_BUILDING_LIBRARY)
  target_include_directories(fi_${name} PRIVATE
    "${PROJECT_SOURCE_DIR}/Include" "${PROJECT_SOURCE_DIR}/Sources")
  target_link_libraries(fi_${name} PRIVATE fi_compile_settings ${ROOM_LINK})
  set_property(GLOBAL APPEND PROPERTY FI_ROOMS fi_${name})
  set_property(GLOBAL APPEND PROPERTY FI_ROOM_LIBRARIES ${ROOM_LINK})
endfunction()

# fi_tests(NAME SOURCES file... [LINK library...] [DEFINITIONS definition...])
# One test program per folder, every case a ctest of its own.
function(fi_tests name)
  cmake_parse_arguments(TESTS "" "" "SOURCES;LINK;DEFINITIONS" ${ARGN})
  add_executable(${name} ${TESTS_SOURCES})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/Tests")
  target_compile_definitions(${name} PRIVATE ${TESTS_DEFINITIONS})
  if(FILEIMPORTER_SANITIZE)
    # The instrumented code of the macros takes the optimiser three times as long as all the rest.
    target_compile_options(${name} PRIVATE -O0)
  endif()
  target_link_libraries(${name} PRIVATE
    fi_compile_settings FileImporterInternal fi_test_support GTest::gmock GTest::gtest ${TESTS_LINK})
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120)
endfunction()
