// SPDX-License-Identifier: Apache-2.0

#include "commands/serve.h"

#include <chrono>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <spdlog/spdlog.h>
#include <unistd.h>

#include "commands/configuration_options.h"
#include "commands/end_signals.h"
#include "commands/running_node.h"
#include "commands/serve_options.h"
#include "commands/serve_reach.h"
#include "commands/version_text.h"
#include "http/listening_socket.h"
#include "instrument/instrument.h"
#include "instrument/replaced_file.h"
#include "instrument/restore_from.h"
#include "instrument/state_file.h"
#include "log/patient_output.h"
#include "log/program_log.h"
#include "network/reach.h"
#include "records/addresses.h"
#include "records/record_text.h"
#include "time/tai_clock.h"

namespace nmos_instrument::program {
namespace {

std::string name_of(const std::optional<std::string>& file)
{
    return file ? *file : "none";
}

/// What somebody who only has the log wants to know first.
void log_start(const ServeOptions& options, const std::string& place, host::Instrument& instrument,
               unsigned connection_limit)
{
    const auto& interfaces = instrument.configuration().interfaces;
    const std::string node_id = instrument.read(
        [](const host::Records& records) { return std::string(host::text_of(records.node.id)); });
    spdlog::info("{}: node {}, configuration {}, state {}, interfaces {} and {}, serving {} "
                 "(listening at {}, at most {} connections)",
                 version_text(), node_id, name_of(options.configuration.file),
                 name_of(options.state_file), interfaces[0].address, interfaces[1].address,
                 host::base_url(instrument.address()), place, connection_limit);
    const std::string clock_warning = host::clock_warning(host::utc_now());
    if (!clock_warning.empty())
        spdlog::warn("{}", clock_warning);
}

/// A script that started us waits for it. Nobody else may ever read it: that must not stop us.
void print_url(const std::string& url)
{
    PatientOutput output(STDOUT_FILENO);
    output.give_up_at(PatientOutput::Clock::now() + std::chrono::seconds(1));
    if (!output.write(url + '\n'))
        spdlog::warn("standard output: the URL could not be written");
}

/// Nothing if there is no --state.
std::optional<host::ReplacedFile> open_state_file(const ServeOptions& options)
{
    if (!options.state_file)
        return std::nullopt;
    try {
        return host::ReplacedFile(*options.state_file);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error("--state " + *options.state_file + ": " + error.what());
    }
}

/// How the program is reached while it serves.
struct Reached
{
    host::ListenAt listen;
    host::ListeningSocket socket;
    host::FollowedAddress address;
};

Reached listen(const ServeOptions& options, const host::Reach& reach, int port,
               const host::Log& log)
{
    return {
        reach.listen,
        listen(reach.listen, static_cast<std::uint16_t>(port),
               options.first_free_port ? IfPortInUse::take_next_free_one : IfPortInUse::give_up),
        host::FollowedAddress(reach.address, log)};
}

/// Serves until a signal ends it. When it returns, nothing changes the instrument any more.
void serve_until_signal(const ServeOptions& options, Reached reached, host::Instrument& instrument,
                        host::StateFile* state_file, EndSignals& end_signals, const host::Log& log)
{
    const std::string place = host::text_of(reached.listen, reached.socket.port());
    host::InterfaceBinding binding(reached.socket, reached.listen.interface, log);
    RunningNode node(options, std::move(reached.socket), instrument, state_file, log);
    log_start(options, place, instrument, node.connection_limit());
    log_reach(reached.listen, instrument.address(), instrument.configuration(), log);
    print_url(host::base_url(instrument.address()));

    const auto move_to = [&](const std::string& address) { node.move_to(address); };
    spdlog::info("stopping on {}",
                 follow_until_signal(reached.address, move_to, binding, end_signals, log));
}

ExitStatus run(const ServeOptions& options, const host::Configuration& configuration,
               const host::Log& log)
{
    EndSignals end_signals;
    const host::ServerSettings& server = configuration.server;
    const host::Reach reach = host::reach_of(server.listen, server.address);
    host::expect_interfaces(reach, host::network_interfaces());

    // Before the port: a state file in use is the better reason to give up.
    const std::optional<host::ReplacedFile> file = open_state_file(options);
    // Before the instrument, because its records name the port.
    Reached reached = listen(options, reach, server.port, log);
    const std::optional<std::string> address =
        first_address(reach.address, reached.address, end_signals, log);
    if (!address)
        return done;

    host::Instrument instrument(
        configuration, {*address, server.advertised_port.value_or(reached.socket.port())},
        host::tai_now, log, {}, std::chrono::steady_clock::now,
        options.as_is ? host::Presentation::as_is : host::Presentation::conforming);
    std::optional<host::StateFile> state_file;
    if (file) {
        host::restore_from(*file, instrument,
                           options.state_reset ? host::StateReset::yes : host::StateReset::no, log);
        state_file.emplace(*file, instrument, log);
    }
    serve_until_signal(options, std::move(reached), instrument, state_file ? &*state_file : nullptr,
                       end_signals, log);
    return state_file && !state_file->finish() ? unreadable : done;
}

} // namespace

ExitStatus serve(const ServeOptions& options)
{
    ExitStatus status = done;
    std::optional<host::Configuration> configuration =
        load(options.configuration, std::cerr, status);
    if (!configuration)
        return status;
    options.replace_in(*configuration);
    if (options.configuration.asks_about_configuration()) {
        answer_about(*configuration, options.configuration, std::cout);
        return done;
    }
    const ProgramLog log(options.log_level);
    try {
        return run(options, *configuration, log.log());
    } catch (const std::exception& error) {
        spdlog::critical("cannot serve: {}", error.what());
        return unreadable;
    }
}

} // namespace nmos_instrument::program
