// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/ConnectionApi.h"

#include <cstddef>

#include "bodies/is05_bodies.h"
#include "json/json_lists.h"
#include "label_tables.h"
#include "listings/connection_listings.h"
#include "listings/root_listing.h"
#include "records/membership.h"
#include "records/positions.h"
#include "sdp/sdp_lines.h"
#include "sdp/sdp_parser.h"
#include "sdp/sdp_writer.h"

using namespace nmos_instrument;

namespace {

/// The host's build decides how many receivers its record holds, whatever array bound is declared
/// here. So the address is computed in bytes from the record's start.
const CONNECTION_IS05_ST& receiver_connection(const NMOS_IS05_ST* state, int index,
                                              const char* operation)
{
    if (index < 0)
        throw_negative_index(operation, index);
    const auto* const record = reinterpret_cast<const unsigned char*>(state);
    return *reinterpret_cast<const CONNECTION_IS05_ST*>(record + offsetof(NMOS_IS05_ST, receivers) +
                                                        static_cast<std::size_t>(index) *
                                                            sizeof(CONNECTION_IS05_ST));
}

Essence essence_of_sender(int index)
{
    switch (index) {
    case audio_sender:
        return Essence::audio;
    case ancillary_sender:
        return Essence::ancillary;
    default:
        return Essence::video;
    }
}

} // namespace

ConnectionApi::ConnectionApi() = default;
ConnectionApi::~ConnectionApi() = default;

void ConnectionApi::init() {}

std::string ConnectionApi::make_version()
{
    return root_listing({"v1.0"});
}

std::string ConnectionApi::make_base(NMOS_IS05_ST*)
{
    return root_listing({"bulk", "single"});
}

std::string ConnectionApi::make_bulk(NMOS_IS05_ST*)
{
    return root_listing({"senders", "receivers"});
}

std::string ConnectionApi::make_bulk_senders(NMOS_IS05_ST*)
{
    return root_listing({});
}

std::string ConnectionApi::make_bulk_receivers(NMOS_IS05_ST*)
{
    return root_listing({});
}

std::string ConnectionApi::make_single(NMOS_IS05_ST*)
{
    return root_listing({"senders", "receivers"});
}

std::string ConnectionApi::make_single_senderid(NMOS_IS05_ST*)
{
    return root_listing({"constraints", "staged", "active", "transportfile"});
}

std::string ConnectionApi::make_single_receiverid(NMOS_IS05_ST*)
{
    return root_listing({"constraints", "staged", "active"});
}

std::string ConnectionApi::make_single_senders(NMOS_IS04_ST* node, bool all)
{
    return id_listing(node->senders, node->senders_count,
                      [&](std::size_t i) { return shows_sender(all ? 1 : 0, i); });
}

std::string ConnectionApi::make_single_receivers(NMOS_IS04_ST* node, int restricted, int audio_mode)
{
    const ReceiverSelection selection{restricted, audio_mode};
    return id_listing(node->receivers, node->receivers_count,
                      [&](std::size_t i) { return shows_receiver(selection, i); });
}

std::string ConnectionApi::make_single_senderid_constraints(NMOS_IS05_ST*, int,
                                                            std::string* leg1_source,
                                                            std::string* leg2_source)
{
    return sender_constraints(*leg1_source, *leg2_source);
}

std::string ConnectionApi::make_single_receiverid_constraints(NMOS_IS05_ST*, int,
                                                              std::string* leg1_interface,
                                                              std::string* leg2_interface)
{
    return receiver_constraints(*leg1_interface, *leg2_interface);
}

std::string ConnectionApi::make_single_receiverid_staged(NMOS_IS05_ST* state, int index)
{
    const CONNECTION_IS05_ST& receiver =
        receiver_connection(state, index, "ConnectionApi::make_single_receiverid_staged");
    return make_text(Slashes::escaped,
                     [&](JsonText& text) { write_receiver_connection(text, receiver.staged); });
}

std::string ConnectionApi::make_single_receiverid_active(NMOS_IS05_ST* state, int index)
{
    const CONNECTION_IS05_ST& receiver =
        receiver_connection(state, index, "ConnectionApi::make_single_receiverid_active");
    return make_text(Slashes::escaped,
                     [&](JsonText& text) { write_receiver_connection(text, receiver.active); });
}

std::string ConnectionApi::make_single_senderid_staged(NMOS_IS05_ST* state, int index)
{
    const CONNECTION_IS05_ST& sender = checked_entry(state, &NMOS_IS05_ST::senders, index,
                                                     "ConnectionApi::make_single_senderid_staged");
    return make_text(Slashes::escaped, [&](JsonText& text) {
        write_sender_connection(text, sender.staged, sender.staged, UnsetAddress::automatic);
    });
}

std::string ConnectionApi::make_single_senderid_active(NMOS_IS05_ST* state, int index)
{
    const CONNECTION_IS05_ST& sender = checked_entry(state, &NMOS_IS05_ST::senders, index,
                                                     "ConnectionApi::make_single_senderid_active");
    return make_text(Slashes::escaped, [&](JsonText& text) {
        write_sender_connection(text, sender.active, sender.staged, UnsetAddress::null);
    });
}

std::string ConnectionApi::make_single_senderid_sdp(NMOS_IS05_ST* state, int index,
                                                    const st_param_sys* sys)
{
    const CONNECTION_IS05_ST& sender = checked_entry(state, &NMOS_IS05_ST::senders, index,
                                                     "ConnectionApi::make_single_senderid_sdp");
    return write_sdp(*state, sender.active, essence_of_sender(index), *sys);
}

int ConnectionApi::analyze_sdp_file(std::string sdp, bool switch_capable, short current_format,
                                    bool switch_allowed, std::string* errors, sdp_str* out)
{
    const FormatSwitch format_switch{switch_capable, switch_allowed, current_format};
    errors->clear();
    parse_sdp(sdp, format_switch, *errors, *out);
    constexpr int http_ok = 200;
    constexpr int http_bad_request = 400;
    return errors->empty() ? http_ok : http_bad_request;
}

std::string ConnectionApi::convertCRLF(std::string text, std::string newline)
{
    return unify_line_breaks(text, newline);
}

int ConnectionApi::split_string(std::string text, std::string delimiter, std::string* parts,
                                int max_parts, int* count)
{
    *count = cut_pieces(text, delimiter, parts, max_parts);
    return 0;
}

std::string ConnectionApi::make_fullpath_from_request(std::string& request_line)
{
    return path_of_request(request_line);
}
