// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_TESTS_PROGRAM_RUN_PROGRAM_H
#define NMOS_INSTRUMENT_TESTS_PROGRAM_RUN_PROGRAM_H

#include <string>
#include <string_view>
#include <vector>

#include "support/temporary_folder.h"

struct ProgramRun
{
    int status; ///< exit status; -1 when the program did not end by itself
    std::string out;
    std::string errors;
};

/// Runs the built program to its end. `input` is its standard input.
ProgramRun run_program(const std::vector<std::string>& arguments, std::string_view input = {});

/// As above, with its standard output in a file that exists; `out` stays empty.
ProgramRun run_program_into(const std::string& output_file,
                            const std::vector<std::string>& arguments);

/// A file in a folder of its own that goes with the object.
class TemporaryFile
{
public:
    explicit TemporaryFile(std::string_view content = {});

    const std::string& name() const { return name_; }
    std::string content() const;

private:
    TemporaryFolder folder_;
    std::string name_;
};

#endif
