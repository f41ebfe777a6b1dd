// SPDX-License-Identifier: Apache-2.0
//
// NMOS_IS04_ST: the whole IS-04 state of the instrument in one flat record.
//
// The host clears it (memset or value initialisation), fills it, and passes a pointer to it to the
// operations of NodeApi and RegistrationApi. It holds no pointers; its layout is part of the binary
// interface and the same on 64-bit, 32-bit ARM and 32-bit x86 (that is what alignas(8) is for).
//
// Every array has a count of its valid leading entries. Entries from the count on are never read.
// Text fields hold NUL-terminated text; it is copied into the bodies as it is (escaped, never
// trimmed or validated). nmos_instrument.h says what a wrong count and a missing NUL mean. Where a
// field's comment says "null means JSON null", the text "null" stands for the JSON value null; no
// other spelling does.
//
// ```cpp
// std::unique_ptr<NMOS_IS04_ST> node(new NMOS_IS04_ST()); // all zero
// node->receivers_count = 5;
// RECEIVER_IS04_ST& audio = node->receivers[4]; // the first audio receiver
// std::strcpy(audio.media_types[0], "audio/L24");
// audio.media_types_count = 1;
// audio.subscription_count = 1;
// std::strcpy(audio.subscription[0].peer_id, "null");
//
// std::string body = NodeApi().make_receiverid(node.get(), 4);
// assert(body.find("\"caps\":{\"media_types\":[\"audio/L24\"]}") != std::string::npos);
// assert(body.find("\"subscription\":{\"active\":false,\"sender_id\":null}") != std::string::npos);
//
// // A count that is too high and a text without NUL: nothing outside of the arrays is read.
// audio.media_types_count = 1000; // there are 12
// std::memset(audio.media_types[11], 'x', sizeof audio.media_types[11]);
// body = NodeApi().make_receiverid(node.get(), 4);
// assert(body.find("\"xxxxxxxxxxxxxxxx\"]}") != std::string::npos);
// ```
//
// The kind of a source, flow, sender or receiver is given by its position in its array, never by
// its `format` or `media_type` text:
//
//   sources    1 is the audio source
//   flows      0 is video, 1 is audio
//   senders    0 to 3 video of IP streams 1 to 4, 4 audio, 5 ancillary data
//   receivers  0 to 3 video of IP streams 1 to 4, 4 to 19 audio (groups G1 to G4 of stream 1, then
//              of stream 2, ...), 20 to 23 ancillary data of streams 1 to 4
//
// codes.h has names for them.
//
// A resource whose members change gets a later `version` (IS-04 v1.2), or readers miss the change:
//
//   node, devices,   RegistrationApi::update_version stamps all of them with the time in
//   receivers        `version_seconds` and `version_nanoseconds`; make_resource_node calls it. A
//                    host that changes one of them alone may write its version itself
//   sources, flows,  the host writes it, see set_version in record_text.h
//   senders
//
// A subscription is a member: a receiver that is connected gets a version. Times are TAI. A host of
// the host library calls tai_now() (nmos_instrument_host/tai.h). Any other adds 37 s to UTC, which
// holds since 2017-01-01 until a further leap second is announced, or reads CLOCK_TAI where the
// machine's clock service sets the offset: without one that clock shows UTC.

#ifndef NMOS_INSTRUMENT_NODE_STATE_H
#define NMOS_INSTRUMENT_NODE_STATE_H

#include <stdint.h>
#ifdef __cplusplus
#include <cstdint>
#else
#include <stdalign.h>
#endif

#ifndef __cplusplus
// In C as in C++, the records are named without the word struct.
typedef struct SUBSCRIPTION_IS04_ST SUBSCRIPTION_IS04_ST;
typedef struct ENDPOINT_IS04_ST ENDPOINT_IS04_ST;
typedef struct CLOCK_IS04_ST CLOCK_IS04_ST;
typedef struct INTERFACE_IS04_ST INTERFACE_IS04_ST;
typedef struct SOURCE_IS04_ST SOURCE_IS04_ST;
typedef struct FLOW_IS04_ST FLOW_IS04_ST;
typedef struct CONTROL_IS04_ST CONTROL_IS04_ST;
typedef struct DEVICE_IS04_ST DEVICE_IS04_ST;
typedef struct SENDER_IS04_ST SENDER_IS04_ST;
typedef struct RECEIVER_IS04_ST RECEIVER_IS04_ST;
typedef struct NMOS_IS04_ST NMOS_IS04_ST;
#endif

/// One subscription entry of a sender or a receiver. 49 bytes, so entries after the first are not
/// word-aligned.
struct SUBSCRIPTION_IS04_ST
{
    /// UUID of the other side: in a receiver's entry the sender ("sender_id"), in a sender's entry
    /// the receiver ("receiver_id"). "null" means JSON null.
    char peer_id[48];
    uint8_t active; ///< flag, "active"
};

/// One endpoint of the Node API (IS-04 v1.2, node.json, "api"."endpoints"). Only entry 0 reaches
/// the bodies, see NodeApi::make_self.
struct ENDPOINT_IS04_ST
{
    char host[16];          ///< "host": IPv4 address, dotted quad
    alignas(8) double port; ///< "port": TCP port, an integral value from 1 to 65535; finite
    char protocol[16];      ///< "protocol": "http" or "https"
};

/// One clock of the node (IS-04 v1.2, clock_internal.json and clock_ptp.json).
struct CLOCK_IS04_ST
{
    char name[32];     ///< "name": "clk0", "clk1", ...
    char ref_type[16]; ///< "ref_type": exactly "ptp" marks a PTP clock, else "internal"
    uint8_t traceable; ///< flag, "traceable"; PTP clocks only
    char version[16];  ///< "version": "IEEE1588-2008"; PTP clocks only
    char gmid[32];     ///< "gmid": grandmaster, lower case "00-00-...-00"; PTP clocks only
    uint8_t locked;    ///< flag, "locked"; PTP clocks only
};

/// One network interface of the node (IS-04 v1.2, node.json, "interfaces").
struct INTERFACE_IS04_ST
{
    char chassis_id[48]; ///< "chassis_id": MAC address or other identity; "null" means JSON null
    char port_id[48];    ///< "port_id": MAC address "00-00-5e-00-53-01"
    char name[48];       ///< "name", the text that the `interface_bindings` use
};

/// One source (IS-04 v1.2, source.json).
struct SOURCE_IS04_ST
{
    char id[48];           ///< "id": UUID
    char version[48];      ///< "version": "<seconds>:<nanoseconds>", TAI; written by the host only
    char label[64];        ///< "label"
    char description[144]; ///< "description"
    char device_id[96];    ///< "device_id": UUID of the owning device
    char clock_name[20];   ///< "clock_name": the `name` of the clock that times the source
    char format[2080];     ///< "format": URN, as "urn:x-nmos:format:video"
};

/// One flow (IS-04 v1.2, flow_video_raw.json, flow_audio_raw.json, flow_sdianc_data.json). Fields
/// that the kind of the entry does not use are ignored; doubles that are used must be finite.
struct FLOW_IS04_ST
{
    char id[48];                    ///< "id": UUID
    char version[48];               ///< "version": "<seconds>:<nanoseconds>", TAI
    char label[64];                 ///< "label"
    char description[128];          ///< "description"
    char format[32];                ///< "format": URN
    alignas(8) double frame_width;  ///< video: "frame_width" and each component's "width", pixels
    alignas(8) double frame_height; ///< video: "frame_height" and each component's "height", lines
    char interlace_mode[32];        ///< video: "interlace_mode", as "progressive"
    char colorspace[32];            ///< video: "colorspace", as "BT709"
    char transfer_characteristic[32]; ///< video: "transfer_characteristic", as "SDR"
    char media_type[32];              ///< "media_type", as "video/raw", "audio/L24"
    alignas(8) double bit_depth;      ///< video: each component's "bit_depth"; audio: "bit_depth"
    alignas(8) double grain_rate_denominator; ///< video and audio: "grain_rate"."denominator"
    alignas(8) double grain_rate_numerator;   ///< video and audio: "grain_rate"."numerator", 1/s
    alignas(8) double sample_rate_numerator;  ///< audio: "sample_rate"."numerator", samples/s
    char source_id[48];                       ///< "source_id": UUID of the flow's source
    char device_id[96];                       ///< "device_id": UUID of the owning device
};

/// One control endpoint of a device (IS-04 v1.2, device.json, "controls").
struct CONTROL_IS04_ST
{
    char href[64]; ///< "href": URL of the control endpoint
    char type[64]; ///< "type": URN, as "urn:x-nmos:control:sr-ctrl/v1.0"
};

/// One device (IS-04 v1.2, device.json). Which of its ids are listed depends on the selectors that
/// the operations take, see NodeApi::make_devices.
struct DEVICE_IS04_ST
{
    char id[48];                 ///< "id": UUID
    char version[48];            ///< "version"; RegistrationApi::update_version restamps it
    char label[64];              ///< "label"
    char description[128];       ///< "description"
    int32_t receiver_ids_count;  ///< valid entries of `receivers`, 0 to 24
    int32_t sender_ids_count;    ///< valid entries of `senders`, 0 to 6
    int32_t controls_count;      ///< valid entries of `controls`, 0 to 8
    char type[32];               ///< "type": URN, as "urn:x-nmos:device:generic"
    char node_id[48];            ///< "node_id": UUID of the owning node
    char senders[6][48];         ///< "senders": slot j is the id of sender j
    char receivers[24][48];      ///< "receivers": slot j is the id of receiver j
    CONTROL_IS04_ST controls[8]; ///< "controls"
};

/// One sender (IS-04 v1.2, sender.json). NodeApi::make_receiverid_target takes a single one.
struct SENDER_IS04_ST
{
    char id[48];                         ///< "id": UUID; "null" means JSON null in the target body
    char version[48];                    ///< "version": written by the host only
    char label[64];                      ///< "label"
    char description[128];               ///< "description"
    int32_t interface_bindings_count;    ///< valid entries of `interface_bindings`, 0 to 10
    int32_t subscription_count;          ///< valid entries of `subscription`, 0 to 9
    uint8_t reserved_before_flow_id[16]; ///< not read; keeps the layout
    /// "flow_id": UUID of the flow sent; "null" means JSON null in the target body only, in a
    /// sender body it is a string like any other
    char flow_id[48];
    char transport[32];      ///< "transport": URN, as "urn:x-nmos:transport:rtp.mcast"
    char device_id[48];      ///< "device_id": UUID; "null" means JSON null in the target body
    char manifest_href[128]; ///< "manifest_href": URL of the sender's SDP file
    char interface_bindings[10]
                           [64]; ///< "interface_bindings": `name`s of node interfaces, in leg order
    /// "subscription": entry 0, if there is one. Intentional: later entries are never shown,
    /// since a sender has one subscription in IS-04 v1.2.
    SUBSCRIPTION_IS04_ST subscription[9];
    uint8_t reserved_at_end[51]; ///< not read; keeps the layout
};

/// One receiver (IS-04 v1.2, receiver.json).
struct RECEIVER_IS04_ST
{
    char id[48];                      ///< "id": UUID
    char version[48];                 ///< "version"; RegistrationApi::update_version restamps it
    char label[64];                   ///< "label"
    char description[128];            ///< "description"
    int32_t interface_bindings_count; ///< valid entries of `interface_bindings`, 0 to 10
    int32_t subscription_count;       ///< valid entries of `subscription`, 0 to 10
    char device_id[48];               ///< "device_id": UUID of the owning device
    char transport[32];               ///< "transport": URN
    char interface_bindings[10]
                           [64]; ///< "interface_bindings": `name`s of node interfaces, in leg order
    /// "subscription": entry 0, if there is one; as for a sender, later entries are never shown.
    SUBSCRIPTION_IS04_ST subscription[10];
    int32_t media_types_count; ///< valid entries of `media_types`, 0 to 12
    char format[32];           ///< "format": URN
    char media_types[12][16];  ///< "caps"."media_types": media types that it accepts
};

/// The whole IS-04 state of the node. 79,864 bytes, aligned to 8.
///
/// Clear it whole before filling it. Only two operations write into it: they belong to
/// RegistrationApi and say which fields.
struct NMOS_IS04_ST
{
    char id[48];           ///< "id" of the node: UUID
    char version[48];      ///< "version" of the node; RegistrationApi::update_version restamps it
    char label[64];        ///< "label" of the node
    char description[128]; ///< "description" of the node
    char href[64];         ///< "href": base URL of the Node API, "http://192.0.2.10:3000/"
    char hostname[32];     ///< "hostname" of the node

    int32_t versions_count;         ///< valid entries of `versions`, 0 to 16
    int32_t endpoints_count;        ///< valid entries of `endpoints`, 0 to 26
    char versions[16][16];          ///< "api"."versions": "v1.2"
    ENDPOINT_IS04_ST endpoints[26]; ///< "api"."endpoints": only entry 0 is shown

    int32_t reserved_before_clocks; ///< not read; keeps the layout
    int32_t clocks_count;           ///< valid entries of `clocks`, 0 to 6
    CLOCK_IS04_ST clocks[6];        ///< "clocks"

    int32_t interfaces_count;         ///< valid entries of `interfaces`, 0 to 12
    INTERFACE_IS04_ST interfaces[12]; ///< "interfaces"

    int32_t sources_count;     ///< valid entries of `sources`, 0 to 4
    SOURCE_IS04_ST sources[4]; ///< entry 1 is the audio source

    int32_t reserved_before_flows; ///< not read; keeps the layout
    int32_t flows_count;           ///< valid entries of `flows`, 0 to 4
    FLOW_IS04_ST flows[4];         ///< entry 0 is the video flow, entry 1 the audio flow

    int32_t devices_count; ///< valid entries of `devices`, 0 to 4
    DEVICE_IS04_ST devices[4];

    int32_t senders_count; ///< valid entries of `senders`, 0 to 6
    SENDER_IS04_ST senders[6];

    int32_t receivers_count; ///< valid entries of `receivers`, 0 to 24
    RECEIVER_IS04_ST receivers[24];

    /// The instant that RegistrationApi::update_version writes as version text. The host keeps it
    /// at the current TAI time; the library reads no clock.
    alignas(8) uint64_t version_seconds; ///< seconds since 1970-01-01 00:00:00 TAI
    int32_t version_nanoseconds;         ///< 0 to 999999999
};

#endif
