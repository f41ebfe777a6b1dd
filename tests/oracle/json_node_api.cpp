// SPDX-License-Identifier: Apache-2.0

#include "oracle/json_oracle.h"

namespace oracle {

std::string make_self(const NMOS_IS04_ST& record)
{
    return with_plain_slashes(node(record));
}

std::string make_sources(const NMOS_IS04_ST& record)
{
    picojson::array sources;
    for (int i = 0; i < bounded(record.sources_count, 4); ++i)
        sources.push_back(source(record, i));
    return with_plain_slashes(picojson::value(sources));
}

std::string make_sourceid(const NMOS_IS04_ST& record, int index)
{
    if (record.sources_count == 0)
        return with_escaped_slashes(empty_object());
    return with_escaped_slashes(source(record, index));
}

std::string make_flows(const NMOS_IS04_ST& record)
{
    picojson::array flows;
    for (int i = 0; i < bounded(record.flows_count, 4); ++i)
        flows.push_back(flow(record, i));
    return with_plain_slashes(picojson::value(flows));
}

std::string make_flowid(const NMOS_IS04_ST& record, int index)
{
    if (record.flows_count == 0)
        return with_plain_slashes(empty_object());
    return with_plain_slashes(flow(record, index));
}

std::string make_devices(const NMOS_IS04_ST& record, int receiver_filter, int audio_group_filter,
                         int sender_filter)
{
    picojson::array devices;
    for (int i = 0; i < bounded(record.devices_count, 4); ++i)
        devices.push_back(device(record.devices[i], receiver_filter, audio_group_filter,
                                 sender_filter, Tags::present));
    return with_plain_slashes(picojson::value(devices));
}

std::string make_deviceid(const NMOS_IS04_ST& record, int index, int receiver_filter,
                          int audio_group_filter, int sender_filter)
{
    check_index(index, 4);
    return with_plain_slashes(device(record.devices[index], receiver_filter, audio_group_filter,
                                     sender_filter, Tags::present));
}

std::string make_senders(const NMOS_IS04_ST& record, int all_senders)
{
    picojson::array senders;
    for (int i = 0; i < bounded(record.senders_count, 6); ++i)
        if (is_insert_node_senders(all_senders, i + 13))
            senders.push_back(sender(record.senders[i]));
    return with_plain_slashes(picojson::value(senders));
}

std::string make_senderid(const NMOS_IS04_ST& record, int index)
{
    if (record.senders_count == 0)
        return with_plain_slashes(empty_object());
    check_index(index, 6);
    return with_plain_slashes(sender(record.senders[index]));
}

std::string make_receivers(const NMOS_IS04_ST& record, int receiver_filter, int audio_group_filter)
{
    picojson::array receivers;
    for (int i = 0; i < bounded(record.receivers_count, 24); ++i)
        if (is_insert_node_receivers(receiver_filter, audio_group_filter, i + 17))
            receivers.push_back(receiver(record.receivers[i]));
    return with_plain_slashes(picojson::value(receivers));
}

std::string make_receiverid(const NMOS_IS04_ST& record, int index)
{
    check_index(index, 24);
    return with_plain_slashes(receiver(record.receivers[index]));
}

std::string make_receiverid_target(const SENDER_IS04_ST& sender)
{
    return with_plain_slashes(receiver_target(sender));
}

} // namespace oracle
