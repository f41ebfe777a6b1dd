// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_SRC_SDP_SDP_WRITER_H
#define NMOS_INSTRUMENT_SRC_SDP_SDP_WRITER_H

#include <string>

#include "nmos_instrument/connection_state.h"
#include "nmos_instrument/system_parameters.h"

namespace nmos_instrument {

/// What a sender sends, which is decided by its position.
enum class Essence
{
    video,
    audio,
    ancillary
};

/// The SDP file of a sender from its active half. Always two legs.
std::string write_sdp(const NMOS_IS05_ST& state, const CONNECTION_HALF_IS05_ST& active,
                      Essence essence, const st_param_sys& sys);

} // namespace nmos_instrument

#endif
