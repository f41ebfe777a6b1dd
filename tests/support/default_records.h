// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_DEFAULT_RECORDS_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_DEFAULT_RECORDS_H

#include <memory>
#include <string>
#include <vector>

#include "nmos_instrument/default_records.h"

/// About 500 KB: keep it on the heap.
struct DefaultRecords
{
    NMOS_IS04_ST node;
    NMOS_IS05_ST connections;
    st_param_sys settings;
    nmos_instrument::Selection selection;

    std::vector<std::string> findings() const
    {
        return nmos_instrument::check_records(node, connections, settings, selection);
    }
};

inline nmos_instrument::RecordsDescription example_description()
{
    nmos_instrument::RecordsDescription about;
    about.seed = "QX0000001";
    about.label = "Rack 4";
    about.interfaces[0] = {"media1", "00-00-5e-00-53-01", "192.0.2.10"};
    about.interfaces[1] = {"media2", "00-00-5e-00-53-02", "198.51.100.10"};
    about.address = "192.0.2.1";
    about.port = 8080;
    about.grandmaster = "00-00-5e-ff-fe-00-53-01";
    about.version_seconds = 1541234567;
    about.version_nanoseconds = 25;
    return about;
}

inline std::unique_ptr<DefaultRecords> default_records()
{
    auto records = std::make_unique<DefaultRecords>();
    nmos_instrument::fill_default_records(example_description(), records->node,
                                          records->connections, records->settings,
                                          records->selection);
    return records;
}

#endif
