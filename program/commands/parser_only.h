// SPDX-License-Identifier: Apache-2.0
//
// `check-sdp --parser-only`: what the library's parser says about a file, and nothing else. A host
// that does no more than to call it sees this.

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_PARSER_ONLY_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_PARSER_ONLY_H

#include <string>

#include "commands/cli11_names.h"
#include "commands/sdp_judgement.h"
#include "commands/sdp_verdict.h"

namespace nmos_instrument::program {

struct ParserOnlyOptions
{
    bool chosen = false;
    ReceivingInstrument instrument;

    /// `command` keeps references to this object. Returns the option that chooses.
    CLI::Option* add_to(CLI::App& command);
};

SdpJudgement judge_by_parser(const std::string& sdp, const ReceivingInstrument& instrument);

} // namespace nmos_instrument::program

#endif
