# SPDX-License-Identifier: Apache-2.0
#
# What the host and the program are made of. Included by the CMakeLists.txt of the whole, so that its
# folders all know the packages.
find_package(CURL 7.85 REQUIRED)
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(fmt 8 REQUIRED)
find_package(nlohmann_json 3.10 REQUIRED)
pkg_check_modules(MICROHTTPD REQUIRED IMPORTED_TARGET GLOBAL libmicrohttpd)
pkg_check_modules(UUID REQUIRED IMPORTED_TARGET GLOBAL uuid)

if(NMOS_INSTRUMENT_PROGRAM)
  find_package(CLI11 2.1 REQUIRED)
  find_package(spdlog REQUIRED)
endif()
