// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_BENCH_EXAMPLE_RECORDS_H
#define NMOS_INSTRUMENT_BENCH_EXAMPLE_RECORDS_H

#include <memory>
#include <string>

#include "nmos_instrument/nmos_instrument.h"

/// Records filled as an instrument fills them. The list of 24 receivers is about 14 KB.
struct ExampleRecords
{
    std::unique_ptr<NMOS_IS04_ST> node;
    std::unique_ptr<NMOS_IS05_ST> connections;
    std::unique_ptr<st_param_sys> settings;
    std::string sdp; ///< two legs, about 1.2 KB
};

ExampleRecords example_records();

#endif
