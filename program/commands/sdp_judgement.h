// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_SDP_JUDGEMENT_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_SDP_JUDGEMENT_H

#include <functional>
#include <string>

#include <nlohmann/json.hpp>

namespace nmos_instrument::program {

/// What there is to say about one SDP file.
struct SdpJudgement
{
    bool taken = false;
    /// For people: lines, indented, of visible ASCII. The file may come from anywhere, and a
    /// terminal obeys some bytes.
    std::string text;
    nlohmann::ordered_json members; ///< for programs
};

using SdpJudge = std::function<SdpJudgement(const std::string& sdp)>;

} // namespace nmos_instrument::program

#endif
