// SPDX-License-Identifier: Apache-2.0
//
// Prints the bodies of the default records, one a line: the API, the schema that it keeps to, the
// body, with tabs between.

#include <cstdio>
#include <string>

#include "nmos_instrument/nmos_instrument.h"
#include "support/default_records.h"

namespace {

void print(const char* api, const char* schema, const std::string& body)
{
    std::printf("%s\t%s\t%s\n", api, schema, body.c_str());
}

constexpr const char* is04 = "is-04-v1.2";
constexpr const char* is05 = "is-05-v1.0";

void print_node(DefaultRecords& r)
{
    NodeApi api;
    const nmos_instrument::Selection& s = r.selection;
    print(is04, "node.json", api.make_self(&r.node));
    print(is04, "devices.json",
          api.make_devices(&r.node, s.receiver_filter, s.audio_group_filter, s.sender_filter));
    print(is04, "sources.json", api.make_sources(&r.node));
    print(is04, "flows.json", api.make_flows(&r.node));
    print(is04, "senders.json", api.make_senders(&r.node, s.sender_filter));
    print(is04, "receivers.json",
          api.make_receivers(&r.node, s.receiver_filter, s.audio_group_filter));
    for (int i = 0; i < nmos_instrument::sender_position_count; ++i)
        print(is04, "sender.json", api.make_senderid(&r.node, i));
    for (int i = 0; i < nmos_instrument::receiver_position_count; ++i)
        print(is04, "receiver.json", api.make_receiverid(&r.node, i));
}

void print_connections(DefaultRecords& r)
{
    ConnectionApi api;
    for (int i = 0; i < nmos_instrument::sender_position_count; ++i) {
        print(is05, "v1.0-sender-response-schema.json",
              api.make_single_senderid_staged(&r.connections, i));
        print(is05, "v1.0-sender-response-schema.json",
              api.make_single_senderid_active(&r.connections, i));
    }
    for (int i = 0; i < nmos_instrument::receiver_position_count; ++i) {
        print(is05, "v1.0-receiver-response-schema.json",
              api.make_single_receiverid_staged(&r.connections, i));
        print(is05, "v1.0-receiver-response-schema.json",
              api.make_single_receiverid_active(&r.connections, i));
    }
}

} // namespace

int main()
{
    const auto records = default_records();
    print_node(*records);
    print_connections(*records);
    return 0;
}
