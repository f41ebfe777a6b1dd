// SPDX-License-Identifier: Apache-2.0

#include "oracle/json_oracle.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace oracle {

namespace {

picojson::value envelope(picojson::value data, const char* type)
{
    picojson::object object;
    add(object, "data", std::move(data));
    add(object, "type", picojson::value(type));
    return picojson::value(object);
}

} // namespace

void update_version(NMOS_IS04_ST& record)
{
    char version[48] = {};
    std::snprintf(version, sizeof version, "%llu:%d",
                  static_cast<unsigned long long>(record.version_seconds),
                  static_cast<int>(record.version_nanoseconds));
    std::memcpy(record.version, version, sizeof version);
    for (int i = 0; i < bounded(record.devices_count, 4); ++i)
        std::memcpy(record.devices[i].version, version, sizeof version);
    for (int i = 0; i < bounded(record.receivers_count, 24); ++i)
        std::memcpy(record.receivers[i].version, version, sizeof version);
}

void update_ip_address(NMOS_IS04_ST& record, const std::string& ip, const std::string& port)
{
    std::memcpy(record.href, "http", 4);
    for (int i = 0; i < bounded(record.endpoints_count, 26); ++i) {
        // A text of up to three bytes brings its NUL along; what stands behind that stays.
        std::memcpy(record.endpoints[i].host, ip.c_str(), std::min<std::size_t>(4, ip.size() + 1));
        record.endpoints[i].port = std::strtod(port.c_str(), nullptr);
    }
}

std::string make_resource_node(NMOS_IS04_ST& record)
{
    update_version(record);
    return with_plain_slashes(envelope(node(record), "node"));
}

std::string make_resource_devices(const NMOS_IS04_ST& record, int receiver_filter,
                                  int audio_group_filter, int sender_filter)
{
    picojson::array devices;
    for (int i = 0; i < bounded(record.devices_count, 4); ++i)
        devices.push_back(device(record.devices[i], receiver_filter, audio_group_filter,
                                 sender_filter, Tags::absent));
    return with_plain_slashes(picojson::value(devices));
}

std::string make_resource_deviceid(const NMOS_IS04_ST& record, int index, int receiver_filter,
                                   int audio_group_filter, int sender_filter)
{
    check_index(index, 4);
    return with_plain_slashes(envelope(device(record.devices[index], receiver_filter,
                                              audio_group_filter, sender_filter, Tags::present),
                                       "device"));
}

std::string make_resource_sources(const NMOS_IS04_ST& record)
{
    picojson::array sources;
    for (int i = 0; i < bounded(record.sources_count, 4); ++i)
        sources.push_back(envelope(source(record, i), "source"));
    return with_escaped_slashes(picojson::value(sources));
}

std::string make_resource_sourceid(const NMOS_IS04_ST& record, int index)
{
    return with_escaped_slashes(envelope(source(record, index), "source"));
}

std::string make_resource_flows(const NMOS_IS04_ST& record)
{
    picojson::array flows;
    for (int i = 0; i < bounded(record.flows_count, 4); ++i)
        flows.push_back(envelope(flow(record, i), "flow"));
    return with_escaped_slashes(picojson::value(flows));
}

std::string make_resource_flowid(const NMOS_IS04_ST& record, int index)
{
    return with_escaped_slashes(envelope(flow(record, index), "flow"));
}

std::string make_resource_senders(const NMOS_IS04_ST& record)
{
    picojson::array senders;
    for (int i = 0; i < bounded(record.senders_count, 6); ++i)
        senders.push_back(envelope(sender(record.senders[i]), "sender"));
    return with_plain_slashes(picojson::value(senders));
}

std::string make_resource_senderid(const NMOS_IS04_ST& record, int index)
{
    check_index(index, 6);
    return with_plain_slashes(envelope(sender(record.senders[index]), "sender"));
}

std::string make_resource_receivers(const NMOS_IS04_ST& record)
{
    picojson::array receivers;
    for (int i = 0; i < bounded(record.receivers_count, 24); ++i)
        receivers.push_back(envelope(receiver(record.receivers[i]), "receiver"));
    return with_plain_slashes(picojson::value(receivers));
}

std::string make_resource_receiverid(const NMOS_IS04_ST& record, int index)
{
    check_index(index, 24);
    return with_plain_slashes(envelope(receiver(record.receivers[index]), "receiver"));
}

} // namespace oracle
