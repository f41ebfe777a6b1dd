// SPDX-License-Identifier: Apache-2.0

#include "answer.h"
#include "nmos_instrument/Nmos.h"

using namespace nmos_instrument::c;

namespace {

Nmos nmos_of(const nmos_advertisement& from)
{
    Nmos nmos;
    nmos.port = from.port;
    nmos.protocol = from.protocol;
    nmos.ver_slf = from.ver_slf;
    nmos.ver_src = from.ver_src;
    nmos.ver_flw = from.ver_flw;
    nmos.ver_dvc = from.ver_dvc;
    nmos.ver_snd = from.ver_snd;
    nmos.ver_rcv = from.ver_rcv;
    return nmos;
}

nmos_advertisement advertisement_of(const Nmos& nmos)
{
    return {nmos.port,    nmos.protocol, nmos.ver_slf, nmos.ver_src,
            nmos.ver_flw, nmos.ver_dvc,  nmos.ver_snd, nmos.ver_rcv};
}

template <class Update>
size_t updated(nmos_advertisement* advertisement, const Update& update) noexcept
{
    return perform({advertisement}, [&] {
        Nmos nmos = nmos_of(*advertisement);
        update(nmos);
        *advertisement = advertisement_of(nmos);
    });
}

} // namespace

size_t nmos_advertisement_init(nmos_advertisement* advertisement)
{
    return perform({advertisement}, [&] { *advertisement = advertisement_of(Nmos()); });
}

size_t nmos_advertisement_update_txt_port_number(nmos_advertisement* advertisement, int port)
{
    return updated(advertisement, [&](Nmos& nmos) { nmos.update_txt_port_number(port); });
}

size_t nmos_advertisement_update_txt_protocol(nmos_advertisement* advertisement, int protocol)
{
    return updated(advertisement, [&](Nmos& nmos) { nmos.update_txt_protocol(protocol); });
}

size_t nmos_advertisement_update_txt_ver_slf(nmos_advertisement* advertisement)
{
    return updated(advertisement, [](Nmos& nmos) { nmos.update_txt_ver_slf(); });
}

size_t nmos_advertisement_update_txt_ver_src(nmos_advertisement* advertisement)
{
    return updated(advertisement, [](Nmos& nmos) { nmos.update_txt_ver_src(); });
}

size_t nmos_advertisement_update_txt_ver_flw(nmos_advertisement* advertisement)
{
    return updated(advertisement, [](Nmos& nmos) { nmos.update_txt_ver_flw(); });
}

size_t nmos_advertisement_update_txt_ver_dvc(nmos_advertisement* advertisement)
{
    return updated(advertisement, [](Nmos& nmos) { nmos.update_txt_ver_dvc(); });
}

size_t nmos_advertisement_update_txt_ver_snd(nmos_advertisement* advertisement)
{
    return updated(advertisement, [](Nmos& nmos) { nmos.update_txt_ver_snd(); });
}

size_t nmos_advertisement_update_txt_ver_rcv(nmos_advertisement* advertisement)
{
    return updated(advertisement, [](Nmos& nmos) { nmos.update_txt_ver_rcv(); });
}

size_t nmos_advertisement_node_service(const nmos_advertisement* advertisement, int enable)
{
    return perform({advertisement},
                   [&] { nmos_of(*advertisement).make_node_service(0, 0, enable); });
}

size_t nmos_advertisement_node_service_text(const nmos_advertisement* advertisement, int enable,
                                            char* buffer, size_t size)
{
    return answer({buffer, size}, {advertisement},
                  [&] { return nmos_of(*advertisement).make_node_service_text(enable); });
}
