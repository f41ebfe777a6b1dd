// SPDX-License-Identifier: Apache-2.0

#include "commands/serve.h"

#include <chrono>
#include <exception>
#include <iostream>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>

#include <spdlog/spdlog.h>
#include <unistd.h>

#include "commands/configuration_options.h"
#include "commands/end_signals.h"
#include "commands/serve_options.h"
#include "log/instrument_log.h"
#include "log/patient_output.h"
#include "log/program_log.h"
#include <nmos_instrument_host/instrument.h>

namespace nmos_instrument::program {
namespace {

/// A script that started us waits for it. Nobody else may ever read it: that must not stop us.
void print_url(const std::string& url)
{
    PatientOutput output(STDOUT_FILENO);
    output.give_up_at(PatientOutput::Clock::now() + std::chrono::seconds(1));
    if (!output.write(url + '\n'))
        spdlog::warn("standard output: the URL could not be written");
}

/// False if a signal has ended the wait for an address.
bool start(nmos_instrument_host::Instrument& instrument, EndSignals& end_signals)
{
    std::optional<std::string> signal;
    const auto wait = [&] {
        signal = end_signals.wait_for(std::chrono::seconds(1));
        return !signal;
    };
    try {
        if (instrument.start(wait))
            return true;
    } catch (const std::system_error& error) {
        if (error.code() == std::errc::address_in_use)
            throw std::runtime_error(std::string(error.what()) +
                                     "; use --port PORT for another port, or --first-free-port for "
                                     "the next free one");
        throw;
    }
    spdlog::info("stopping on {}", *signal);
    return false;
}

ExitStatus run(const ServeOptions& options, const host::Configuration& configuration)
{
    EndSignals end_signals;
    nmos_instrument_host::Callbacks callbacks;
    callbacks.log = write_log;
    nmos_instrument_host::Instrument instrument(host::explain_configuration(configuration),
                                                options.of_instrument(), callbacks);
    if (!start(instrument, end_signals))
        return done;
    print_url(instrument.url());
    spdlog::info("stopping on {}", end_signals.wait());
    return instrument.stop() ? done : unreadable;
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
        return run(options, *configuration);
    } catch (const std::exception& error) {
        spdlog::critical("cannot serve: {}", error.what());
        return unreadable;
    }
}

} // namespace nmos_instrument::program
