// SPDX-License-Identifier: Apache-2.0

#include "answer.h"
#include "nmos_instrument/RegistrationApi.h"

using namespace nmos_instrument::c;

size_t nmos_registration_version(char* buffer, size_t size)
{
    return answer({buffer, size}, {}, [&] { return RegistrationApi().make_version(); });
}

size_t nmos_registration_base(char* buffer, size_t size)
{
    return answer({buffer, size}, {}, [&] { return RegistrationApi().make_base(nullptr); });
}

size_t nmos_registration_health(char* buffer, size_t size)
{
    return answer({buffer, size}, {}, [&] { return RegistrationApi().make_health(nullptr); });
}

size_t nmos_registration_resource_node(NMOS_IS04_ST* node, char* buffer, size_t size)
{
    return answer({buffer, size}, {node},
                  [&] { return RegistrationApi().make_resource_node(node); });
}

size_t nmos_registration_resource_devices(const NMOS_IS04_ST* node, int receiver_filter,
                                          int audio_group_filter, int sender_filter, char* buffer,
                                          size_t size)
{
    return answer({buffer, size}, {node}, [&] {
        return RegistrationApi().make_resource_devices(only_read(node), receiver_filter,
                                                       audio_group_filter, sender_filter);
    });
}

size_t nmos_registration_resource_deviceid(const NMOS_IS04_ST* node, int index, int receiver_filter,
                                           int audio_group_filter, int sender_filter, char* buffer,
                                           size_t size)
{
    return answer({buffer, size}, {node}, [&] {
        return RegistrationApi().make_resource_deviceid(only_read(node), index, receiver_filter,
                                                        audio_group_filter, sender_filter);
    });
}

size_t nmos_registration_resource_sources(const NMOS_IS04_ST* node, char* buffer, size_t size)
{
    return answer({buffer, size}, {node},
                  [&] { return RegistrationApi().make_resource_sources(only_read(node)); });
}

size_t nmos_registration_resource_sourceid(const NMOS_IS04_ST* node, int index, char* buffer,
                                           size_t size)
{
    return answer({buffer, size}, {node},
                  [&] { return RegistrationApi().make_resource_sourceid(only_read(node), index); });
}

size_t nmos_registration_resource_flows(const NMOS_IS04_ST* node, char* buffer, size_t size)
{
    return answer({buffer, size}, {node},
                  [&] { return RegistrationApi().make_resource_flows(only_read(node)); });
}

size_t nmos_registration_resource_flowid(const NMOS_IS04_ST* node, int index, char* buffer,
                                         size_t size)
{
    return answer({buffer, size}, {node},
                  [&] { return RegistrationApi().make_resource_flowid(only_read(node), index); });
}

size_t nmos_registration_resource_senders(const NMOS_IS04_ST* node, char* buffer, size_t size)
{
    return answer({buffer, size}, {node},
                  [&] { return RegistrationApi().make_resource_senders(only_read(node)); });
}

size_t nmos_registration_resource_senderid(const NMOS_IS04_ST* node, int index, char* buffer,
                                           size_t size)
{
    return answer({buffer, size}, {node},
                  [&] { return RegistrationApi().make_resource_senderid(only_read(node), index); });
}

size_t nmos_registration_resource_receivers(const NMOS_IS04_ST* node, char* buffer, size_t size)
{
    return answer({buffer, size}, {node},
                  [&] { return RegistrationApi().make_resource_receivers(only_read(node)); });
}

size_t nmos_registration_resource_receiverid(const NMOS_IS04_ST* node, int index, char* buffer,
                                             size_t size)
{
    return answer({buffer, size}, {node}, [&] {
        return RegistrationApi().make_resource_receiverid(only_read(node), index);
    });
}

size_t nmos_registration_update_version(NMOS_IS04_ST* node)
{
    return perform({node}, [&] { RegistrationApi().update_version(node); });
}

size_t nmos_registration_update_ip_address(NMOS_IS04_ST* node, const char* ip, const char* port)
{
    return perform({node, ip, port}, [&] { RegistrationApi().update_ipAddress(node, ip, port); });
}
