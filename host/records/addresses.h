// SPDX-License-Identifier: Apache-2.0
//
// The URLs of the instrument. All contain the address of the configuration, so that texts that
// refer to each other agree byte for byte.

#ifndef NMOS_INSTRUMENT_HOST_RECORDS_ADDRESSES_H
#define NMOS_INSTRUMENT_HOST_RECORDS_ADDRESSES_H

#include <string>

#include "configuration/configuration.h"

namespace nmos_instrument::host {

/// "http://192.0.2.10:3000/"
std::string base_url(const ServerSettings& server);

/// Where the IS-05 Connection API begins.
std::string connection_api_url(const ServerSettings& server);

/// Where a sender's SDP file is.
std::string transport_file_url(const ServerSettings& server, const std::string& sender_id);

} // namespace nmos_instrument::host

#endif
