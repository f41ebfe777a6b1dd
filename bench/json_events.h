// SPDX-License-Identifier: Apache-2.0
//
// A JSON text as the events that make it, so that other libraries can make the same text from the
// same data: keys and strings come as C strings, as they would come from a record.

#ifndef NMOS_INSTRUMENT_BENCH_JSON_EVENTS_H
#define NMOS_INSTRUMENT_BENCH_JSON_EVENTS_H

#include <string>
#include <vector>

struct JsonEvent
{
    enum class Kind
    {
        begin_object,
        end_object,
        begin_array,
        end_array,
        key,
        string,
        number,
        boolean,
        null
    };
    Kind kind;
    std::string text; ///< of a key or string
    double number = 0;
};

std::vector<JsonEvent> events_of(const std::string& json);

/// The texts that the other libraries make of the events.
std::string by_picojson(const std::vector<JsonEvent>& events);
std::string by_nlohmann(const std::vector<JsonEvent>& events);
std::string by_rapidjson(const std::vector<JsonEvent>& events);

#endif
