// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_FUZZ_RECORD_OPERATIONS_H
#define NMOS_INSTRUMENT_FUZZ_RECORD_OPERATIONS_H

#include <picojson.h>
#include <stdexcept>
#include <string>

#include "fuzz_input.h"
#include "support/all_operations.h"

/// Calls every operation on the input: it returns, or throws what it is documented to throw. What
/// is to be JSON is JSON, whatever the input.
inline void call_all_operations(const OperationInput& input)
{
    for (const Operation& operation : all_operations()) {
        OperationInput own = input;
        try {
            const std::string text = operation.call(own);
            REQUIRE(text.size() < 64 * sizeof(NMOS_IS05_ST));
            picojson::value value;
            if (operation.is_json)
                REQUIRE(picojson::parse(value, text).empty());
        } catch (const std::overflow_error& error) {
            REQUIRE(*error.what() == '\0');
        } catch (const std::out_of_range& error) {
            REQUIRE(*error.what() != '\0');
        }
    }
}

#endif
