// SPDX-License-Identifier: Apache-2.0
//
// Every function of the C interface against the operation of C++ that it stands for, on random
// records: the same texts, errors in place of exceptions, and snprintf's rule.

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "nmos_instrument/nmos_instrument.h"
#include "nmos_instrument_c.h"
#include "oracle/random.h"
#include "oracle/random_records.h"
#include "oracle/random_sdp_files.h"
#include "oracle/run.h"

namespace {

/// What both interfaces are asked about. Every operation gets the same.
struct Input
{
    NMOS_IS04_ST node;
    NMOS_IS05_ST& connections;
    st_param_sys settings;
    int index;
    int connection_index; ///< of a receiver of `connections`, or a negative one
    int first;
    int second;
    int third;
    std::string text;
};

/// What came of a call: a text, or an error of the C interface.
struct Result
{
    std::size_t error = 0;
    std::string text;

    bool operator==(const Result&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Result& result)
{
    return result.error != 0 ? out << nmos_error_text(result.error) : out << visible(result.text);
}

using CallInC = std::function<std::size_t(Input&, char*, std::size_t)>;
using CallInCpp = std::function<std::string(Input&)>;

struct Pair
{
    const char* name;
    CallInC in_c;
    CallInCpp in_cpp;
    std::size_t out_of_range = NMOS_ERROR_INDEX; ///< what std::out_of_range is in C
};

Result result_in_cpp(const Pair& pair, Input input)
{
    try {
        return {0, pair.in_cpp(input)};
    } catch (const std::overflow_error&) {
        return {NMOS_ERROR_NOT_FINITE, {}};
    } catch (const std::out_of_range&) {
        return {pair.out_of_range, {}};
    }
}

/// Asked with a buffer of `size` bytes. Bytes behind it must stay as they are.
Result result_in_c(const Pair& pair, Input input, std::size_t size)
{
    constexpr std::size_t guards = 8;
    constexpr char untouched = 0x55;
    std::string memory(size + guards, untouched);
    const std::size_t length = pair.in_c(input, memory.data(), size);
    EXPECT_EQ(memory.substr(size), std::string(guards, untouched)) << pair.name;
    if (length >= NMOS_ERROR_FIRST) {
        EXPECT_TRUE(size == 0 || memory[0] == '\0') << pair.name;
        return {length, {}};
    }
    const std::size_t written = size == 0 ? 0 : std::min(length, size - 1);
    EXPECT_TRUE(size == 0 || memory[written] == '\0') << pair.name;
    // What was not written counts as written right, so that one comparison does for every size.
    return {0, memory.substr(0, written) + std::string(length - written, '?')};
}

Result cut(Result result, std::size_t size)
{
    const std::size_t kept = size == 0 ? 0 : std::min(result.text.size(), size - 1);
    std::fill(result.text.begin() + static_cast<std::ptrdiff_t>(kept), result.text.end(), '?');
    return result;
}

std::string joined(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines)
        text += line + '\n';
    return text;
}

// clang-format takes the # for a directive.
// clang-format off
#define PAIR(function, api, operation, in_c, in_cpp)                                               \
    {                                                                                              \
        #function,                                                                                 \
        [](Input& in, char* buffer, std::size_t size) {                                            \
            static_cast<void>(in);                                                                 \
            return function in_c;                                                                  \
        },                                                                                         \
        [](Input& in) {                                                                            \
            static_cast<void>(in);                                                                 \
            return api().operation in_cpp;                                                         \
        }                                                                                          \
    }
// clang-format on
#define FIXED(function, api, operation) PAIR(function, api, operation, (buffer, size), (nullptr))
#define OF_NODE(function, api, operation)                                                          \
    PAIR(function, api, operation, (&in.node, buffer, size), (&in.node))
#define OF_NODE_ENTRY(function, api, operation)                                                    \
    PAIR(function, api, operation, (&in.node, in.index, buffer, size), (&in.node, in.index))

const std::vector<Pair> pairs = {
    PAIR(nmos_node_version, NodeApi, make_version, (buffer, size), ()),
    FIXED(nmos_node_base, NodeApi, make_base),
    OF_NODE(nmos_node_self, NodeApi, make_self),
    OF_NODE(nmos_node_sources, NodeApi, make_sources),
    OF_NODE_ENTRY(nmos_node_sourceid, NodeApi, make_sourceid),
    OF_NODE(nmos_node_flows, NodeApi, make_flows),
    OF_NODE_ENTRY(nmos_node_flowid, NodeApi, make_flowid),
    PAIR(nmos_node_devices, NodeApi, make_devices,
         (&in.node, in.first, in.second, in.third, buffer, size),
         (&in.node, in.first, in.second, in.third)),
    PAIR(nmos_node_deviceid, NodeApi, make_deviceid,
         (&in.node, in.index, in.first, in.second, in.third, buffer, size),
         (&in.node, in.index, in.first, in.second, in.third)),
    PAIR(nmos_node_senders, NodeApi, make_senders, (&in.node, in.third, buffer, size),
         (&in.node, in.third)),
    OF_NODE_ENTRY(nmos_node_senderid, NodeApi, make_senderid),
    PAIR(nmos_node_receivers, NodeApi, make_receivers,
         (&in.node, in.first, in.second, buffer, size), (&in.node, in.first, in.second)),
    OF_NODE_ENTRY(nmos_node_receiverid, NodeApi, make_receiverid),
    PAIR(nmos_node_receiverid_target, NodeApi, make_receiverid_target,
         (&in.node.senders[1], buffer, size), (&in.node.senders[1])),

    PAIR(nmos_registration_version, RegistrationApi, make_version, (buffer, size), ()),
    FIXED(nmos_registration_base, RegistrationApi, make_base),
    FIXED(nmos_registration_health, RegistrationApi, make_health),
    OF_NODE(nmos_registration_resource_node, RegistrationApi, make_resource_node),
    PAIR(nmos_registration_resource_devices, RegistrationApi, make_resource_devices,
         (&in.node, in.first, in.second, in.third, buffer, size),
         (&in.node, in.first, in.second, in.third)),
    PAIR(nmos_registration_resource_deviceid, RegistrationApi, make_resource_deviceid,
         (&in.node, in.index, in.first, in.second, in.third, buffer, size),
         (&in.node, in.index, in.first, in.second, in.third)),
    OF_NODE(nmos_registration_resource_sources, RegistrationApi, make_resource_sources),
    OF_NODE_ENTRY(nmos_registration_resource_sourceid, RegistrationApi, make_resource_sourceid),
    OF_NODE(nmos_registration_resource_flows, RegistrationApi, make_resource_flows),
    OF_NODE_ENTRY(nmos_registration_resource_flowid, RegistrationApi, make_resource_flowid),
    OF_NODE(nmos_registration_resource_senders, RegistrationApi, make_resource_senders),
    OF_NODE_ENTRY(nmos_registration_resource_senderid, RegistrationApi, make_resource_senderid),
    OF_NODE(nmos_registration_resource_receivers, RegistrationApi, make_resource_receivers),
    OF_NODE_ENTRY(nmos_registration_resource_receiverid, RegistrationApi, make_resource_receiverid),

    PAIR(nmos_connection_version, ConnectionApi, make_version, (buffer, size), ()),
    FIXED(nmos_connection_base, ConnectionApi, make_base),
    FIXED(nmos_connection_bulk, ConnectionApi, make_bulk),
    FIXED(nmos_connection_bulk_senders, ConnectionApi, make_bulk_senders),
    FIXED(nmos_connection_bulk_receivers, ConnectionApi, make_bulk_receivers),
    FIXED(nmos_connection_single, ConnectionApi, make_single),
    FIXED(nmos_connection_single_senderid, ConnectionApi, make_single_senderid),
    FIXED(nmos_connection_single_receiverid, ConnectionApi, make_single_receiverid),
    PAIR(nmos_connection_single_senders, ConnectionApi, make_single_senders,
         (&in.node, in.third, buffer, size), (&in.node, in.third != 0)),
    PAIR(nmos_connection_single_receivers, ConnectionApi, make_single_receivers,
         (&in.node, in.first, in.second, buffer, size), (&in.node, in.first, in.second)),
    {"nmos_connection_single_senderid_constraints",
     [](Input& in, char* buffer, std::size_t size) {
         return nmos_connection_single_senderid_constraints(in.text.c_str(), "b", buffer, size);
     },
     [](Input& in) {
         std::string first = in.text.substr(0, in.text.find('\0')); // as C reads it
         std::string second = "b";
         return ConnectionApi().make_single_senderid_constraints(nullptr, 0, &first, &second);
     }},
    {"nmos_connection_single_receiverid_constraints",
     [](Input& in, char* buffer, std::size_t size) {
         return nmos_connection_single_receiverid_constraints("a", in.text.c_str(), buffer, size);
     },
     [](Input& in) {
         std::string first = "a";
         std::string second = in.text.substr(0, in.text.find('\0')); // as C reads it
         return ConnectionApi().make_single_receiverid_constraints(nullptr, 0, &first, &second);
     }},
    PAIR(nmos_connection_single_receiverid_staged, ConnectionApi, make_single_receiverid_staged,
         (&in.connections, in.connection_index, buffer, size),
         (&in.connections, in.connection_index)),
    PAIR(nmos_connection_single_receiverid_active, ConnectionApi, make_single_receiverid_active,
         (&in.connections, in.connection_index, buffer, size),
         (&in.connections, in.connection_index)),
    PAIR(nmos_connection_single_senderid_staged, ConnectionApi, make_single_senderid_staged,
         (&in.connections, in.index, buffer, size), (&in.connections, in.index)),
    PAIR(nmos_connection_single_senderid_active, ConnectionApi, make_single_senderid_active,
         (&in.connections, in.index, buffer, size), (&in.connections, in.index)),
    PAIR(nmos_connection_single_senderid_sdp, ConnectionApi, make_single_senderid_sdp,
         (&in.connections, in.index, &in.settings, buffer, size),
         (&in.connections, in.index, &in.settings)),
    {"nmos_connection_convert_crlf",
     [](Input& in, char* buffer, std::size_t size) {
         return nmos_connection_convert_crlf(in.text.data(), in.text.size(), "<>", buffer, size);
     },
     [](Input& in) { return ConnectionApi::convertCRLF(in.text, "<>"); }},
    {"nmos_connection_fullpath_from_request",
     [](Input& in, char* buffer, std::size_t size) {
         return nmos_connection_fullpath_from_request(in.text.data(), in.text.size(), buffer, size);
     },
     [](Input& in) { return ConnectionApi::make_fullpath_from_request(in.text); },
     NMOS_ERROR_INCOMPLETE},
    {"nmos_connection_split_string",
     [](Input& in, char* buffer, std::size_t size) {
         int count = -1;
         return nmos_connection_split_string(in.text.data(), in.text.size(), "=", 5, &count, buffer,
                                             size);
     },
     [](Input& in) {
         std::string parts[5];
         int count = -1;
         ConnectionApi::split_string(in.text, "=", parts, 5, &count);
         std::string text = parts[0];
         for (int i = 1; i < std::min(count + 1, 5); ++i)
             text += std::string(1, '\0') + parts[i];
         return text;
     }},

    {"nmos_replace_all",
     [](Input& in, char* buffer, std::size_t size) {
         return nmos_replace_all(in.text.data(), in.text.size(), "a", "<->", buffer, size);
     },
     [](Input& in) {
         std::string subject = in.text;
         return Nmos().replaceAll(subject, "a", "<->");
     }},
    PAIR(nmos_xnmos, Nmos, make_xnmos, (buffer, size), ()),
    PAIR(nmos_api, Nmos, make_api, (buffer, size), ()),
    PAIR(nmos_param_json, Nmos, make_param_json, (&in.settings, buffer, size), (&in.settings, 0)),

    {"nmos_check_node",
     [](Input& in, char* buffer, std::size_t size) {
         return nmos_check_node(&in.node, buffer, size);
     },
     [](Input& in) { return joined(nmos_instrument::check_record(in.node)); }},
    {"nmos_check_settings",
     [](Input& in, char* buffer, std::size_t size) {
         return nmos_check_settings(&in.settings, buffer, size);
     },
     [](Input& in) { return joined(nmos_instrument::check_record(in.settings)); }},
};

#undef OF_NODE_ENTRY
#undef OF_NODE
#undef FIXED
#undef PAIR

/// Mostly one that senders and receivers have, now and then a hostile one.
int hostile_index(Random& random)
{
    static const int hostile[] = {-1, 24, 25, 1000, -2147483647 - 1, 2147483647};
    return random.one_in(4) ? random.pick(hostile) : random.between(0, 23);
}

Input random_input(Random& random, ConnectionState& connections)
{
    Input input{{}, connections.record(), {}, 0, 0, 0, 0, 0, {}};
    randomise(random, input.node);
    randomise(random, input.settings);
    input.index = hostile_index(random);
    input.connection_index =
        random.one_in(8) || connections.receivers() == 0
            ? -1
            : static_cast<int>(random.below(static_cast<std::uint32_t>(connections.receivers())));
    input.first = random.between(-1, 1);
    input.second = random.between(-1, 3);
    input.third = random.between(-1, 1);
    input.text = edited_sdp_file(random);
    return input;
}

TEST(CInterface, AnswersAsTheCppInterface)
{
    for_each_record(1, [](Random& random) {
        ConnectionState connections(random);
        const Input input = random_input(random, connections);
        for (const Pair& pair : pairs) {
            const Result expected = result_in_cpp(pair, input);
            const std::size_t length = expected.text.size();
            for (const std::size_t size :
                 {std::size_t{0}, std::size_t{1}, length, length + 1, length + 100})
                ASSERT_EQ(result_in_c(pair, input, size), cut(expected, size))
                    << pair.name << " with a buffer of " << size << " bytes";
        }
    });
}

/// The checks read all receivers that the record declares, which random_input's may not hold.
TEST(CInterface, ChecksConnectionsAsTheCppInterface)
{
    const auto expect_lines = [](const std::string& expected, auto check) {
        std::string found(expected.size() + 1, '?');
        EXPECT_EQ(check(found.data(), found.size()), expected.size());
        EXPECT_EQ(found, expected + '\0');
    };
    for_each_record(1, [&](Random& random) {
        auto connections = std::make_unique<NMOS_IS05_ST>();
        random.fill(connections.get(), sizeof *connections);
        auto node = std::make_unique<NMOS_IS04_ST>();
        randomise(random, *node);
        st_param_sys settings;
        randomise(random, settings);
        const int selector = random.between(-1, 3);
        expect_lines(joined(nmos_instrument::check_record(*connections)),
                     [&](char* buffer, std::size_t size) {
                         return nmos_check_connections(connections.get(), buffer, size);
                     });
        expect_lines(joined(nmos_instrument::check_records(*node, *connections, settings,
                                                           {0, selector, 1 - selector})),
                     [&](char* buffer, std::size_t size) {
                         return nmos_check_records(node.get(), connections.get(), &settings, 0,
                                                   selector, 1 - selector, buffer, size);
                     });
    });
}

/// Operations that write: what they leave in the record is the same.
TEST(CInterface, WritesAsTheCppInterface)
{
    for_each_record(2, [](Random& random) {
        auto in_c = std::make_unique<NMOS_IS04_ST>();
        randomise(random, *in_c);
        auto in_cpp = std::make_unique<NMOS_IS04_ST>(*in_c);
        const auto same = [&] { return std::memcmp(in_c.get(), in_cpp.get(), sizeof *in_c) == 0; };

        in_c->version_seconds = in_cpp->version_seconds += 1;
        EXPECT_EQ(nmos_registration_update_version(in_c.get()), 0U);
        RegistrationApi().update_version(in_cpp.get());
        EXPECT_TRUE(same());

        EXPECT_EQ(nmos_registration_update_ip_address(in_c.get(), "10.0.0.5", "80.5"), 0U);
        RegistrationApi().update_ipAddress(in_cpp.get(), "10.0.0.5", "80.5");
        EXPECT_TRUE(same());

        in_c->version_seconds = in_cpp->version_seconds += 1;
        nmos_registration_resource_node(in_c.get(), nullptr, 0);
        try {
            RegistrationApi().make_resource_node(in_cpp.get());
        } catch (const std::overflow_error&) { // the versions are written all the same
        }
        EXPECT_TRUE(same());
    });
}

/// The fields of both records side by side.
void expect_same(const nmos_sdp_found& in_c, const sdp_str& in_cpp)
{
    EXPECT_EQ(in_c.found_flags, in_cpp.found_flags);
    for (int leg = 0; leg < 2; ++leg) {
        EXPECT_STREQ(in_c.source_ip[leg], in_cpp.source_ip[leg].c_str());
        EXPECT_STREQ(in_c.multicast_ip[leg], in_cpp.multicast_ip[leg].c_str());
        EXPECT_STREQ(in_c.destination_port[leg], in_cpp.destination_port[leg].c_str());
    }
    EXPECT_EQ(in_c.rtp_payload_type, std::atoi(in_cpp.rtp_payload_type.c_str()));
    EXPECT_STREQ(in_c.sampling, in_cpp.sampling.c_str());
    EXPECT_STREQ(in_c.depth, in_cpp.depth.c_str());
    EXPECT_STREQ(in_c.width, in_cpp.width.c_str());
    EXPECT_STREQ(in_c.height, in_cpp.height.c_str());
    EXPECT_STREQ(in_c.exactframerate, in_cpp.exactframerate.c_str());
    EXPECT_EQ(in_c.size_interlaced, in_cpp.size_interlaced);
    EXPECT_EQ(in_c.rate_interlaced, in_cpp.rate_interlaced);
    EXPECT_STREQ(in_c.colorimetry, in_cpp.colorimetry.c_str());
    EXPECT_STREQ(in_c.packing_mode, in_cpp.packing_mode.c_str());
    EXPECT_STREQ(in_c.tcs, in_cpp.tcs.c_str());
}

TEST(CInterface, ReadsSdpFilesAsTheCppInterface)
{
    unsigned accepted = 0;
    unsigned too_long = 0;
    unsigned incomplete = 0;
    for_each_record(20, [&](Random& random) {
        const std::string sdp = random.one_in(4) ? sdp_token_heap(random) : edited_sdp_file(random);
        const bool capable = random.one_in(2);
        const bool allowed = random.one_in(2);
        const auto format = static_cast<short>(random.between(-1, 13));

        std::string expected_errors;
        sdp_str expected = sdp_str();
        int status = 400;
        bool threw = false;
        try {
            status = ConnectionApi().analyze_sdp_file(sdp, capable, format, allowed,
                                                      &expected_errors, &expected);
        } catch (const std::out_of_range&) {
            threw = true;
        }

        nmos_sdp_found found;
        std::memset(&found, 0x55, sizeof found);
        std::string errors(expected_errors.size() + 1, '?');
        const std::size_t result = nmos_connection_analyze_sdp_file(
            sdp.data(), sdp.size(), capable, format, allowed, &found, errors.data(), errors.size());
        EXPECT_EQ(errors, expected_errors + '\0');
        EXPECT_EQ(found.status, status);
        accepted += result == 0;
        too_long += result == NMOS_ERROR_TOO_LONG;
        incomplete += result == NMOS_ERROR_INCOMPLETE;
        EXPECT_EQ(result == NMOS_ERROR_INCOMPLETE, threw);
        if (result == NMOS_ERROR_TOO_LONG)
            return;
        if (!threw) {
            EXPECT_EQ(result, expected_errors.size());
            expect_same(found, expected);
        }
    });
    std::cout << accepted << " files accepted, " << incomplete << " incomplete, " << too_long
              << " with a text that is too long" << std::endl;
}

TEST(CInterface, AdvertisesAsTheCppInterface)
{
    nmos_advertisement in_c;
    ASSERT_EQ(nmos_advertisement_init(&in_c), 0U);
    EXPECT_EQ(in_c.port, 3000);
    EXPECT_EQ(in_c.protocol, 0);
    in_c.ver_slf = 1;
    in_c.ver_src = 2;
    in_c.ver_flw = 253;
    in_c.ver_dvc = 254;
    in_c.ver_snd = 300;
    in_c.ver_rcv = -7;
    EXPECT_EQ(nmos_advertisement_update_txt_port_number(&in_c, 8080), 0U);
    EXPECT_EQ(nmos_advertisement_update_txt_protocol(&in_c, 1), 0U);
    for (auto* const update :
         {nmos_advertisement_update_txt_ver_slf, nmos_advertisement_update_txt_ver_src,
          nmos_advertisement_update_txt_ver_flw, nmos_advertisement_update_txt_ver_dvc,
          nmos_advertisement_update_txt_ver_snd, nmos_advertisement_update_txt_ver_rcv}) {
        EXPECT_EQ(update(&in_c), 0U);
        EXPECT_EQ(update(nullptr), NMOS_ERROR_NULL_POINTER);
    }
    EXPECT_EQ(in_c.port, 8080);
    EXPECT_EQ(in_c.protocol, 1);
    EXPECT_EQ(in_c.ver_slf, 2);
    EXPECT_EQ(in_c.ver_src, 3);
    EXPECT_EQ(in_c.ver_flw, 254);
    EXPECT_EQ(in_c.ver_dvc, 0);
    EXPECT_EQ(in_c.ver_snd, 301 % 255);

    Nmos in_cpp;
    in_cpp.port = 8080;
    in_cpp.protocol = 1;
    in_cpp.ver_slf = 2;
    in_cpp.ver_src = 3;
    in_cpp.ver_flw = 254;
    in_cpp.ver_dvc = 0;
    in_cpp.ver_snd = 46;
    in_cpp.ver_rcv = -7;
    in_cpp.update_txt_ver_rcv();
    EXPECT_EQ(in_c.ver_rcv, in_cpp.ver_rcv);

    char text[2000];
    const std::string expected = in_cpp.make_node_service_text(1);
    EXPECT_EQ(nmos_advertisement_node_service_text(&in_c, 1, text, sizeof text), expected.size());
    EXPECT_EQ(text, expected);
    EXPECT_EQ(nmos_advertisement_node_service_text(&in_c, 0, text, sizeof text), 0U);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(nmos_advertisement_node_service(nullptr, 0), NMOS_ERROR_NULL_POINTER);
}

TEST(CInterface, MembershipAsInCpp)
{
    for (int label = -1; label < 46; ++label) {
        for (int first = -1; first < 2; ++first) {
            EXPECT_EQ(nmos_is_insert_node_senders(first, label),
                      Nmos().is_insert_node_senders(first, label));
            for (int second = -1; second < 4; ++second)
                EXPECT_EQ(nmos_is_insert_node_receivers(first, second, label),
                          Nmos().is_insert_node_receivers(first, second, label));
        }
    }
}

} // namespace
