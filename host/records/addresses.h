// SPDX-License-Identifier: Apache-2.0
//
// The URLs of the instrument. All are made from one address, so that texts that refer to each other
// agree byte for byte.

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_ADDRESSES_H
#define NMOS_INSTRUMENT_HOST_RECORDS_ADDRESSES_H

#include <string>

#include <nmos_instrument/nmos_instrument.h>

#include "configuration/configuration.h"

namespace nmos_instrument::host {

/// Where others reach the instrument, as all texts name it.
struct NodeAddress
{
    std::string host = "127.0.0.1"; ///< IPv4, dotted quad: the record has room for no more
    int port = 3000;

    bool operator==(const NodeAddress&) const = default;
};

/// What the settings alone say of the address, without a look at the machine: 127.0.0.1 in place of
/// an interface.
NodeAddress configured_address(const ServerSettings& server);

/// "http://192.0.2.10:3000/"
std::string base_url(const NodeAddress& address);

/// Where the IS-05 Connection API begins.
std::string connection_api_url(const NodeAddress& address);

/// Where a sender's SDP file is.
std::string transport_file_url(const NodeAddress& address, const std::string& sender_id);

/// For the log: what is wrong with a loopback address that others hear of. `from` is whom they hear it
/// from.
std::string loopback_warning(const NodeAddress& address, const std::string& from);

/// Writes the address wherever the node, its device and its senders name it. They have their ids
/// already.
void set_address(NMOS_IS04_ST& node, const NodeAddress& address);

} // namespace nmos_instrument::host

#endif
