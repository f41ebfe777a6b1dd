// SPDX-License-Identifier: Apache-2.0
//
// A measuring instrument as a complete NMOS node. Its hardware is pretended: replace the class
// Hardware by yours. The tutorial (docs/tutorial.md) walks through it.
//
//     instrument [STATE-FILE]
//
// prints its URL and runs until SIGTERM or SIGINT.

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include <nmos_instrument/nmos_instrument.h>
#include <nmos_instrument_host/instrument.h>

namespace nmos = nmos_instrument_host;

/// Stands for what receives and measures the streams. It has fewer paths than the node has receivers.
class Hardware
{
public:
    /// Takes a while, as real hardware does.
    nmos::Outcome apply(const nmos::Connection& connection, const CONNECTION_HALF_IS05_ST& active)
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        if (connection.side == nmos::Connection::Side::sender)
            return nmos::applied();

        const std::lock_guard<std::mutex> lock(mutex_);
        bool& is_measured = is_measured_[static_cast<std::size_t>(connection.index)];
        if (!active.master_enable) {
            is_measured = false;
            return nmos::applied();
        }
        if (!is_measured && paths_in_use() == most_paths)
            return nmos::refused("all measuring paths are in use");
        is_measured = true;
        const CONNECTION_LEG_IS05_ST& leg = active.transport_params[0];
        std::fprintf(stderr, "hardware: receiver %d measures %s port %.0f at %s\n",
                     connection.index, leg.destination_ip, leg.destination_port, leg.interface_ip);
        return nmos::applied();
    }

    /// Real hardware finds its grandmaster after a while, and tells whoever listens.
    std::string grandmaster() const { return "00-00-5e-ff-fe-00-53-07"; }

private:
    static constexpr int most_paths = 2;

    int paths_in_use() const
    {
        int paths = 0;
        for (const bool is_measured : is_measured_)
            paths += is_measured ? 1 : 0;
        return paths;
    }

    std::mutex mutex_;
    std::array<bool, 24> is_measured_{};
};

const char* const configuration = R"({
    "serial_number": "DEMO-0001", // the ids are made from it
    "node": {"label": "Rack 4", "description": "Two measuring paths"},
    "server": {"listen": "127.0.0.1", "port": 3000},
    "registration": {"enabled": false},
    "clock": {"locked": false}
})";

/// What the hardware has found out becomes what the node says. Versions, counters, registry and
/// watchers follow by themselves.
void show_lock(nmos::Instrument& instrument, const Hardware& hardware)
{
    instrument.records([&](nmos::Records& records) {
        CLOCK_IS04_ST& clock = records.node.clocks[0];
        nmos_instrument::set_text(clock.gmid, hardware.grandmaster());
        nmos_instrument::set_text(records.connections.ptp_grandmaster_id, hardware.grandmaster());
        clock.locked = 1;
    });
}

void write_line(nmos::LogLevel, std::string_view line)
{
    std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
}

int run(const nmos::Options& options)
{
    // Before any thread starts: all of them inherit it.
    sigset_t end_signals;
    sigemptyset(&end_signals);
    sigaddset(&end_signals, SIGTERM);
    sigaddset(&end_signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &end_signals, nullptr);

    Hardware hardware;
    nmos::Callbacks callbacks;
    callbacks.apply_connection = [&](const nmos::Connection& connection,
                                     const CONNECTION_HALF_IS05_ST& active) {
        return hardware.apply(connection, active);
    };
    callbacks.log = write_line;

    nmos::Instrument instrument(configuration, options, callbacks);
    instrument.start();
    std::printf("%s\n", instrument.url().c_str());
    std::fflush(stdout);
    show_lock(instrument, hardware);

    int signal = 0;
    sigwait(&end_signals, &signal);
    return instrument.stop() ? 0 : 2;
}

int main(int argc, char** argv)
{
    nmos::Options options;
    if (argc > 1)
        options.state_file = argv[1];
    options.first_free_port = true;
    try {
        return run(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "instrument: %s\n", error.what());
        return 2;
    }
}
