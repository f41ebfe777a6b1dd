# SPDX-License-Identifier: Apache-2.0
#
# Writes the example in the comment of a public header to OUTPUT, as a program: what stands there
# must compile, and what it asserts must be so.
file(READ ${HEADER} text)
if(NOT text MATCHES "// ```cpp\n(.*)\n// ```\n")
  message(FATAL_ERROR "${HEADER} has no example between \"// ```cpp\" and \"// ```\"")
endif()
string(REGEX REPLACE "\n// ?" "\n    " example "\n${CMAKE_MATCH_1}")
file(WRITE ${OUTPUT} "#undef NDEBUG
#include <algorithm>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include \"nmos_instrument/nmos_instrument.h\"

int main()
{${example}
    return 0;
}
")
