# SPDX-License-Identifier: Apache-2.0

# GTest::gmock_main for this build's CPU: the system's library for the host, for another CPU built
# from the sources that Debian's package googletest installs. In a function, so that what is set
# for GoogleTest stays with GoogleTest.
function(provide_googletest)
  if(NOT CMAKE_CROSSCOMPILING)
    find_package(GTest 1.12 REQUIRED)
    return()
  endif()

  set(NMOS_INSTRUMENT_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "GoogleTest's sources")
  set(INSTALL_GTEST OFF)
  set(CMAKE_POLICY_DEFAULT_CMP0077 NEW) # lets the line above decide about GoogleTest's option
  add_subdirectory(${NMOS_INSTRUMENT_GOOGLETEST_SOURCE} ${PROJECT_BINARY_DIR}/googletest
    EXCLUDE_FROM_ALL)
  foreach(library gtest gmock gmock_main)
    target_compile_options(${library} PRIVATE -w)
  endforeach()
endfunction()

provide_googletest()
