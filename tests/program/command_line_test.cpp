// SPDX-License-Identifier: Apache-2.0
//
// What holds for the command line as a whole: 0 done, 1 the input was refused, 2 could not be read
// or written, 3 wrong use.

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "run_program.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

TEST(CommandLine, HelpIsNoWrongUse)
{
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--help"}, {"print", "--help"}, {"check-sdp", "-h"}}) {
        const ProgramRun run = run_program(arguments);
        EXPECT_EQ(run.status, 0);
        EXPECT_THAT(run.out, HasSubstr("Usage: nmos-instrument"));
        EXPECT_THAT(run.errors, IsEmpty());
    }
}

TEST(CommandLine, NamesItsVersion)
{
    const ProgramRun run = run_program({"--version"});
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.out, testing::MatchesRegex("nmos-instrument [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

struct WrongUse
{
    std::vector<std::string> arguments;
    const char* said; ///< part of what is said about it
};

TEST(CommandLine, WrongUseIsStatus3AndSaysWhatIsAllowed)
{
    const WrongUse cases[] = {
        {{}, "A command is required"},
        {{"show"}, "The following argument was not expected: show"},
        {{"--list"}, "--list"},
        {{"print"}, "TEXT is required; nmos-instrument print --list names all texts"},
        {{"print", ""}, "TEXT is required"},
        {{"print", "nodes"}, "TEXT: there is no text \"nodes\"; nmos-instrument print --list"},
        {{"print", "root", "nodes"}, "INDEX: root takes none, found \"nodes\""},
        {{"print", "self", "0"}, "INDEX: self takes none, found \"0\""},
        {{"print", "sdp"}, "INDEX: sdp needs one, found \"\", allowed: 0 to 5"},
        {{"print", "sdp", "6"}, "INDEX: sdp needs one, found \"6\", allowed: 0 to 5"},
        {{"print", "sdp", "-1"}, "-1"},
        {{"print", "sdp", "1x"}, "INDEX: sdp needs one, found \"1x\", allowed: 0 to 5"},
        {{"print", "sdp", "4294967296"}, "found \"4294967296\", allowed: 0 to 5"},
        {{"print", "device", "1"}, "found \"1\", allowed: 0\n"},
        {{"print", "self", "0", "0"}, "0"},
        {{"print", "self", "--nicely"}, "--nicely"},
        {{"print", "self", "--sender-filter", "all"},
         "--sender-filter: Value all not in range -2147483648 to 2147483647"},
        {{"print", "self", "--config"}, "--config"},
        {{"print", "--print-config", "--check-config"}, "--print-config"},
        {{"check-sdp"}, "FILE is required"},
        {{"check-sdp", "-", "-"}, "FILE: standard input (\"-\") can be read once"},
        {{"check-sdp", "-", "--current-format", "32768"},
         "--current-format: Value 32768 not in range -32768 to 32767"},
        {{"check-sdp", "-", "--switch-capable", "--no-switch-capable"}, "--switch-capable"},
    };
    for (const WrongUse& wrong : cases) {
        const ProgramRun run = run_program(wrong.arguments);
        EXPECT_EQ(run.status, 3) << wrong.said;
        EXPECT_THAT(run.errors, HasSubstr(wrong.said));
        EXPECT_THAT(run.out, IsEmpty()) << wrong.said;
    }
}

TEST(CommandLine, OutputThatCannotBeWrittenIsStatus2)
{
    const ProgramRun run = run_program_into("/dev/full", {"print", "receivers"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.errors, "standard output: cannot be written\n");
}

} // namespace
