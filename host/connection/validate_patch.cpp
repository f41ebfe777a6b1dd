// SPDX-License-Identifier: Apache-2.0

#include "connection/validate_patch.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "connection/read_transport_file.h"
#include "records/record_text.h"
#include "text/quoted_text.h"

namespace nmos_instrument::host {
namespace {

constexpr std::string_view sdp_type = "application/sdp";

/// Why a receiver does not take a file, one reason a line. Nobody reads hundreds of them.
std::string reasons(const SdpFindings& findings)
{
    constexpr std::size_t most = 20;
    std::string text;
    std::size_t count = 0;
    for (const SdpFinding& finding : findings.shown()) {
        if (!rule_of(finding.code).refuses)
            continue;
        if (++count <= most)
            text += '\n' + finding_text(finding);
    }
    const std::size_t more = count - std::min(count, most) + findings.left_out();
    if (more != 0)
        text += "\nand " + std::to_string(more) + " more";
    return text;
}

/// The parameters of `explicit_leg` override those of `from_file` (IS-05 v1.0, PATCH of a
/// receiver's staged).
LegPatch merged(const LegPatch& from_file, const LegPatch& explicit_leg)
{
    LegPatch leg = from_file;
    const auto prefer = [](auto& target, const auto& preferred) {
        if (preferred)
            target = preferred;
    };
    prefer(leg.source_ip, explicit_leg.source_ip);
    prefer(leg.destination_ip, explicit_leg.destination_ip);
    prefer(leg.interface_ip, explicit_leg.interface_ip);
    prefer(leg.destination_port, explicit_leg.destination_port);
    prefer(leg.source_port, explicit_leg.source_port);
    prefer(leg.rtp_enabled, explicit_leg.rtp_enabled);
    return leg;
}

class Validation
{
public:
    Validation(const ConnectionPatch& patch, const ConnectionFacts& facts,
               const CONNECTION_HALF_IS05_ST& staged, Findings& findings)
        : patch_(patch), facts_(facts), staged_(staged), findings_(findings)
    {}

    ConnectionPatch run()
    {
        ConnectionPatch result = patch_;
        if (patch_.transport_file)
            apply_transport_file(*patch_.transport_file, result);
        for (std::size_t i = 0; i < leg_count; ++i)
            check_constraints(i, result.legs[i]);
        return result;
    }

private:
    void apply_transport_file(const TransportFilePatch& file, ConnectionPatch& result)
    {
        // IS-05 v1.0: both are strings or both are null, after the merge with what is staged.
        const std::string data(
            file.data.value_or(std::string(text_of(staged_.transport_file_data))));
        const std::string type(
            file.type.value_or(std::string(text_of(staged_.transport_file_type))));
        if ((data == null_text) != (type == null_text)) {
            findings_.add("/transport_file",
                          "data and type must both be strings or both be null; data would be " +
                              std::string(data == null_text ? "null" : "a string") + " and type " +
                              (type == null_text ? "null" : in_quotes(type)));
            return;
        }
        if (type != null_text && type != sdp_type) {
            findings_.add("/transport_file/type", "found " + in_quotes(type) + ", allowed: " +
                                                      in_quotes(sdp_type) + ", or null");
            return;
        }
        // Only a file in this patch changes parameters; null changes nothing else.
        if (file.data && data != null_text)
            read_file(data, result);
    }

    void read_file(const std::string& data, ConnectionPatch& result)
    {
        // An interface that the patch names overrides the unicast address of the file.
        SdpReceiver receiver = facts_.sdp;
        for (std::size_t i = 0; i < leg_count; ++i) {
            if (patch_.legs[i].interface_ip)
                receiver.interface_addresses[i].reset();
        }
        const TransportFileReading reading = read_transport_file(data, receiver);
        if (reading.findings.refuse()) {
            findings_.add("/transport_file/data",
                          "this receiver does not take the file:" + reasons(reading.findings));
            return;
        }
        for (const SdpFinding& finding : reading.findings.shown())
            findings_.warn(finding_text(finding));
        for (std::size_t i = 0; i < leg_count; ++i)
            result.legs[i] = merged(reading.legs[i], patch_.legs[i]);
    }

    /// Checks what the "constraints" of the sender or receiver say. "auto" is allowed wherever
    /// IS-05 has it, even if the enumeration does not list it.
    void check_constraints(std::size_t index, const LegPatch& leg) const
    {
        const bool sender = facts_.side == Side::sender;
        const std::optional<std::string>& address = sender ? leg.source_ip : leg.interface_ip;
        const std::string& allowed = facts_.interface_addresses[index];
        if (!address || *address == auto_text || *address == allowed)
            return;
        findings_.add("/transport_params/" + std::to_string(index) +
                          (sender ? "/source_ip" : "/interface_ip"),
                      "found " + in_quotes(*address) + ", allowed: " + in_quotes(allowed) +
                          ", or \"auto\"");
    }

    const ConnectionPatch& patch_;
    const ConnectionFacts& facts_;
    const CONNECTION_HALF_IS05_ST& staged_;
    Findings& findings_;
};

} // namespace

ConnectionPatch validate_patch(const ConnectionPatch& patch, const ConnectionFacts& facts,
                               const CONNECTION_HALF_IS05_ST& staged, Findings& findings)
{
    return Validation(patch, facts, staged, findings).run();
}

} // namespace nmos_instrument::host
