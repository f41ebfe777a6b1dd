// SPDX-License-Identifier: Apache-2.0

#include "records/addresses.h"

namespace nmos_instrument::host {

std::string base_url(const ServerSettings& server)
{
    return "http://" + server.address + ':' + std::to_string(server.port) + '/';
}

std::string connection_api_url(const ServerSettings& server)
{
    return base_url(server) + "x-nmos/connection/v1.0/";
}

std::string transport_file_url(const ServerSettings& server, const std::string& sender_id)
{
    return connection_api_url(server) + "single/senders/" + sender_id + "/transportfile";
}

} // namespace nmos_instrument::host
