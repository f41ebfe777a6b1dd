// SPDX-License-Identifier: Apache-2.0
//
// The ids of the instrument. They are made from the serial number, so they survive every restart.

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_IDENTITY_H
#define NMOS_INSTRUMENT_HOST_RECORDS_IDENTITY_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "configuration/resource_counts.h"

namespace nmos_instrument::host {

/// RFC 4122 4.3, version 5 (SHA-1), lower case. `name_space` is a UUID text.
std::string name_based_uuid(const std::string& name_space, const std::string& name);

/// The ids of all resources, including those that the configuration hides.
struct Identity
{
    explicit Identity(std::string_view serial_number);

    std::string node;
    std::string device;
    std::array<std::string, source_count> sources;
    std::array<std::string, flow_count> flows;
    std::array<std::string, sender_count> senders;
    std::array<std::string, receiver_count> receivers;
};

/// The session id for the `o=` line of a sender's SDP file: a number that no other sender has (RFC
/// 4566 5.2), below 2^63 so that every reader can store it.
std::uint64_t sdp_session_id(const std::string& sender_id);

} // namespace nmos_instrument::host

#endif
