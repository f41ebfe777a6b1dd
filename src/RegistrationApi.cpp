// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/RegistrationApi.h"

#include <algorithm>
#include <cstring>

#include "bodies/is04_bodies.h"
#include "json/json_lists.h"
#include "label_tables.h"
#include "listings/root_listing.h"
#include "text/number_text.h"

using namespace nmos_instrument;

RegistrationApi::RegistrationApi() = default;
RegistrationApi::~RegistrationApi() = default;

std::string RegistrationApi::make_version()
{
    return root_listing({"v1.2"});
}

std::string RegistrationApi::make_base(NMOS_IS04_ST*)
{
    return root_listing({"resource", "health"});
}

std::string RegistrationApi::make_health(NMOS_IS04_ST*)
{
    return {};
}

std::string RegistrationApi::make_resource_node(NMOS_IS04_ST* rec)
{
    update_version(rec);
    return make_text(Slashes::plain, [&](JsonText& text) {
        write_registration(text, "node", [&](JsonText& data) { write_node(data, *rec); });
    });
}

std::string RegistrationApi::make_resource_devices(NMOS_IS04_ST* rec, int receiver_filter,
                                                   int audio_group_filter, int sender_filter)
{
    const DeviceSelection selection{{receiver_filter, audio_group_filter}, sender_filter};
    return make_list(Slashes::plain, valid_count(rec->devices, rec->devices_count),
                     [&](JsonText& text, std::size_t i) {
                         write_device(text, rec->devices[i], selection, DeviceTags::absent);
                     });
}

std::string RegistrationApi::make_resource_deviceid(NMOS_IS04_ST* rec, int index,
                                                    int receiver_filter, int audio_group_filter,
                                                    int sender_filter)
{
    const DEVICE_IS04_ST& device = checked_entry(rec, &NMOS_IS04_ST::devices, index,
                                                 "RegistrationApi::make_resource_deviceid");
    const DeviceSelection selection{{receiver_filter, audio_group_filter}, sender_filter};
    return make_text(Slashes::plain, [&](JsonText& text) {
        write_registration(text, "device", [&](JsonText& data) {
            write_device(data, device, selection, DeviceTags::present);
        });
    });
}

namespace {

void write_source_registration(JsonText& text, const SOURCE_IS04_ST& source, std::size_t position)
{
    write_registration(text, "source",
                       [&](JsonText& data) { write_source(data, source, position); });
}

void write_flow_registration(JsonText& text, const FLOW_IS04_ST& flow, std::size_t position)
{
    write_registration(text, "flow", [&](JsonText& data) { write_flow(data, flow, position); });
}

void write_sender_registration(JsonText& text, const SENDER_IS04_ST& sender)
{
    write_registration(text, "sender",
                       [&](JsonText& data) { write_sender(data, sender, SenderForm::resource); });
}

void write_receiver_registration(JsonText& text, const RECEIVER_IS04_ST& receiver)
{
    write_registration(text, "receiver", [&](JsonText& data) { write_receiver(data, receiver); });
}

} // namespace

std::string RegistrationApi::make_resource_sources(NMOS_IS04_ST* rec)
{
    return make_list(Slashes::escaped, valid_count(rec->sources, rec->sources_count),
                     [&](JsonText& text, std::size_t i) {
                         write_source_registration(text, rec->sources[i], i);
                     });
}

std::string RegistrationApi::make_resource_sourceid(NMOS_IS04_ST* rec, int index)
{
    const SOURCE_IS04_ST& source = checked_entry(rec, &NMOS_IS04_ST::sources, index,
                                                 "RegistrationApi::make_resource_sourceid");
    return make_text(Slashes::escaped, [&](JsonText& text) {
        write_source_registration(text, source, static_cast<std::size_t>(index));
    });
}

std::string RegistrationApi::make_resource_flows(NMOS_IS04_ST* rec)
{
    return make_list(
        Slashes::escaped, valid_count(rec->flows, rec->flows_count),
        [&](JsonText& text, std::size_t i) { write_flow_registration(text, rec->flows[i], i); });
}

std::string RegistrationApi::make_resource_flowid(NMOS_IS04_ST* rec, int index)
{
    const FLOW_IS04_ST& flow =
        checked_entry(rec, &NMOS_IS04_ST::flows, index, "RegistrationApi::make_resource_flowid");
    return make_text(Slashes::escaped, [&](JsonText& text) {
        write_flow_registration(text, flow, static_cast<std::size_t>(index));
    });
}

std::string RegistrationApi::make_resource_senders(NMOS_IS04_ST* rec)
{
    return make_list(
        Slashes::plain, valid_count(rec->senders, rec->senders_count),
        [&](JsonText& text, std::size_t i) { write_sender_registration(text, rec->senders[i]); });
}

std::string RegistrationApi::make_resource_senderid(NMOS_IS04_ST* rec, int index)
{
    const SENDER_IS04_ST& sender = checked_entry(rec, &NMOS_IS04_ST::senders, index,
                                                 "RegistrationApi::make_resource_senderid");
    return make_text(Slashes::plain,
                     [&](JsonText& text) { write_sender_registration(text, sender); });
}

std::string RegistrationApi::make_resource_receivers(NMOS_IS04_ST* rec)
{
    return make_list(Slashes::plain, valid_count(rec->receivers, rec->receivers_count),
                     [&](JsonText& text, std::size_t i) {
                         write_receiver_registration(text, rec->receivers[i]);
                     });
}

std::string RegistrationApi::make_resource_receiverid(NMOS_IS04_ST* rec, int index)
{
    const RECEIVER_IS04_ST& receiver = checked_entry(rec, &NMOS_IS04_ST::receivers, index,
                                                     "RegistrationApi::make_resource_receiverid");
    return make_text(Slashes::plain,
                     [&](JsonText& text) { write_receiver_registration(text, receiver); });
}

void RegistrationApi::update_version(NMOS_IS04_ST* rec)
{
    char version[2 * number_text_size] = {};
    char* end = write_integer(version, static_cast<unsigned long long>(rec->version_seconds));
    *end++ = ':';
    write_integer(end, rec->version_nanoseconds);

    // At most 32 characters, so the whole field is written and ends with zeros.
    constexpr std::size_t field_size = sizeof rec->version;
    static_assert(sizeof version >= field_size);
    std::memcpy(rec->version, version, field_size);
    const std::size_t devices = valid_count(rec->devices, rec->devices_count);
    for (std::size_t i = 0; i < devices; ++i)
        std::memcpy(rec->devices[i].version, version, field_size);
    const std::size_t receivers = valid_count(rec->receivers, rec->receivers_count);
    for (std::size_t i = 0; i < receivers; ++i)
        std::memcpy(rec->receivers[i].version, version, field_size);
}

void RegistrationApi::update_ipAddress(NMOS_IS04_ST* rec, std::string ip, std::string port)
{
    const double port_number = leading_double(port);

    // Intentional: only four bytes of the new URL and of the new address.
    constexpr std::size_t moved = 4;
    std::memcpy(rec->href, "http", moved);
    const std::size_t endpoints = valid_count(rec->endpoints, rec->endpoints_count);
    for (std::size_t i = 0; i < endpoints; ++i) {
        std::memcpy(rec->endpoints[i].host, ip.c_str(), std::min(moved, ip.size() + 1));
        rec->endpoints[i].port = port_number;
    }
}
