// SPDX-License-Identifier: Apache-2.0

#include "records/identity.h"

#include <stdexcept>

#include <uuid/uuid.h>

namespace nmos_instrument::host {
namespace {

/// Chosen once at random. Another value would give every instrument new ids.
constexpr char instruments_name_space[] = "0e0078e3-3c58-4739-a038-ee5a18ff72c3";

/// Kind and number follow the serial number, so that no two names are alike, whatever the serial
/// number contains.
std::string resource_id(std::string_view serial_number, std::string_view kind, std::size_t number)
{
    std::string name(serial_number);
    name += '/';
    name += kind;
    name += '/';
    name += std::to_string(number);
    return name_based_uuid(instruments_name_space, name);
}

template <std::size_t N>
void fill(std::array<std::string, N>& ids, std::string_view serial_number, std::string_view kind)
{
    for (std::size_t i = 0; i < N; ++i)
        ids[i] = resource_id(serial_number, kind, i);
}

} // namespace

std::string name_based_uuid(const std::string& name_space, const std::string& name)
{
    uuid_t space;
    if (uuid_parse(name_space.c_str(), space) != 0)
        throw std::invalid_argument("\"" + name_space + "\" is not a UUID");
    uuid_t made;
    uuid_generate_sha1(made, space, name.data(), name.size());
    char text[UUID_STR_LEN];
    uuid_unparse_lower(made, text);
    return text;
}

Identity::Identity(std::string_view serial_number)
    : node(resource_id(serial_number, "node", 0)), device(resource_id(serial_number, "device", 0))
{
    fill(sources, serial_number, "source");
    fill(flows, serial_number, "flow");
    fill(senders, serial_number, "sender");
    fill(receivers, serial_number, "receiver");
}

std::uint64_t sdp_session_id(const std::string& sender_id)
{
    uuid_t id;
    if (uuid_parse(sender_id.c_str(), id) != 0)
        throw std::invalid_argument("\"" + sender_id + "\" is not a UUID");
    std::uint64_t number = 0;
    for (int byte = 0; byte < 8; ++byte)
        number = number << 8 | id[byte];
    return number & 0x7fff'ffff'ffff'ffffU;
}

} // namespace nmos_instrument::host
