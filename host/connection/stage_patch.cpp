// SPDX-License-Identifier: Apache-2.0

#include "connection/stage_patch.h"

#include "records/record_text.h"

namespace nmos_instrument::host {
namespace {

template <std::size_t N>
void set_if_named(char (&field)[N], const std::optional<std::string>& text)
{
    if (text)
        set_text(field, *text);
}

} // namespace

CONNECTION_HALF_IS05_ST stage_patch(const CONNECTION_HALF_IS05_ST& staged,
                                    const ConnectionPatch& patch)
{
    CONNECTION_HALF_IS05_ST half = staged;
    set_if_named(half.peer_id, patch.peer_id);
    if (patch.master_enable)
        half.master_enable = *patch.master_enable;
    if (patch.transport_file) {
        set_if_named(half.transport_file_data, patch.transport_file->data);
        set_if_named(half.transport_file_type, patch.transport_file->type);
    }
    for (std::size_t i = 0; i < leg_count; ++i) {
        const LegPatch& from = patch.legs[i];
        CONNECTION_LEG_IS05_ST& leg = half.transport_params[i];
        set_if_named(leg.source_ip, from.source_ip);
        set_if_named(leg.destination_ip, from.destination_ip);
        set_if_named(leg.interface_ip, from.interface_ip);
        if (from.destination_port)
            leg.destination_port = *from.destination_port;
        if (from.rtp_enabled)
            leg.rtp_enabled = *from.rtp_enabled;
    }
    return half;
}

void set_activation(CONNECTION_HALF_IS05_ST& half, const ActivationTexts& texts)
{
    set_text(half.mode, texts.mode);
    set_text(half.requested_time, texts.requested_time);
    set_text(half.activation_time, texts.activation_time);
}

} // namespace nmos_instrument::host
