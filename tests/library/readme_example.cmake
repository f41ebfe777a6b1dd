# SPDX-License-Identifier: Apache-2.0
#
# Writes the C++ example of README to OUTPUT: what stands there must compile.
file(READ ${README} text)
if(NOT text MATCHES "```cpp\n([^`]*)```")
  message(FATAL_ERROR "${README} has no C++ example")
endif()
file(WRITE ${OUTPUT} "${CMAKE_MATCH_1}")
