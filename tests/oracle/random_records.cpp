// SPDX-License-Identifier: Apache-2.0

#include "oracle/random_records.h"

#include <cfloat>
#include <climits>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

using namespace std::string_view_literals;

namespace {

constexpr std::string_view nulls_and_near_misses[] = {
    "null"sv,     "null"sv,  "null"sv,   "null"sv,       "nul"sv,    "null "sv,  " null"sv,
    "NULL"sv,     "Null"sv,  "nulL"sv,   "nulll"sv,      "n"sv,      "null/"sv,  "null\n"sv,
    "\"null\""sv, "n\0ll"sv, "null\0"sv, "null\0null"sv, "nul\0l"sv, "\0null"sv, "null\xff"sv,
};

constexpr std::string_view usual_texts[] = {
    "3b8be755-08ff-452b-b217-c9151eb21193"sv,
    "http://192.0.2.10:3000/x-nmos/node/v1.2/"sv,
    "urn:x-nmos:format:video"sv,
    "urn:x-nmos:transport:rtp.mcast"sv,
    "video/raw"sv,
    "audio/L24"sv,
    "1541234567:25"sv,
    "IP Stream 1 G1 for Audio"sv,
    "239.0.0.1"sv,
    "auto"sv,
    "</script>"sv,
};

constexpr std::string_view ptp_and_near_misses[] = {
    "ptp"sv, "ptp"sv, "ptp"sv,  "ptp\0x"sv, "ptp "sv,
    "PTP"sv, "pt"sv,  "ptpx"sv, " ptp"sv,   "internal"sv,
};

/// Bytes that JSON escapes, those next to them, and the letters of "null".
constexpr std::string_view special_bytes =
    "\"\"\\\\///\\/\b\f\n\r\t\x01\x07\x0b\x0e\x1f\x20\x21\x7e\x7f\x80\xc3\xa9\xff"
    "nul"sv;

/// The text, and a NUL where the field has room for one.
void write(char* field, std::size_t width, std::string_view text)
{
    const std::size_t size = std::min(width, text.size());
    std::memcpy(field, text.data(), size);
    if (size < width)
        field[size] = '\0';
}

char any_text_byte(Random& random)
{
    return static_cast<char>(random.between(1, 255));
}

/// Mostly short, now and then up to the last byte that leaves room for the NUL.
std::size_t text_length(Random& random, std::size_t width)
{
    const std::size_t longest = width - 1;
    const std::size_t usual = std::min<std::size_t>(longest, 40);
    const std::size_t limit = random.one_in(8) ? longest : usual;
    return random.below(static_cast<std::uint32_t>(limit + 1));
}

template <class NextByte>
void write_bytes(char* field, std::size_t width, std::size_t size, NextByte next_byte)
{
    for (std::size_t i = 0; i < size; ++i)
        field[i] = next_byte();
    if (size < width)
        field[size] = '\0';
}

template <std::size_t N>
void randomise(Random& random, char (&field)[N])
{
    randomise_text(random, field, N);
}

template <std::size_t Entries, std::size_t N>
void randomise(Random& random, char (&fields)[Entries][N])
{
    for (auto& field : fields)
        randomise(random, field);
}

void randomise(Random& random, double& number)
{
    number = random_number(random);
}

void randomise(Random& random, std::uint8_t& flag)
{
    constexpr std::uint8_t usual[] = {0, 0, 1, 2, 0x80, 0xFF};
    flag = random.pick(usual);
}

template <class... Fields>
void randomise_each(Random& random, Fields&... fields)
{
    (randomise(random, fields), ...);
}

void randomise(Random& random, SUBSCRIPTION_IS04_ST& entry)
{
    randomise_each(random, entry.peer_id, entry.active);
}

void randomise(Random& random, ENDPOINT_IS04_ST& entry)
{
    randomise_each(random, entry.host, entry.port, entry.protocol);
}

void randomise(Random& random, CLOCK_IS04_ST& clock)
{
    randomise_each(random, clock.name, clock.ref_type, clock.traceable, clock.version, clock.gmid,
                   clock.locked);
    if (!random.one_in(4))
        write(clock.ref_type, sizeof clock.ref_type, random.pick(ptp_and_near_misses));
}

void randomise(Random& random, INTERFACE_IS04_ST& entry)
{
    randomise_each(random, entry.chassis_id, entry.port_id, entry.name);
}

void randomise(Random& random, SOURCE_IS04_ST& source)
{
    randomise_each(random, source.id, source.version, source.label, source.description,
                   source.device_id, source.clock_name, source.format);
}

void randomise(Random& random, FLOW_IS04_ST& flow)
{
    randomise_each(random, flow.id, flow.version, flow.label, flow.description, flow.format,
                   flow.frame_width, flow.frame_height, flow.interlace_mode, flow.colorspace,
                   flow.transfer_characteristic, flow.media_type, flow.bit_depth,
                   flow.grain_rate_denominator, flow.grain_rate_numerator,
                   flow.sample_rate_numerator, flow.source_id, flow.device_id);
}

void randomise(Random& random, CONTROL_IS04_ST& control)
{
    randomise_each(random, control.href, control.type);
}

void randomise(Random& random, DEVICE_IS04_ST& device)
{
    randomise_each(random, device.id, device.version, device.label, device.description, device.type,
                   device.node_id, device.senders, device.receivers);
    device.receiver_ids_count = random_count(random, 24);
    device.sender_ids_count = random_count(random, 6);
    device.controls_count = random_count(random, 8);
    for (auto& control : device.controls)
        randomise(random, control);
}

void randomise_fields(Random& random, SENDER_IS04_ST& sender)
{
    randomise_each(random, sender.id, sender.version, sender.label, sender.description,
                   sender.flow_id, sender.transport, sender.device_id, sender.manifest_href,
                   sender.interface_bindings);
    sender.interface_bindings_count = random_count(random, 10);
    sender.subscription_count = random_count(random, 9);
    for (auto& entry : sender.subscription)
        randomise(random, entry);
}

void randomise(Random& random, RECEIVER_IS04_ST& receiver)
{
    randomise_each(random, receiver.id, receiver.version, receiver.label, receiver.description,
                   receiver.device_id, receiver.transport, receiver.interface_bindings,
                   receiver.format, receiver.media_types);
    receiver.interface_bindings_count = random_count(random, 10);
    receiver.subscription_count = random_count(random, 10);
    receiver.media_types_count = random_count(random, 12);
    for (auto& entry : receiver.subscription)
        randomise(random, entry);
}

void randomise(Random& random, CONNECTION_HALF_IS05_ST& half)
{
    half.leg_count = random_count(random, 2);
    randomise_each(random, half.peer_id, half.master_enable, half.mode, half.requested_time,
                   half.activation_time, half.transport_file_data, half.transport_file_type);
    for (auto& leg : half.transport_params)
        randomise_each(random, leg.source_ip, leg.destination_ip, leg.interface_ip,
                       leg.destination_port, leg.rtp_enabled);
}

void randomise(Random& random, CONNECTION_IS05_ST& connection)
{
    randomise(random, connection.staged);
    randomise(random, connection.active);
}

} // namespace

void randomise_text(Random& random, char* field, std::size_t width)
{
    switch (random.below(10)) {
    case 0:
        write(field, width, ""sv);
        break;
    case 1:
    case 2:
        write(field, width, random.pick(usual_texts));
        break;
    case 3:
    case 4:
        write(field, width, random.pick(nulls_and_near_misses));
        break;
    case 5:
    case 6:
        write_bytes(field, width, text_length(random, width),
                    [&] { return any_text_byte(random); });
        break;
    case 7:
        write_bytes(field, width, text_length(random, width),
                    [&] { return random.pick(special_bytes); });
        break;
    case 8:
        // Up to the field's end, half of them without room for the NUL.
        write_bytes(field, width, random.one_in(2) ? width : width - 1,
                    [&] { return any_text_byte(random); });
        break;
    default:
        random.fill(field, width);
    }
}

double random_number(Random& random)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double not_finite[] = {infinity, -infinity, std::numeric_limits<double>::quiet_NaN(),
                                     -std::numeric_limits<double>::quiet_NaN()};
    constexpr double two_to_53 = 9007199254740992.0;
    constexpr double extremes[] = {
        0.0,
        -0.0,
        two_to_53,
        two_to_53 - 1,
        two_to_53 + 2,
        1 - two_to_53,
        -two_to_53,
        -two_to_53 - 2,
        DBL_MAX,
        -DBL_MAX,
        DBL_MIN,
        DBL_TRUE_MIN,
        -DBL_TRUE_MIN,
        DBL_EPSILON,
        1e15,
        1e16,
        1e17,
        1e21,
        1e22,
        1e23,
        1e300,
        1e-5,
        1e-4,
        1e-300,
        0.1,
        0.5,
        1.5,
        2.5,
        -0.5,
        1.0 / 3,
        two_to_53 / 2 + 0.5,
        1 - DBL_EPSILON / 2,
    };
    constexpr double usual[] = {1920, 1080, 3840, 2160, 10, 48000, 60000, 1001, 1, 5004, 3212};

    if (random.one_in(80))
        return random.pick(not_finite);
    switch (random.below(6)) {
    case 0:
        return random.pick(extremes);
    case 1:
        return random.pick(usual);
    case 2:
        return random.between(0, 65535);
    case 3:
        return random.between(-1000000, 1000000) / 64.0;
    case 4: // integral, of every size up to 2^64
        return static_cast<double>(random.bits() >> random.below(64));
    default: {
        const std::uint64_t bits = random.bits();
        double number = 0;
        std::memcpy(&number, &bits, sizeof number);
        return number;
    }
    }
}

std::int32_t random_count(Random& random, int capacity)
{
    constexpr std::int32_t far_off[] = {INT32_MIN, INT32_MIN + 1, -1000, -1, 1000, INT32_MAX};
    switch (random.below(10)) {
    case 0:
        return 0;
    case 1:
        return random.pick(far_off);
    case 2:
        return random.between(-2, capacity + 2);
    case 3:
        return capacity;
    default:
        return random.between(0, capacity);
    }
}

void randomise(Random& random, NMOS_IS04_ST& record)
{
    random.fill(&record, sizeof record);

    randomise_each(random, record.id, record.version, record.label, record.description, record.href,
                   record.hostname, record.versions);
    record.versions_count = random_count(random, 16);
    record.endpoints_count = random_count(random, 26);
    record.clocks_count = random_count(random, 6);
    record.interfaces_count = random_count(random, 12);
    record.sources_count = random_count(random, 4);
    record.flows_count = random_count(random, 4);
    record.devices_count = random_count(random, 4);
    record.senders_count = random_count(random, 6);
    record.receivers_count = random_count(random, 24);

    const auto each_of = [&random](auto& entries) {
        for (auto& entry : entries)
            randomise(random, entry);
    };
    each_of(record.endpoints);
    each_of(record.clocks);
    each_of(record.interfaces);
    each_of(record.sources);
    each_of(record.flows);
    each_of(record.devices);
    for (auto& sender : record.senders)
        randomise_fields(random, sender);
    each_of(record.receivers);

    // Of every length from 1 to 20 digits.
    record.version_seconds = random.bits() >> random.below(64);
    record.version_nanoseconds = static_cast<std::int32_t>(random.bits()) >> random.below(32);
}

void randomise(Random& random, SENDER_IS04_ST& sender)
{
    random.fill(&sender, sizeof sender);
    randomise_fields(random, sender);
}

void randomise(Random& random, st_param_sys& parameters)
{
    std::int16_t elements[sizeof parameters / sizeof(std::int16_t)];
    for (auto& element : elements) {
        // Addresses and bytes of ports are octets, SDP codes are small, the rest may be anything.
        constexpr int widths[] = {4, 8, 8, 16};
        element = static_cast<std::int16_t>(random.bits() >> (64 - random.pick(widths)));
        if (random.one_in(40))
            element = random.one_in(2) ? INT16_MIN : INT16_MAX;
    }
    std::memcpy(&parameters, elements, sizeof parameters);
}

ConnectionState::ConnectionState(Random& random)
    : receivers_(random.one_in(10) ? random.between(4, 40) : random.between(1, 3)),
      memory_((sizeof(NMOS_IS05_ST) - sizeof(NMOS_IS05_ST::receivers) +
               static_cast<std::size_t>(receivers_) * sizeof(CONNECTION_IS05_ST)) /
              sizeof(std::uint64_t))
{
    random.fill(memory_.data(), memory_.size() * sizeof(std::uint64_t));
    NMOS_IS05_ST& state = record();
    randomise_each(random, state.ptp_grandmaster_id, state.sdp_session_id,
                   state.sdp_session_version);
    for (auto& sender : state.senders)
        randomise(random, sender);
    for (int i = 0; i < receivers_; ++i)
        randomise(random, receiver_of(state, i));
}

CONNECTION_IS05_ST& receiver_of(NMOS_IS05_ST& record, int index)
{
    auto* const start = reinterpret_cast<unsigned char*>(&record);
    constexpr std::size_t first = 82928;
    constexpr std::size_t stride = 13800;
    return *reinterpret_cast<CONNECTION_IS05_ST*>(start + first +
                                                  static_cast<std::size_t>(index) * stride);
}
