# SPDX-License-Identifier: Apache-2.0
#
# Writes the example in the comment of nmos_instrument_c.h to OUTPUT, as a program: what stands there
# must compile as C, and what it asserts must be so.
file(READ ${HEADER} text)
if(NOT text MATCHES "// ```c\n(.*)\n// ```\n")
  message(FATAL_ERROR "${HEADER} has no example between \"// ```c\" and \"// ```\"")
endif()
string(REGEX REPLACE "\n// ?" "\n    " example "\n${CMAKE_MATCH_1}")
string(REGEX REPLACE "^\n// " "\n    " example "${example}")
file(WRITE ${OUTPUT} "#undef NDEBUG
#include <assert.h>
#include <string.h>

#include \"nmos_instrument_c.h\"

int main(void)
{${example}
    return 0;
}
")
