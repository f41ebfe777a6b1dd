// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_SRC_LISTINGS_SERVICE_FILE_H
#define NMOS_INSTRUMENT_SRC_LISTINGS_SERVICE_FILE_H

#include <string>
#include <string_view>

namespace nmos_instrument {

/// What the TXT records of the advertisement say (IS-04 v1.2, peer to peer operation).
struct ServiceValues
{
    int port;
    std::string_view protocol;
    int ver_slf;
    int ver_src;
    int ver_flw;
    int ver_dvc;
    int ver_snd;
    int ver_rcv;
};

/// Avahi static service file.
std::string service_file_text(const ServiceValues& values);

} // namespace nmos_instrument

#endif
