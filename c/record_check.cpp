// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/record_check.h"

#include <string>
#include <vector>

#include "answer.h"

using namespace nmos_instrument::c;

namespace {

std::string lines_of(const std::vector<std::string>& findings)
{
    std::string lines;
    for (const std::string& finding : findings)
        lines.append(finding).append("\n");
    return lines;
}

template <class Record>
size_t findings_of(const Record* record, Buffer buffer)
{
    return answer(buffer, {record},
                  [&] { return lines_of(nmos_instrument::check_record(*record)); });
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

size_t nmos_check_records(const NMOS_IS04_ST* node, const NMOS_IS05_ST* connections,
                          const st_param_sys* settings, int receiver_filter, int audio_group_filter,
                          int sender_filter, char* buffer, size_t size)
{
    return answer({buffer, size}, {node, connections, settings}, [&] {
        return lines_of(nmos_instrument::check_records(
            *node, *connections, *settings, {receiver_filter, audio_group_filter, sender_filter}));
    });
}
