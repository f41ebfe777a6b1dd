// SPDX-License-Identifier: Apache-2.0
//
// Everything that a user can set. The defaults describe an instrument that runs as it is; a
// configuration file changes only the keys that it contains.
//
// A new setting is a member here and a line in configuration_keys.h; reading, refusing, printing
// and explaining it follow from that line.

#ifndef NMOS_INSTRUMENT_HOST_CONFIGURATION_CONFIGURATION_H
#define NMOS_INSTRUMENT_HOST_CONFIGURATION_CONFIGURATION_H

#include <array>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "configuration/resource_counts.h"
#include "configuration/video_format.h"

namespace nmos_instrument::host {

struct NodeSettings
{
    std::string label = "QX3100/QX3300";
    std::string description = "IP video, audio and ancillary data measuring instrument";
    std::string hostname = "nmos-instrument";

    bool operator==(const NodeSettings&) const = default;
};

/// Where the instrument is reached. What the names of interfaces mean, the machine decides.
struct ServerSettings
{
    std::optional<std::string> listen;  ///< an address, an interface or "any"; null: `address`
    std::optional<std::string> address; ///< IPv4 or an interface; null: that of `listen`
    int port = 3000;
    std::optional<int> advertised_port; ///< null: `port`

    bool operator==(const ServerSettings&) const = default;
};

/// How the node registers, see docs/behaviour-network.md.
struct RegistrationSettings
{
    bool enabled = true;
    std::vector<std::string> registries; ///< as registry_url() gives them; empty: those found
    std::optional<std::string> ca_file;  ///< for https, instead of the system's certificates
    std::optional<std::string> dns_domain;
    bool development_registries = false;

    bool operator==(const RegistrationSettings&) const = default;
};

enum class Advertise
{
    always,
    peer_to_peer, ///< while there is no registry
    never
};

struct AdvertisementSettings
{
    std::optional<std::string> service_file;
    Advertise when = Advertise::peer_to_peer;

    bool operator==(const AdvertisementSettings&) const = default;
};

struct MediaInterface
{
    std::string name;
    std::string mac; ///< lower case, "-" between the octets
    std::optional<std::string> chassis_id;
    std::string address;

    bool operator==(const MediaInterface&) const = default;
};

enum class ClockReference
{
    ptp,
    internal
};

struct ClockSettings
{
    std::string name = "clk0";
    ClockReference reference = ClockReference::ptp;
    std::string grandmaster = "00-00-5e-ff-fe-00-53-ff"; ///< lower case
    bool traceable = true;
    bool locked = true;
    int domain = 127;

    bool operator==(const ClockSettings&) const = default;
};

enum class SenderStreams
{
    all,
    stream_1
};

enum class Essences
{
    all,
    video_only
};

enum class AudioGroups
{
    g1,
    g1_and_g2,
    all_four
};

struct StreamSettings
{
    SenderStreams senders = SenderStreams::all;
    Essences sender_essences = Essences::all;
    Essences receiver_essences = Essences::all;
    AudioGroups audio_groups = AudioGroups::all_four;

    bool operator==(const StreamSettings&) const = default;
};

struct VideoSettings
{
    PictureSize lines = PictureSize::lines_1080;
    Scan scan = Scan::progressive;
    FrameRate frame_rate = FrameRate::fps_59_94;
    std::string sampling = "YCbCr-4:2:2";
    int bit_depth = 10;
    std::string colorimetry = "BT709";
    std::string transfer_characteristic = "SDR";

    bool operator==(const VideoSettings&) const = default;
};

struct AudioSettings
{
    std::string encoding = "L24";
    int sample_rate = 48000;
    int channels = 16;
    PacketTime packet_time = PacketTime::us_125;

    bool operator==(const AudioSettings&) const = default;
};

enum class Carriage
{
    st2110,
    st2022_6
};

/// The payload type of video in the SDP files in SMPTE ST 2022-6 carriage. RFC 3551 leaves 96 to
/// 127 to the sender; the library always writes this one.
constexpr int st2022_6_payload_type = 98;

struct PayloadTypes
{
    int video = 96;
    int audio = 97;
    int ancillary = 100;

    bool operator==(const PayloadTypes&) const = default;
};

struct FormatSwitching
{
    bool capable = true;
    bool allowed = true;

    bool operator==(const FormatSwitching&) const = default;
};

struct Destination
{
    std::string address;
    int port = 5004;

    bool operator==(const Destination&) const = default;
};

struct SenderDestinations
{
    Destination primary;
    Destination secondary;

    bool operator==(const SenderDestinations&) const = default;
};

struct Labels
{
    std::string device = "QX3100-OPT21 IP OPTION";
    std::array<std::string, source_count> sources = {
        "Source for Video",
        "Source for Audio",
        "Source for ANCILLARY",
    };
    std::array<std::string, flow_count> flows = {
        "Flow for Video",
        "Flow for Audio",
        "Flow for ANCILLARY",
    };
    std::array<std::string, sender_count> senders = {
        "IP Stream 1 Video Sender", "IP Stream 2 Video Sender", "IP Stream 3 Video Sender",
        "IP Stream 4 Video Sender", "IP Stream 1 Audio Sender", "IP Stream 1 ANCILLARY Sender",
    };
    std::array<std::string, receiver_count> receivers = {
        "IP Stream 1 for Video",     "IP Stream 2 for Video",     "IP Stream 3 for Video",
        "IP Stream 4 for Video",     "IP Stream 1 G1 for Audio",  "IP Stream 1 G2 for Audio",
        "IP Stream 1 G3 for Audio",  "IP Stream 1 G4 for Audio",  "IP Stream 2 G1 for Audio",
        "IP Stream 2 G2 for Audio",  "IP Stream 2 G3 for Audio",  "IP Stream 2 G4 for Audio",
        "IP Stream 3 G1 for Audio",  "IP Stream 3 G2 for Audio",  "IP Stream 3 G3 for Audio",
        "IP Stream 3 G4 for Audio",  "IP Stream 4 G1 for Audio",  "IP Stream 4 G2 for Audio",
        "IP Stream 4 G3 for Audio",  "IP Stream 4 G4 for Audio",  "IP Stream 1 for ANCILLARY",
        "IP Stream 2 for ANCILLARY", "IP Stream 3 for ANCILLARY", "IP Stream 4 for ANCILLARY",
    };

    bool operator==(const Labels&) const = default;
};

/// The addresses are those that RFC 5737, RFC 6676 and RFC 7042 reserve for documentation, except
/// that of the server: every machine has to have it.
struct Configuration
{
    std::string serial_number = "QX0000001";
    NodeSettings node;
    ServerSettings server;
    RegistrationSettings registration;
    AdvertisementSettings advertisement;
    std::array<MediaInterface, interface_count> interfaces = {{
        {"media1", "00-00-5e-00-53-01", "00-00-5e-00-53-00", "192.0.2.10"},
        {"media2", "00-00-5e-00-53-02", "00-00-5e-00-53-00", "198.51.100.10"},
    }};
    ClockSettings clock;
    StreamSettings streams;
    Carriage carriage = Carriage::st2110;
    VideoSettings video;
    AudioSettings audio;
    PayloadTypes payload_types;
    FormatSwitching format_switching;
    std::array<SenderDestinations, sender_count> destinations = {{
        {{"233.252.0.11", 5004}, {"233.252.0.21", 5004}},
        {{"233.252.0.12", 5004}, {"233.252.0.22", 5004}},
        {{"233.252.0.13", 5004}, {"233.252.0.23", 5004}},
        {{"233.252.0.14", 5004}, {"233.252.0.24", 5004}},
        {{"233.252.0.15", 5004}, {"233.252.0.25", 5004}},
        {{"233.252.0.16", 5004}, {"233.252.0.26", 5004}},
    }};
    Labels labels;

    bool operator==(const Configuration&) const = default;
};

/// A configuration that was read but cannot be used.
class ConfigurationRefused : public std::runtime_error
{
public:
    explicit ConfigurationRefused(std::vector<std::string> findings);

    /// One line each: file, JSON pointer (RFC 6901), what was found, what is allowed.
    const std::vector<std::string>& findings() const { return findings_; }

private:
    std::vector<std::string> findings_;
};

/// The configuration that `text` (JSON, comments allowed) describes; absent keys keep their
/// defaults. Every finding begins with `name`. Throws ConfigurationRefused with all findings at
/// once.
Configuration parse_configuration(std::string_view text, const std::string& name);

/// The same from a file. Throws UnreadableFile too.
Configuration load_configuration(const std::string& file);

/// `configuration` as a complete file: each key with a comment that explains it and says what is
/// allowed. parse_configuration turns it into the same configuration again.
std::string explain_configuration(const Configuration& configuration);

} // namespace nmos_instrument::host

#endif
