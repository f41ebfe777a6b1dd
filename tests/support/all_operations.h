// SPDX-License-Identifier: Apache-2.0
//
// Every operation of the library, callable on one set of records.

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_ALL_OPERATIONS_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_ALL_OPERATIONS_H

#include <span>
#include <string>

#include "nmos_instrument/nmos_instrument.h"

/// What operations work on. The indexes and selectors are taken as they are.
struct OperationInput
{
    NMOS_IS04_ST* node;
    NMOS_IS05_ST* connections;
    st_param_sys* settings;
    std::string text; ///< an SDP file, a request line, or any other text
    int index = 0;
    int first_selector = 0;
    int second_selector = 2;
    int third_selector = 1;
};

struct Operation
{
    const char* name;
    /// The text that the operation returns, or all that it gives back as one text.
    std::string (*call)(OperationInput& input);
    /// Whether it writes into the node's record.
    bool writes_record = false;
    /// Whether the text is JSON whatever stands in the records. (Listings show ids as they are.)
    bool is_json = false;
};

std::span<const Operation> all_operations();

#endif
