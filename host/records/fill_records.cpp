// SPDX-License-Identifier: Apache-2.0

#include "records/fill_records.h"

#include <stdexcept>
#include <string>
#include <vector>

#include "records/fill_connections.h"
#include "records/fill_node.h"
#include "records/fill_settings.h"
#include "records/identity.h"
#include "records/record_text.h"

namespace nmos_instrument::host {
namespace {

/// The configuration was checked already, so a finding here is a mistake of this program.
template <class Record>
void expect_no_findings(const Record& record)
{
    const std::vector<std::string> findings = nmos_instrument::check_record(record);
    if (!findings.empty())
        throw std::logic_error("wrongly filled: " + findings.front());
}

} // namespace

std::unique_ptr<Records> make_records(const Configuration& configuration,
                                      const NodeAddress& address, const TaiTime& now)
{
    auto records = std::make_unique<Records>(); // value-initialised: all zeros
    const Identity identity(configuration.serial_number);
    fill_node(configuration, address, identity, now, records->node);
    fill_connections(configuration, records->connections);
    fill_settings(configuration, records->settings);
    records->selection = selection_of(configuration.streams);
    for (std::size_t i = 0; i < sender_count; ++i)
        records->sdp_sessions[i] = {sdp_session_id(identity.senders[i]), now.seconds};
    set_sdp_session(*records, 0);
    expect_no_findings(records->node);
    expect_no_findings(records->connections);
    expect_no_findings(records->settings);
    return records;
}

void set_sdp_session(Records& records, std::size_t sender)
{
    const SdpSession& session = records.sdp_sessions.at(sender);
    set_text(records.connections.sdp_session_id, std::to_string(session.id));
    set_text(records.connections.sdp_session_version, std::to_string(session.version));
}

short current_format(const Configuration& configuration)
{
    return configuration.video.lines == PictureSize::lines_2160 ? current_format_4k
                                                                : current_format_any;
}

} // namespace nmos_instrument::host
