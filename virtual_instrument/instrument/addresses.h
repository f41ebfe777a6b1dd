// SPDX-License-Identifier: Apache-2.0
//
// The URLs of the instrument. All are spelled with the address of the configuration, so that the
// texts that name one another agree byte for byte.

#ifndef VIRTUAL_INSTRUMENT_INSTRUMENT_ADDRESSES_H
#define VIRTUAL_INSTRUMENT_INSTRUMENT_ADDRESSES_H

#include <string>

#include "instrument/configuration.h"

namespace virtual_instrument {

/// "http://192.0.2.10:3000/"
std::string base_url(const ServerSettings& server);

/// Where the IS-05 Connection API begins.
std::string connection_api_url(const ServerSettings& server);

/// Where a sender's SDP file is.
std::string transport_file_url(const ServerSettings& server, const std::string& sender_id);

} // namespace virtual_instrument

#endif
