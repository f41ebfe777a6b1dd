// SPDX-License-Identifier: Apache-2.0
//
// What holds for the command line as a whole: 0 done, 1 the input was refused, 2 could not be read
// or written, 3 wrong use.

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "run_program.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

TEST(CommandLine, HelpIsNotWrongUse)
{
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--help"}, {"print", "--help"}, {"check-sdp", "-h"}}) {
        const ProgramRun run = run_program(arguments);
        EXPECT_EQ(run.status, 0);
        EXPECT_THAT(run.out, HasSubstr("Usage: nmos-instrument"));
        EXPECT_THAT(run.errors, IsEmpty());
    }
}

TEST(CommandLine, HelpNamesValuesInWords)
{
    EXPECT_THAT(run_program({"print", "--help"}).out, Not(HasSubstr("2147483648")));
    EXPECT_THAT(run_program({"print", "--help"}).out,
                HasSubstr("0 (group G1), 1 (G1 and G2) or another number (all four)"));
    EXPECT_THAT(run_program({"check-sdp", "--help"}).out, HasSubstr("2k|4k|any|N"));
    EXPECT_THAT(run_program({"serve", "--help"}).out, Not(HasSubstr("INT in")));
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
        {{"prnt"}, "no command \"prnt\"; there are print, check-sdp, serve\n"},
        {{"--list"}, "--list"},
        {{"print"}, "print: TEXT is missing; nmos-instrument print --list shows all texts"},
        {{"print", ""}, "print: TEXT is missing"},
        {{"print", "nodes"}, "print: no text \"nodes\"; nmos-instrument print --list"},
        {{"print", "root", "nodes"}, "print root: takes no INDEX, found \"nodes\""},
        {{"print", "self", "0"}, "print self: takes no INDEX, found \"0\""},
        {{"print", "sdp"}, "print sdp: INDEX is missing (0 to 5)\n"},
        {{"print", "receiver"}, "print receiver: INDEX is missing (0 to 23)\n"},
        {{"print", "sdp", "6"}, "print sdp: INDEX cannot be \"6\" (0 to 5)\n"},
        {{"print", "sdp", "-1"}, "-1"},
        {{"print", "sdp", "1x"}, "print sdp: INDEX cannot be \"1x\" (0 to 5)\n"},
        {{"print", "sdp", "4294967296"}, "INDEX cannot be \"4294967296\" (0 to 5)\n"},
        {{"print", "device", "1"}, "print device: INDEX cannot be \"1\" (0)\n"},
        {{"print", "self", "0", "0"}, "0"},
        {{"print", "self", "--nicely"}, "--nicely"},
        {{"print", "self", "--sender-filter", "all"},
         "--sender-filter: found \"all\", allowed: 0 (without the video senders of streams 2 to 4) "
         "or "
         "another number (all)"},
        {{"print", "self", "--config"}, "--config"},
        {{"print", "--print-config", "--check-config"}, "--print-config"},
        {{"serve", "--port", "0"}, "--port: found \"0\", allowed: 1 to 65535"},
        {{"serve", "--state-reset"}, "--state-reset requires --state"},
        {{"serve", "--listen", "192.0.2.10:80"},
         "--listen: found \"192.0.2.10:80\", allowed: \"any\", an address like \"192.0.2.10\" or "
         "\"::1\", or the name of an interface like \"eth0\"\n"},
        {{"serve", "--listen", "300.0.2.10"}, "--listen: found \"300.0.2.10\""},
        {{"serve", "--listen", "233.252.0.1"}, "--listen: found \"233.252.0.1\""},
        {{"serve", "--address", "2001:db8::1"},
         "--address: found \"2001:db8::1\", allowed: unicast IPv4 address like \"192.0.2.10\", or "
         "the name of an interface like \"eth0\"\n"},
        {{"serve", "--address", "0.0.0.0"}, "--address: found \"0.0.0.0\""},
        {{"serve", "--advertised-port", "65536"},
         "--advertised-port: found \"65536\", allowed: 1 to 65535"},
        {{"serve", "--registry", "registry.example:8080"},
         "--registry: found \"registry.example:8080\", allowed: URL like "
         "\"http://registry.example:8080\", http or https, without a path or with "
         "\"/x-nmos/registration/v1.2\"\n"},
        {{"serve", "--registry", "http://a.example", "http://b.example"}, "http://b.example"},
        {{"serve", "--registry", "http://a.example", "--no-registration"},
         "--registry excludes --no-registration"},
        {{"serve", "--dns-domain", "a b"},
         "--dns-domain: found \"a b\", allowed: domain name like \"example.com\"\n"},
        {{"serve", "--registry-ca", ""}, "--registry-ca: found \"\", allowed: path of a file"},
        {{"serve", "--service-file", "/etc/avahi/services/nmos"},
         "--service-file: found \"/etc/avahi/services/nmos\", allowed: path of a file whose name "
         "ends in \".service\"\n"},
        {{"serve", "--advertise", "sometimes"},
         "--advertise: found \"sometimes\", allowed: always, peer-to-peer, never\n"},
        {{"serve", "--manifest-hosts", "192.0.2.7/24"},
         "--manifest-hosts: found \"192.0.2.7/24\", allowed: an IPv4 network like 192.0.2.0/24 "
         "with no bits set behind the prefix, or an IPv4 address like 192.0.2.7"},
        {{"serve", "--manifest-hosts", "example.org"}, "--manifest-hosts: found \"example.org\""},
        {{"serve", "--manifest-hosts", "192.0.2.0/24", "198.51.100.0/24"}, "198.51.100.0/24"},
        {{"serve", "--connections-per-address", "-1"},
         "--connections-per-address: found \"-1\", allowed: 0 to 1000000"},
        {{"check-sdp"}, "check-sdp: FILE is missing: an SDP file, a directory, or - for standard"},
        {{"check-sdp", "--quiet"}, "check-sdp: FILE is missing"},
        {{"check-sdp", "-", "-"}, "FILE: standard input (\"-\") can be read only once"},
        {{"check-sdp", "-", "--parser-only", "--current-format", "32768"},
         "--current-format: found \"32768\", allowed: 2k, 4k, any, or a number from -32768 to "
         "32767"},
        {{"check-sdp", "-", "--parser-only", "--switch-capable", "--no-switch-capable"},
         "--switch-capable"},
        {{"check-sdp", "-", "--switch-capable"}, "--switch-capable requires --parser-only"},
        {{"check-sdp", "-", "--no-switch-allowed"}, "--no-switch-allowed requires --parser-only"},
        {{"check-sdp", "-", "--current-format", "2k"}, "--current-format requires --parser-only"},
        {{"check-sdp", "-", "--parser-only", "--receiver", "video"},
         "--receiver excludes --parser-only"},
        {{"check-sdp", "-", "--parser-only", "--config", "x"}, "--config excludes --parser-only"},
        {{"check-sdp", "-", "--receiver", "data"},
         "--receiver: found \"data\", allowed: video, audio, ancillary\n"},
        {{"check-sdp", "-", "--format", "xml"}, "--format: found \"xml\", allowed: text, json\n"},
        {{"check-sdp", "--explain", "SDP999"},
         "--explain: found \"SDP999\", allowed: all, SDP001, SDP002, "},
        {{"check-sdp", "--explain", "SDP001", "-"}, "excludes"},
    };
    for (const WrongUse& wrong : cases) {
        const ProgramRun run = run_program(wrong.arguments);
        EXPECT_EQ(run.status, 3) << wrong.said;
        EXPECT_THAT(run.errors, HasSubstr(wrong.said));
        EXPECT_THAT(run.out, IsEmpty()) << wrong.said;
    }
}

/// What serve would do with these options, as --print-config shows it.
nlohmann::json configuration_with(std::vector<std::string> options)
{
    options.insert(options.begin(), {"serve", "--print-config"});
    const ProgramRun run = run_program(options);
    EXPECT_EQ(run.status, 0) << run.errors;
    return nlohmann::json::parse(run.out, nullptr, true, true);
}

TEST(CommandLine, OptionsTakeThePlaceOfKeys)
{
    const nlohmann::json before = configuration_with({});
    EXPECT_EQ(before["server"], nlohmann::json::parse(R"({"listen": null, "address": null,
                                    "port": 3000, "advertised_port": null})"));
    EXPECT_EQ(configuration_with({"--listen", "[::1]", "--address", "eth0", "--port", "80",
                                  "--advertised-port", "8080"})["server"],
              nlohmann::json::parse(R"({"listen": "::1", "address": "eth0", "port": 80,
                                        "advertised_port": 8080})"));
    EXPECT_EQ(
        configuration_with({"--registry", "http://a.example", "--registry",
                            "HTTPS://B.example:8443/", "--registry-ca", "ca.pem", "--dns-domain",
                            "example.com.", "--development-registries"})["registration"],
        nlohmann::json::parse(R"({"enabled": true,
                  "registries": ["http://a.example/x-nmos/registration/v1.2",
                                 "https://b.example:8443/x-nmos/registration/v1.2"],
                  "ca_file": "ca.pem", "dns_domain": "example.com",
                  "development_registries": true})"));
    EXPECT_EQ(configuration_with({"--no-registration"})["registration"]["enabled"], false);
    EXPECT_EQ(configuration_with(
                  {"--service-file", "nmos.service", "--advertise", "always"})["advertisement"],
              nlohmann::json::parse(R"({"service_file": "nmos.service", "when": "always"})"));
    EXPECT_EQ(configuration_with({"--advertise", "peer-to-peer"}), before);
}

TEST(CommandLine, ARegistryIsUsedThoughTheConfigurationWantsNone)
{
    const TemporaryFile file(R"({"registration": {"enabled": false,
                                                  "registries": ["http://b.example"]}})");
    EXPECT_EQ(configuration_with({"--config", file.name(), "--registry",
                                  "http://a.example"})["registration"]["registries"],
              nlohmann::json::parse(R"(["http://a.example/x-nmos/registration/v1.2"])"));
    EXPECT_EQ(configuration_with({"--config", file.name(), "--registry",
                                  "http://a.example"})["registration"]["enabled"],
              true);
}

TEST(CommandLine, SixteenRegistriesAreEnough)
{
    std::vector<std::string> options = {"serve", "--print-config"};
    for (int i = 0; i < 17; ++i)
        options.insert(options.end(), {"--registry", "http://a" + std::to_string(i) + ".example"});
    const ProgramRun run = run_program(options);
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.errors, HasSubstr("--registry: found \"http://a16.example/x-nmos/registration/"
                                      "v1.2\", allowed: at most 16 of them"));
}

TEST(CommandLine, AConfigurationCannotMoveTheCursor)
{
    const TemporaryFile file("{\"\\u001b[2J\": 1, \"\\u001b[2J\": 2}");
    const ProgramRun twice = run_program({"serve", "--config", file.name(), "--check-config"});
    EXPECT_EQ(twice.status, 1);
    EXPECT_EQ(twice.errors, file.name() + ": /\\x1b[2J: this key is given twice\n");

    const ProgramRun absent = run_program({"serve", "--config", "/nowhere/\x1b[2J"});
    EXPECT_EQ(absent.status, 2);
    EXPECT_THAT(absent.errors, HasSubstr("--config /nowhere/\\x1b[2J: "));
}

TEST(CommandLine, OutputThatCannotBeWrittenIsStatus2)
{
    const ProgramRun run = run_program_into("/dev/full", {"print", "receivers"});
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.errors, "standard output: cannot be written\n");
}

} // namespace
