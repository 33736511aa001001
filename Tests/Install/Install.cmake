# SPDX-License-Identifier: Apache-2.0
# Installs the build into PREFIX, and a copy of that into MOVED: a package that is unpacked elsewhere.
file(REMOVE_RECURSE "${PREFIX}" "${MOVED}")
execute_process(COMMAND ${CMAKE_COMMAND} --install "${BUILD}" --prefix "${PREFIX}"
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
file(COPY "${PREFIX}/" DESTINATION "${MOVED}")
