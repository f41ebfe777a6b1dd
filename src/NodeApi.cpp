// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/NodeApi.h"

#include "bodies/is04_bodies.h"
#include "json/json_lists.h"
#include "label_tables.h"
#include "listings/root_listing.h"

using namespace nmos_instrument;

NodeApi::NodeApi() = default;
NodeApi::~NodeApi() = default;

void NodeApi::init() {}

std::string NodeApi::make_version()
{
    return root_listing({"v1.2"});
}

std::string NodeApi::make_base(NMOS_IS04_ST*)
{
    return root_listing({"self", "sources", "flows", "devices", "senders", "receivers"});
}

std::string NodeApi::make_self(NMOS_IS04_ST* rec)
{
    return make_text(Slashes::plain, [&](JsonText& text) { write_node(text, *rec); });
}

std::string NodeApi::make_sources(NMOS_IS04_ST* rec)
{
    return make_list(
        Slashes::plain, valid_count(rec->sources, rec->sources_count),
        [&](JsonText& text, std::size_t i) { write_source(text, rec->sources[i], i); });
}

std::string NodeApi::make_sourceid(NMOS_IS04_ST* rec, int index)
{
    if (rec->sources_count == 0)
        return "{}";
    const SOURCE_IS04_ST& source =
        checked_entry(rec, &NMOS_IS04_ST::sources, index, "NodeApi::make_sourceid");
    return make_text(Slashes::escaped, [&](JsonText& text) {
        write_source(text, source, static_cast<std::size_t>(index));
    });
}

std::string NodeApi::make_flows(NMOS_IS04_ST* rec)
{
    return make_list(Slashes::plain, valid_count(rec->flows, rec->flows_count),
                     [&](JsonText& text, std::size_t i) { write_flow(text, rec->flows[i], i); });
}

std::string NodeApi::make_flowid(NMOS_IS04_ST* rec, int index)
{
    if (rec->flows_count == 0)
        return "{}";
    const FLOW_IS04_ST& flow =
        checked_entry(rec, &NMOS_IS04_ST::flows, index, "NodeApi::make_flowid");
    return make_text(Slashes::plain, [&](JsonText& text) {
        write_flow(text, flow, static_cast<std::size_t>(index));
    });
}

std::string NodeApi::make_devices(NMOS_IS04_ST* rec, int receiver_filter, int audio_group_filter,
                                  int sender_filter)
{
    const DeviceSelection selection{{receiver_filter, audio_group_filter}, sender_filter};
    return make_list(Slashes::plain, valid_count(rec->devices, rec->devices_count),
                     [&](JsonText& text, std::size_t i) {
                         write_device(text, rec->devices[i], selection, DeviceTags::present);
                     });
}

std::string NodeApi::make_deviceid(NMOS_IS04_ST* rec, int index, int receiver_filter,
                                   int audio_group_filter, int sender_filter)
{
    const DEVICE_IS04_ST& device =
        checked_entry(rec, &NMOS_IS04_ST::devices, index, "NodeApi::make_deviceid");
    const DeviceSelection selection{{receiver_filter, audio_group_filter}, sender_filter};
    return make_text(Slashes::plain, [&](JsonText& text) {
        write_device(text, device, selection, DeviceTags::present);
    });
}

std::string NodeApi::make_senders(NMOS_IS04_ST* rec, int all_senders)
{
    return make_list(Slashes::plain, valid_count(rec->senders, rec->senders_count),
                     [&](JsonText& text, std::size_t i) {
                         if (shows_sender(all_senders, i))
                             write_sender(text, rec->senders[i], SenderForm::resource);
                     });
}

std::string NodeApi::make_senderid(NMOS_IS04_ST* rec, int index)
{
    if (rec->senders_count == 0)
        return "{}";
    const SENDER_IS04_ST& sender =
        checked_entry(rec, &NMOS_IS04_ST::senders, index, "NodeApi::make_senderid");
    return make_text(Slashes::plain,
                     [&](JsonText& text) { write_sender(text, sender, SenderForm::resource); });
}

std::string NodeApi::make_receivers(NMOS_IS04_ST* rec, int receiver_filter, int audio_group_filter)
{
    const ReceiverSelection selection{receiver_filter, audio_group_filter};
    return make_list(Slashes::plain, valid_count(rec->receivers, rec->receivers_count),
                     [&](JsonText& text, std::size_t i) {
                         if (shows_receiver(selection, i))
                             write_receiver(text, rec->receivers[i]);
                     });
}

std::string NodeApi::make_receiverid(NMOS_IS04_ST* rec, int index)
{
    const RECEIVER_IS04_ST& receiver =
        checked_entry(rec, &NMOS_IS04_ST::receivers, index, "NodeApi::make_receiverid");
    return make_text(Slashes::plain, [&](JsonText& text) { write_receiver(text, receiver); });
}

std::string NodeApi::make_receiverid_target(SENDER_IS04_ST* sender)
{
    return make_text(Slashes::plain, [&](JsonText& text) {
        write_sender(text, *sender, SenderForm::receiver_target);
    });
}
