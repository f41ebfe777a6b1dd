// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_PROGRAM_COMMANDS_EXIT_STATUS_H
#define NMOS_INSTRUMENT_PROGRAM_COMMANDS_EXIT_STATUS_H

namespace nmos_instrument::program {

/// Exit statuses of the program, from best to worst: of several files the worst one counts.
enum ExitStatus : int
{
    done = 0,
    refused = 1,    ///< the input was read and is not acceptable
    unreadable = 2, ///< something could not be read, written or started
    wrong_use = 3   ///< the command line is wrong
};

} // namespace nmos_instrument::program

#endif
