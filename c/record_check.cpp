// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/record_check.h"

#include <string>

#include "answer.h"

using namespace nmos_instrument::c;

namespace {

template <class Record>
size_t findings_of(const Record* record, Buffer buffer)
{
    return answer(buffer, {record}, [&] {
        std::string lines;
        for (const std::string& finding : nmos_instrument::check_record(*record))
            lines.append(finding).append("\n");
        return lines;
    });
}

} // namespace

size_t nmos_check_node(const NMOS_IS04_ST* node, char* buffer, size_t size)
{
    return findings_of(node, {buffer, size});
}

size_t nmos_check_connections(const NMOS_IS05_ST* connections, char* buffer, size_t size)
{
    return findings_of(connections, {buffer, size});
}

size_t nmos_check_settings(const st_param_sys* settings, char* buffer, size_t size)
{
    return findings_of(settings, {buffer, size});
}
