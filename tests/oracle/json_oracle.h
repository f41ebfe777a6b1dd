// SPDX-License-Identifier: Apache-2.0
//
// A second implementation of every JSON body, which shares nothing with the library: each body is
// built as a picojson tree, member by member, and serialised by picojson, whose text is what the
// readers of these bodies are used to.
//
// A member is only ever added by insert, so the first one of a key stays: that is how "the first
// endpoint alone", "the first subscription alone" and "streams 2 to 4 repeat stream 1" come about
// here, by looping over all of them. The functions are named after the library's operations.

#ifndef NMOS_INSTRUMENT_TESTS_ORACLE_JSON_ORACLE_H
#define NMOS_INSTRUMENT_TESTS_ORACLE_JSON_ORACLE_H

#include <cstdint>
#include <cstring>
#include <string>

#include <picojson.h>

#include "nmos_instrument/nmos_instrument.h"

#ifdef PICOJSON_USE_INT64
#error "The bodies' numbers are doubles, also the integral ones."
#endif

namespace oracle {

// json_values.cpp: what all bodies are made of.

/// Up to the first NUL, at most the whole field.
std::string text_before_nul(const char* field, std::size_t width);

template <std::size_t N>
std::string text_of(const char (&field)[N])
{
    return text_before_nul(field, N);
}

/// "null" and its NUL stand for the JSON value null.
template <std::size_t N>
bool says_null(const char (&field)[N])
{
    static_assert(N >= 5);
    return std::memcmp(field, "null", 5) == 0;
}

template <std::size_t N>
picojson::value string_of(const char (&field)[N])
{
    return picojson::value(text_of(field));
}

template <std::size_t N>
picojson::value string_or_null(const char (&field)[N])
{
    return says_null(field) ? picojson::value() : string_of(field);
}

picojson::value number(double value);
picojson::value boolean(std::uint8_t flag);
picojson::value empty_object();
picojson::value empty_array();

/// Adds the member unless the object has one of that key.
void add(picojson::object& object, const char* key, picojson::value value);

/// Valid entries of an array, never more than it has.
int bounded(int count, int capacity);

/// std::out_of_range, with the highest index as its text, unless `index` is below `capacity`.
void check_index(int index, int capacity);

std::string with_escaped_slashes(const picojson::value& body);

/// As above, and then every "\/" of the finished text is replaced.
std::string with_plain_slashes(const picojson::value& body);

/// Plain textual replacement, from left to right.
std::string replaced(const std::string& text, const std::string& from, const std::string& to);

// json_resources.cpp: the resources that the Node and the Registration API share.

picojson::value node(const NMOS_IS04_ST& record);
enum class Tags
{
    present,
    absent
};
picojson::value device(const DEVICE_IS04_ST& device, int receiver_filter, int audio_group_filter,
                       int sender_filter, Tags tags);
picojson::value source(const NMOS_IS04_ST& record, int index);
picojson::value flow(const NMOS_IS04_ST& record, int index);
picojson::value sender(const SENDER_IS04_ST& sender);
picojson::value receiver(const RECEIVER_IS04_ST& receiver);
picojson::value receiver_target(const SENDER_IS04_ST& sender);

// json_membership.cpp

bool is_insert_node_senders(int all_senders, int label_index);
bool is_insert_node_receivers(int video_only, int audio_group_mode, int label_index);

// json_node_api.cpp

std::string make_self(const NMOS_IS04_ST& record);
std::string make_sources(const NMOS_IS04_ST& record);
std::string make_sourceid(const NMOS_IS04_ST& record, int index);
std::string make_flows(const NMOS_IS04_ST& record);
std::string make_flowid(const NMOS_IS04_ST& record, int index);
std::string make_devices(const NMOS_IS04_ST& record, int receiver_filter, int audio_group_filter,
                         int sender_filter);
std::string make_deviceid(const NMOS_IS04_ST& record, int index, int receiver_filter,
                          int audio_group_filter, int sender_filter);
std::string make_senders(const NMOS_IS04_ST& record, int all_senders);
std::string make_senderid(const NMOS_IS04_ST& record, int index);
std::string make_receivers(const NMOS_IS04_ST& record, int receiver_filter, int audio_group_filter);
std::string make_receiverid(const NMOS_IS04_ST& record, int index);
std::string make_receiverid_target(const SENDER_IS04_ST& sender);

// json_registration_api.cpp

void update_version(NMOS_IS04_ST& record);
void update_ip_address(NMOS_IS04_ST& record, const std::string& ip, const std::string& port);
std::string make_resource_node(NMOS_IS04_ST& record); // rewrites the versions
std::string make_resource_devices(const NMOS_IS04_ST& record, int receiver_filter,
                                  int audio_group_filter, int sender_filter);
std::string make_resource_deviceid(const NMOS_IS04_ST& record, int index, int receiver_filter,
                                   int audio_group_filter, int sender_filter);
std::string make_resource_sources(const NMOS_IS04_ST& record);
std::string make_resource_sourceid(const NMOS_IS04_ST& record, int index);
std::string make_resource_flows(const NMOS_IS04_ST& record);
std::string make_resource_flowid(const NMOS_IS04_ST& record, int index);
std::string make_resource_senders(const NMOS_IS04_ST& record);
std::string make_resource_senderid(const NMOS_IS04_ST& record, int index);
std::string make_resource_receivers(const NMOS_IS04_ST& record);
std::string make_resource_receiverid(const NMOS_IS04_ST& record, int index);

// json_connection_api.cpp; the listings of ids are not JSON values but text

std::string make_single_senderid_staged(const NMOS_IS05_ST& state, int index);
std::string make_single_senderid_active(const NMOS_IS05_ST& state, int index);
std::string make_single_receiverid_staged(NMOS_IS05_ST& state, int index);
std::string make_single_receiverid_active(NMOS_IS05_ST& state, int index);
std::string make_single_senders(const NMOS_IS04_ST& record, bool all);
std::string make_single_receivers(const NMOS_IS04_ST& record, int restricted, int audio_mode);

// json_parameters.cpp

std::string make_param_json(const st_param_sys& parameters);

} // namespace oracle

#endif
