// SPDX-License-Identifier: Apache-2.0

#include "answer.h"
#include "nmos_instrument/NodeApi.h"

using namespace nmos_instrument::c;

size_t nmos_node_version(char* buffer, size_t size)
{
    return answer({buffer, size}, {}, [&] { return NodeApi().make_version(); });
}

size_t nmos_node_base(char* buffer, size_t size)
{
    return answer({buffer, size}, {}, [&] { return NodeApi().make_base(nullptr); });
}

size_t nmos_node_self(const NMOS_IS04_ST* node, char* buffer, size_t size)
{
    return answer({buffer, size}, {node}, [&] { return NodeApi().make_self(only_read(node)); });
}

size_t nmos_node_sources(const NMOS_IS04_ST* node, char* buffer, size_t size)
{
    return answer({buffer, size}, {node}, [&] { return NodeApi().make_sources(only_read(node)); });
}

size_t nmos_node_sourceid(const NMOS_IS04_ST* node, int index, char* buffer, size_t size)
{
    return answer({buffer, size}, {node},
                  [&] { return NodeApi().make_sourceid(only_read(node), index); });
}

size_t nmos_node_flows(const NMOS_IS04_ST* node, char* buffer, size_t size)
{
    return answer({buffer, size}, {node}, [&] { return NodeApi().make_flows(only_read(node)); });
}

size_t nmos_node_flowid(const NMOS_IS04_ST* node, int index, char* buffer, size_t size)
{
    return answer({buffer, size}, {node},
                  [&] { return NodeApi().make_flowid(only_read(node), index); });
}

size_t nmos_node_devices(const NMOS_IS04_ST* node, int receiver_filter, int audio_group_filter,
                         int sender_filter, char* buffer, size_t size)
{
    return answer({buffer, size}, {node}, [&] {
        return NodeApi().make_devices(only_read(node), receiver_filter, audio_group_filter,
                                      sender_filter);
    });
}

size_t nmos_node_deviceid(const NMOS_IS04_ST* node, int index, int receiver_filter,
                          int audio_group_filter, int sender_filter, char* buffer, size_t size)
{
    return answer({buffer, size}, {node}, [&] {
        return NodeApi().make_deviceid(only_read(node), index, receiver_filter, audio_group_filter,
                                       sender_filter);
    });
}

size_t nmos_node_senders(const NMOS_IS04_ST* node, int all_senders, char* buffer, size_t size)
{
    return answer({buffer, size}, {node},
                  [&] { return NodeApi().make_senders(only_read(node), all_senders); });
}

size_t nmos_node_senderid(const NMOS_IS04_ST* node, int index, char* buffer, size_t size)
{
    return answer({buffer, size}, {node},
                  [&] { return NodeApi().make_senderid(only_read(node), index); });
}

size_t nmos_node_receivers(const NMOS_IS04_ST* node, int receiver_filter, int audio_group_filter,
                           char* buffer, size_t size)
{
    return answer({buffer, size}, {node}, [&] {
        return NodeApi().make_receivers(only_read(node), receiver_filter, audio_group_filter);
    });
}

size_t nmos_node_receiverid(const NMOS_IS04_ST* node, int index, char* buffer, size_t size)
{
    return answer({buffer, size}, {node},
                  [&] { return NodeApi().make_receiverid(only_read(node), index); });
}

size_t nmos_node_receiverid_target(const SENDER_IS04_ST* sender, char* buffer, size_t size)
{
    return answer({buffer, size}, {sender},
                  [&] { return NodeApi().make_receiverid_target(only_read(sender)); });
}
