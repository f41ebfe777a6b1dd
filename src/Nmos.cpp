// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/Nmos.h"

#include <cstddef>
#include <fstream>

#include "bodies/parameters_body.h"
#include "json/json_lists.h"
#include "label_tables.h"
#include "listings/root_listing.h"
#include "listings/service_file.h"
#include "records/membership.h"

using namespace nmos_instrument;

namespace {

constexpr const char* service_file = "/etc/avahi/services/nmos-node.service";

/// Intentional: the counters wrap after 254, so 255 never occurs.
int next_version(int version)
{
    constexpr long long versions = 255;
    return static_cast<int>((version + 1LL) % versions);
}

} // namespace

Nmos::Nmos()
    : port(3000),
      protocol(0),
      ver_slf(0),
      ver_src(0),
      ver_flw(0),
      ver_dvc(0),
      ver_snd(0),
      ver_rcv(0)
{}

Nmos::~Nmos() = default;

std::string Nmos::replaceAll(std::string& subject, std::string from, std::string to)
{
    if (from.empty())
        return subject;
    std::string replaced;
    std::size_t done = 0;
    for (std::size_t at = subject.find(from); at != std::string::npos;
         at = subject.find(from, done)) {
        replaced.append(subject, done, at - done).append(to);
        done = at + from.size();
    }
    replaced.append(subject, done);
    std::string copy = replaced;
    subject.swap(replaced);
    return copy;
}

std::string Nmos::make_xnmos()
{
    return root_listing({"x-nmos"});
}

std::string Nmos::make_api()
{
    return root_listing({"node", "registration", "connection"});
}

std::string Nmos::make_param_json(const st_param_sys* param, int)
{
    return make_text(Slashes::escaped, [&](JsonText& body) { write_parameters(body, *param); });
}

void Nmos::update_txt_port_number(int new_port)
{
    port = new_port;
}

void Nmos::update_txt_protocol(int new_protocol)
{
    protocol = new_protocol;
}

void Nmos::update_txt_ver_slf()
{
    ver_slf = next_version(ver_slf);
}

void Nmos::update_txt_ver_src()
{
    ver_src = next_version(ver_src);
}

void Nmos::update_txt_ver_flw()
{
    ver_flw = next_version(ver_flw);
}

void Nmos::update_txt_ver_dvc()
{
    ver_dvc = next_version(ver_dvc);
}

void Nmos::update_txt_ver_snd()
{
    ver_snd = next_version(ver_snd);
}

void Nmos::update_txt_ver_rcv()
{
    ver_rcv = next_version(ver_rcv);
}

int Nmos::make_node_service(unsigned int, int, int enable)
{
    const std::string service = make_node_service_text(enable);
    std::ofstream file(service_file, std::ios::out | std::ios::trunc);
    file << service; // Intentional: a failure is not reported, the result is always 0
    return 0;
}

std::string Nmos::make_node_service_text(int enable) const
{
    if (enable != 1)
        return {};
    const std::string& protocol_name = str_protocol[protocol == 1 ? 1 : 0];
    return service_file_text(
        {port, protocol_name, ver_slf, ver_src, ver_flw, ver_dvc, ver_snd, ver_rcv});
}

int Nmos::is_insert_node_senders(int all_senders, int label_index)
{
    return shows_sender_label(all_senders, label_index) ? 1 : 0;
}

int Nmos::is_insert_node_receivers(int video_only, int audio_group_mode, int label_index)
{
    return shows_receiver_label({video_only, audio_group_mode}, label_index) ? 1 : 0;
}
