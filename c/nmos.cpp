// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/Nmos.h"
#include "answer.h"

using namespace nmos_instrument::c;

size_t nmos_xnmos(char* buffer, size_t size)
{
    return answer({buffer, size}, {}, [] { return Nmos().make_xnmos(); });
}

size_t nmos_api(char* buffer, size_t size)
{
    return answer({buffer, size}, {}, [] { return Nmos().make_api(); });
}

size_t nmos_param_json(const st_param_sys* settings, char* buffer, size_t size)
{
    return answer({buffer, size}, {settings}, [&] { return Nmos().make_param_json(settings, 0); });
}

int nmos_is_insert_node_senders(int all_senders, int label_index)
{
    return Nmos().is_insert_node_senders(all_senders, label_index);
}

int nmos_is_insert_node_receivers(int receiver_filter, int audio_group_filter, int label_index)
{
    return Nmos().is_insert_node_receivers(receiver_filter, audio_group_filter, label_index);
}
