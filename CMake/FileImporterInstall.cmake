# SPDX-License-Identifier: Apache-2.0
include(CMakePackageConfigHelpers)

install(TARGETS FileImporter EXPORT FileImporterTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY "${PROJECT_SOURCE_DIR}/Include/" DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT FileImporterTargets NAMESPACE FileImporter::
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/FileImporter)

configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/FileImporterConfig.cmake.in"
  "${PROJECT_BINARY_DIR}/FileImporterConfig.cmake"
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/FileImporter)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/FileImporterConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/FileImporterConfig.cmake"
  "${PROJECT_BINARY_DIR}/FileImporterConfigVersion.cmake"
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/FileImporter)

configure_file("${CMAKE_CURRENT_LIST_DIR}/fileimporter.pc.in" "${PROJECT_BINARY_DIR}/fileimporter.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/fileimporter.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
