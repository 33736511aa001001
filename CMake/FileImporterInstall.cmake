# SPDX-License-Identifier: Apache-2.0
# What "cmake --install" lays down: the library with its headers, the CMake package, the pkg-config file;
# the tool's folder adds the tool. All of it finds its parts by relative paths, so that a package can be unpacked anywhere.
include(CMakePackageConfigHelpers)

set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/FileImporter")
set(pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

install(TARGETS FileImporter EXPORT FileImporterTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY "${PROJECT_SOURCE_DIR}/Include/" DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")
install(EXPORT FileImporterTargets NAMESPACE FileImporter:: DESTINATION ${package_dir})

configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/FileImporterConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/FileImporterConfig.cmake" INSTALL_DESTINATION ${package_dir})
write_basic_package_version_file("${PROJECT_BINARY_DIR}/FileImporterConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/FileImporterConfig.cmake"
  "${PROJECT_BINARY_DIR}/FileImporterConfigVersion.cmake" DESTINATION ${package_dir})

file(RELATIVE_PATH up_to_prefix "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" up_to_prefix "${up_to_prefix}")
configure_file("${CMAKE_CURRENT_LIST_DIR}/fileimporter.pc.in" "${PROJECT_BINARY_DIR}/fileimporter.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/fileimporter.pc" DESTINATION ${pkgconfig_dir})

install(FILES "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION ${CMAKE_INSTALL_DOCDIR})
