# SPDX-License-Identifier: Apache-2.0

# Two components, as distributions split them: what runs, and what one builds against.
include(CMakePackageConfigHelpers)

set(cmake_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/nmos_instrument)

install(TARGETS nmos_instrument nmos_instrument_c EXPORT nmos_instrument
  LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY include/nmos_instrument
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.h")
install(FILES include/nmos_instrument_c.h
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

# The library depends on no other package, so its list of targets is the whole package file.
install(EXPORT nmos_instrument
  FILE nmos_instrumentConfig.cmake NAMESPACE nmos_instrument::
  DESTINATION ${cmake_package_dir} COMPONENT development)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/nmos_instrumentConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/nmos_instrumentConfigVersion.cmake
  DESTINATION ${cmake_package_dir} COMPONENT development)

# Paths in the pkg-config file are relative to the file, so that an installed tree can be moved.
cmake_path(SET pc_dir NORMALIZE "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig")
cmake_path(RELATIVE_PATH pc_dir BASE_DIRECTORY /prefix OUTPUT_VARIABLE pc_dir_below_prefix)
string(REGEX REPLACE "[^/]+" ".." pc_dir_to_prefix ${pc_dir_below_prefix})
configure_file(cmake/nmos-instrument.pc.in nmos-instrument.pc @ONLY)
configure_file(cmake/nmos-instrument-c.pc.in nmos-instrument-c.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/nmos-instrument.pc ${PROJECT_BINARY_DIR}/nmos-instrument-c.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# Links between the documents keep working; those into the sources do not.
set(documents_dir ${CMAKE_INSTALL_DATADIR}/doc/nmos-instrument)
install(FILES LICENSE DESTINATION ${documents_dir} COMPONENT runtime)
install(FILES README.md CHANGELOG.md CONTRIBUTING.md
  DESTINATION ${documents_dir} COMPONENT development)
install(DIRECTORY docs DESTINATION ${documents_dir} COMPONENT development)

if(NMOS_INSTRUMENT_PROGRAM)
  install(TARGETS nmos-instrument RUNTIME COMPONENT program)
endif()
