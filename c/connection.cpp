// SPDX-License-Identifier: Apache-2.0

#include <string>

#include "answer.h"
#include "nmos_instrument/ConnectionApi.h"

using namespace nmos_instrument::c;

size_t nmos_connection_version(char* buffer, size_t size)
{
    return answer({buffer, size}, {}, [&] { return ConnectionApi().make_version(); });
}

size_t nmos_connection_base(char* buffer, size_t size)
{
    return answer({buffer, size}, {}, [&] { return ConnectionApi().make_base(nullptr); });
}

size_t nmos_connection_bulk(char* buffer, size_t size)
{
    return answer({buffer, size}, {}, [&] { return ConnectionApi().make_bulk(nullptr); });
}

size_t nmos_connection_bulk_senders(char* buffer, size_t size)
{
    return answer({buffer, size}, {}, [&] { return ConnectionApi().make_bulk_senders(nullptr); });
}

size_t nmos_connection_bulk_receivers(char* buffer, size_t size)
{
    return answer({buffer, size}, {}, [&] { return ConnectionApi().make_bulk_receivers(nullptr); });
}

size_t nmos_connection_single(char* buffer, size_t size)
{
    return answer({buffer, size}, {}, [&] { return ConnectionApi().make_single(nullptr); });
}

size_t nmos_connection_single_senderid(char* buffer, size_t size)
{
    return answer({buffer, size}, {},
                  [&] { return ConnectionApi().make_single_senderid(nullptr); });
}

size_t nmos_connection_single_receiverid(char* buffer, size_t size)
{
    return answer({buffer, size}, {},
                  [&] { return ConnectionApi().make_single_receiverid(nullptr); });
}

size_t nmos_connection_single_senders(const NMOS_IS04_ST* node, int all_senders, char* buffer,
                                      size_t size)
{
    return answer({buffer, size}, {node}, [&] {
        return ConnectionApi().make_single_senders(only_read(node), all_senders != 0);
    });
}

size_t nmos_connection_single_receivers(const NMOS_IS04_ST* node, int receiver_filter,
                                        int audio_group_filter, char* buffer, size_t size)
{
    return answer({buffer, size}, {node}, [&] {
        return ConnectionApi().make_single_receivers(only_read(node), receiver_filter,
                                                     audio_group_filter);
    });
}

size_t nmos_connection_single_receiverid_staged(const NMOS_IS05_ST* connections, int index,
                                                char* buffer, size_t size)
{
    return answer({buffer, size}, {connections}, [&] {
        return ConnectionApi().make_single_receiverid_staged(only_read(connections), index);
    });
}

size_t nmos_connection_single_receiverid_active(const NMOS_IS05_ST* connections, int index,
                                                char* buffer, size_t size)
{
    return answer({buffer, size}, {connections}, [&] {
        return ConnectionApi().make_single_receiverid_active(only_read(connections), index);
    });
}

size_t nmos_connection_single_senderid_staged(const NMOS_IS05_ST* connections, int index,
                                              char* buffer, size_t size)
{
    return answer({buffer, size}, {connections}, [&] {
        return ConnectionApi().make_single_senderid_staged(only_read(connections), index);
    });
}

size_t nmos_connection_single_senderid_active(const NMOS_IS05_ST* connections, int index,
                                              char* buffer, size_t size)
{
    return answer({buffer, size}, {connections}, [&] {
        return ConnectionApi().make_single_senderid_active(only_read(connections), index);
    });
}

size_t nmos_connection_single_senderid_sdp(const NMOS_IS05_ST* connections, int index,
                                           const st_param_sys* settings, char* buffer, size_t size)
{
    return answer({buffer, size}, {connections, settings}, [&] {
        return ConnectionApi().make_single_senderid_sdp(only_read(connections), index, settings);
    });
}

size_t nmos_connection_single_senderid_constraints(const char* leg1_source, const char* leg2_source,
                                                   char* buffer, size_t size)
{
    return answer({buffer, size}, {leg1_source, leg2_source}, [&] {
        std::string first = leg1_source;
        std::string second = leg2_source;
        return ConnectionApi().make_single_senderid_constraints(nullptr, 0, &first, &second);
    });
}

size_t nmos_connection_single_receiverid_constraints(const char* leg1_interface,
                                                     const char* leg2_interface, char* buffer,
                                                     size_t size)
{
    return answer({buffer, size}, {leg1_interface, leg2_interface}, [&] {
        std::string first = leg1_interface;
        std::string second = leg2_interface;
        return ConnectionApi().make_single_receiverid_constraints(nullptr, 0, &first, &second);
    });
}
