// SPDX-License-Identifier: Apache-2.0
//
// The texts behind a server of one's own: here the smallest HTTP/1.1 server that answers, one
// request at a time, on the loopback address. It serves what others read of the Node API and the
// Connection API; a controller that connects receivers (PATCH) is what the host library is for.
//
//   own_http_server [PORT [--requests N]]    PORT 0 is any; it ends after N requests

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <nmos_instrument/nmos_instrument.h>

using namespace nmos_instrument;

struct Records
{
    NMOS_IS04_ST node;
    NMOS_IS05_ST connections;
    st_param_sys settings;
    Selection shown;
};

static bool fill(Records& records, int port)
{
    RecordsDescription about;
    about.seed = "QX0000001";
    about.label = "Rack 4";
    about.interfaces[0] = {"media1", "00:00:5e:00:53:01", "192.0.2.10"};
    about.interfaces[1] = {"media2", "00:00:5e:00:53:02", "198.51.100.10"};
    about.address = "127.0.0.1";
    about.port = port;
    about.grandmaster = "00-00-5E-FF-FE-00-53-01";
    about.version_seconds = 1541234567;
    const std::vector<std::string> findings = fill_default_records(
        about, records.node, records.connections, records.settings, records.shown);
    for (const std::string& finding : findings)
        std::fprintf(stderr, "%s\n", finding.c_str());
    return findings.empty();
}

/// The body of a path; empty when there is none.
static std::string body_of(Records& r, const std::string& path)
{
    const std::string node = "/x-nmos/node/v1.2/", single = "/x-nmos/connection/v1.0/single/";
    const Selection& s = r.shown;
    if (path == node)
        return NodeApi().make_base(&r.node);
    if (path == node + "self")
        return NodeApi().make_self(&r.node);
    if (path == node + "devices")
        return NodeApi().make_devices(&r.node, s.receiver_filter, s.audio_group_filter,
                                      s.sender_filter);
    if (path == node + "sources")
        return NodeApi().make_sources(&r.node);
    if (path == node + "flows")
        return NodeApi().make_flows(&r.node);
    if (path == node + "senders")
        return NodeApi().make_senders(&r.node, s.sender_filter);
    if (path == node + "receivers")
        return NodeApi().make_receivers(&r.node, s.receiver_filter, s.audio_group_filter);
    for (int i = 0; i < r.node.senders_count; ++i) {
        const std::string sender = single + "senders/" + text_of(r.node.senders[i].id) + '/';
        if (path == sender + "staged")
            return ConnectionApi().make_single_senderid_staged(&r.connections, i);
        if (path == sender + "active")
            return ConnectionApi().make_single_senderid_active(&r.connections, i);
        if (path == sender + "transportfile")
            return ConnectionApi().make_single_senderid_sdp(&r.connections, i, &r.settings);
    }
    for (int i = 0; i < r.node.receivers_count; ++i) {
        const std::string receiver = single + "receivers/" + text_of(r.node.receivers[i].id) + '/';
        if (path == receiver + "staged")
            return ConnectionApi().make_single_receiverid_staged(&r.connections, i);
        if (path == receiver + "active")
            return ConnectionApi().make_single_receiverid_active(&r.connections, i);
    }
    return "";
}

static std::string response_to(Records& records, const std::string& head)
{
    std::string status = "405 Method Not Allowed\r\nAllow: GET", body;
    if (head.compare(0, 4, "GET ") == 0) {
        body = body_of(records, head.substr(4, head.find(' ', 4) - 4));
        status = body.empty() ? "404 Not Found" : "200 OK";
    }
    const bool is_sdp = body.compare(0, 2, "v=") == 0;
    return "HTTP/1.1 " + status +
           "\r\nContent-Type: " + (is_sdp ? "application/sdp" : "application/json") +
           "\r\nContent-Length: " + std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" +
           body;
}

/// Reads the head of a request and answers; a client that is silent for 5 s gets nothing.
static void serve(int connection, Records& records)
{
    const timeval patience = {5, 0};
    setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    setsockopt(connection, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    std::string head;
    char bytes[1024];
    ssize_t count = 1;
    while (count > 0 && head.find("\r\n\r\n") == std::string::npos && head.size() < 16384) {
        count = recv(connection, bytes, sizeof bytes, 0);
        if (count > 0)
            head.append(bytes, static_cast<std::size_t>(count));
    }
    const std::string text = count > 0 ? response_to(records, head) : "";
    for (std::size_t sent = 0; count > 0 && sent < text.size();) {
        count = send(connection, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        sent += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    close(connection);
}

int main(int argc, char** argv)
{
    const int wanted_port = argc > 1 ? std::atoi(argv[1]) : 0;
    const bool ends = argc > 3 && std::strcmp(argv[2], "--requests") == 0;
    const int listener = socket(AF_INET, SOCK_STREAM, 0);
    const int yes = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address = sockaddr_in();
    socklen_t size = sizeof address;
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(wanted_port));
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        listen(listener, 16) != 0 ||
        getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        std::fprintf(stderr, "port %d: %s\n", wanted_port, std::strerror(errno));
        return 2;
    }

    const std::unique_ptr<Records> records(new Records()); // half a megabyte: not on the stack
    if (!fill(*records, ntohs(address.sin_port)))
        return 1;
    std::printf("%sx-nmos/node/v1.2/\n", records->node.href);
    std::fflush(stdout);
    for (long left = ends ? std::atol(argv[3]) : 1; left > 0; left -= ends ? 1 : 0)
        serve(accept(listener, nullptr, nullptr), *records);
    close(listener);
    return 0;
}
