// SPDX-License-Identifier: Apache-2.0
//
// The bare HTTP server: answers every request with the bytes of a file, a fresh copy each time, as the
// instrument's routes make a fresh text each time. Prints its port, ends on SIGTERM.

#include <csignal>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "http/server.h"

int main(int argc, char** argv)
{
    using namespace nmos_instrument::host;

    if (argc != 3) {
        std::cerr << "Usage: http_bench_server FILE THREADS\n";
        return 3;
    }
    sigset_t end;
    sigemptyset(&end);
    sigaddset(&end, SIGTERM);
    sigaddset(&end, SIGINT);
    pthread_sigmask(SIG_BLOCK, &end, nullptr);
    try {
        std::ifstream file(argv[1], std::ios::binary);
        if (!file) {
            std::cerr << argv[1] << ": cannot be read\n";
            return 2;
        }
        const std::string body{std::istreambuf_iterator<char>(file), {}};

        HttpServerOptions options;
        options.threads = static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10));
        HttpServer server(options, [&body](const HttpRequest&, const HttpReply& reply) {
            HttpResponse response;
            response.body = body;
            reply(std::move(response));
        });
        std::cout << server.port() << std::endl;
        int signal = 0;
        sigwait(&end, &signal);
        return 0;
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 2;
    }
}
