# SPDX-License-Identifier: Apache-2.0

# Components, as distributions split them: what runs, and what one builds against; likewise of the host
# library, which needs other packages.
include(CMakePackageConfigHelpers)

set(cmake_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/nmos_instrument)

# install_library(TARGET EXPORT RUNTIME_COMPONENT DEVELOPMENT_COMPONENT)
function(install_library target export runtime development)
  install(TARGETS ${target} EXPORT ${export}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
      COMPONENT ${runtime} NAMELINK_COMPONENT ${development}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT ${development}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(EXPORT ${export}
    FILE ${export}Targets.cmake NAMESPACE nmos_instrument::
    DESTINATION ${cmake_package_dir} COMPONENT ${development})
endfunction()

install_library(nmos_instrument nmos_instrument runtime development)
install(DIRECTORY include/nmos_instrument
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.h")
if(TARGET nmos_instrument_c)
  install_library(nmos_instrument_c nmos_instrument_c runtime development)
  install(FILES include/nmos_instrument_c.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
endif()
if(NMOS_INSTRUMENT_HOST)
  install_library(nmos_instrument_host_shared nmos_instrument_host host-runtime host-development)
  install(DIRECTORY include/nmos_instrument_host
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT host-development
    FILES_MATCHING PATTERN "*.h")
endif()

configure_file(cmake/nmos_instrumentConfig.cmake.in nmos_instrumentConfig.cmake COPYONLY)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/nmos_instrumentConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/nmos_instrumentConfig.cmake
  ${PROJECT_BINARY_DIR}/nmos_instrumentConfigVersion.cmake
  DESTINATION ${cmake_package_dir} COMPONENT development)

# Paths in the pkg-config file are relative to the file, so that an installed tree can be moved.
cmake_path(SET pc_dir NORMALIZE "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig")
cmake_path(RELATIVE_PATH pc_dir BASE_DIRECTORY /prefix OUTPUT_VARIABLE pc_dir_below_prefix)
string(REGEX REPLACE "[^/]+" ".." pc_dir_to_prefix ${pc_dir_below_prefix})
function(install_pc name development)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT ${development})
endfunction()
install_pc(nmos-instrument development)
if(TARGET nmos_instrument_c)
  install_pc(nmos-instrument-c development)
endif()
if(NMOS_INSTRUMENT_HOST)
  install_pc(nmos-instrument-host host-development)
endif()

# Links between the documents keep working; those into the sources do not.
set(documents_dir ${CMAKE_INSTALL_DATADIR}/doc/nmos-instrument)
install(FILES LICENSE DESTINATION ${documents_dir} COMPONENT runtime)
if(PROJECT_IS_TOP_LEVEL)
  install(FILES README.md CHANGELOG.md CONTRIBUTING.md
    DESTINATION ${documents_dir} COMPONENT development)
  install(DIRECTORY docs examples DESTINATION ${documents_dir} COMPONENT development)
endif()

if(NMOS_INSTRUMENT_PROGRAM)
  install(TARGETS nmos-instrument RUNTIME COMPONENT program)
endif()
