# SPDX-License-Identifier: Apache-2.0
# 32-bit x86 with its x87 arithmetic (the compiler's default). Tests run on this machine itself where
# its kernel lets them, else under qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)
set(loader /usr/i686-linux-gnu/lib/ld-linux.so.2)
execute_process(COMMAND ${loader} --version RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET)
if(result EQUAL 0)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${loader} --library-path /usr/i686-linux-gnu/lib)
else()
  set(CMAKE_CROSSCOMPILING_EMULATOR qemu-i386 -L /usr/i686-linux-gnu)
endif()
set(CMAKE_FIND_ROOT_PATH /usr/i686-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# Also where CMAKE_PREFIX_PATH says: a package has the CPU that it is for in its version file.
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)
