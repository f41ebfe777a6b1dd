// SPDX-License-Identifier: Apache-2.0

#include "nmos_instrument/record_check.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <sys/mman.h>
#include <unistd.h>

#include "oracle/random.h"
#include "support/clean_records.h"
#include "support/set_text.h"

namespace {

using nmos_instrument::check_record;
using testing::ElementsAre;
using testing::IsEmpty;

using Findings = std::vector<std::string>;

constexpr const char* absent_id = "ab000000-0000-4000-8000-000000000000";

/// A clean record, one thing made wrong in it, and what has to be found.
template <typename Record>
struct Case
{
    const char* name;
    void (*spoil)(Record& record);
    Findings findings;
};

template <typename Record>
std::string case_name(const testing::TestParamInfo<Case<Record>>& info)
{
    return info.param.name;
}

template <typename Record>
std::ostream& operator<<(std::ostream& out, const Case<Record>& test_case)
{
    return out << test_case.name;
}

/// One field set to a wrong value: the finding names its path and its value as they stand here.
#define TEXT(name, field, text, rule)                                                              \
    {                                                                                              \
        name, [](auto& record) { set_text(record.field, text); },                                  \
        {                                                                                          \
            std::string(#field " is \"") + (text) + "\", " + (rule)                                \
        }                                                                                          \
    }
#define NUMBER(name, field, number, rule)                                                          \
    {                                                                                              \
        name, [](auto& record) { record.field = number; },                                         \
        {                                                                                          \
            std::string(#field " is " #number ", ") + (rule)                                       \
        }                                                                                          \
    }

// The rules that several fields have.
constexpr const char* api_version = "it must be like v1.2";
constexpr const char* clock_name = "it must be like clk0";
constexpr const char* http_url = "it must be a URL that begins with http:// or https://";
constexpr const char* ipv4 = "it must be an IPv4 address";
constexpr const char* known_device = "no device of the record has this id";
constexpr const char* nanoseconds = "it must be a whole number from 0 to 999999999";
constexpr const char* not_negative = "it must not be negative";
constexpr const char* one_needed = "at least 1 is needed";
constexpr const char* port = "it must be a whole number from 1 to 65535";
constexpr const char* protocols = "it must be one of: http, https";
constexpr const char* time_stamp =
    "it must be <seconds>:<nanoseconds> with nanoseconds from 0 to 999999999";
constexpr const char* uri = "it must be a URI";
constexpr const char* uuid = "it must be a UUID in lower case";
constexpr const char* uuid_or_null = "it must be a UUID in lower case or \"null\"";

/// Ends at a page that cannot be read and begins after another as closely as its size allows.
template <typename Record>
class GuardedRecord
{
public:
    GuardedRecord()
        : page_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))),
          pages_((sizeof(Record) + page_ - 1) / page_ * page_)
    {
        void* const area =
            mmap(nullptr, pages_ + 2 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (area == MAP_FAILED)
            throw std::bad_alloc();
        area_ = static_cast<char*>(area);
        if (mprotect(area_ + page_, pages_, PROT_READ | PROT_WRITE) != 0)
            throw std::bad_alloc();
    }
    ~GuardedRecord() { munmap(area_, pages_ + 2 * page_); }
    GuardedRecord(const GuardedRecord&) = delete;
    GuardedRecord& operator=(const GuardedRecord&) = delete;

    Record& at_end() const
    {
        return *reinterpret_cast<Record*>(area_ + page_ + pages_ - sizeof(Record));
    }
    Record& at_start() const { return *reinterpret_cast<Record*>(area_ + page_); }

private:
    std::size_t page_;
    std::size_t pages_;
    char* area_ = nullptr;
};

bool is_visible_line(const std::string& message)
{
    return std::all_of(message.begin(), message.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

void expect_readable(const Findings& findings)
{
    for (const std::string& finding : findings) {
        EXPECT_TRUE(is_visible_line(finding)) << finding;
        EXPECT_NE(finding.find(" is "), std::string::npos) << finding;
        EXPECT_LT(finding.size(), 500u) << finding;
    }
}

/// At both ends of readable memory.
template <typename Record>
void check_arbitrary_bytes(unsigned rounds)
{
    const GuardedRecord<Record> guarded;
    Random random(20260);
    for (unsigned round = 0; round < rounds; ++round) {
        Record& record = round % 2 == 0 ? guarded.at_end() : guarded.at_start();
        std::string bytes(sizeof record, '\0');
        // Few values in every third round, so that texts have ends and counts are small.
        const unsigned mask = round % 3 == 0 ? 0xFF : round % 3 == 1 ? 0x03 : 0x7F;
        for (char& byte : bytes)
            byte = static_cast<char>(random.bits() & mask);
        std::memcpy(&record, bytes.data(), bytes.size());
        expect_readable(check_record(record));
    }
}

template <typename Record>
void check_equal_bytes()
{
    const GuardedRecord<Record> guarded;
    for (const int byte : {0x00, 0x01, 0x7F, 0x80, 0xFF, int{'a'}, int{'"'}, int{'\n'}}) {
        std::memset(&guarded.at_end(), byte, sizeof(Record));
        expect_readable(check_record(guarded.at_end()));
        std::memset(&guarded.at_start(), byte, sizeof(Record));
        expect_readable(check_record(guarded.at_start()));
    }
}

// ---- NMOS_IS04_ST ------------------------------------------------------------------------------

using NodeCase = Case<NMOS_IS04_ST>;

class NodeStateFindings : public testing::TestWithParam<NodeCase>
{};

TEST_P(NodeStateFindings, AreNamed)
{
    const auto record = clean_node();
    GetParam().spoil(*record);
    EXPECT_EQ(check_record(*record), GetParam().findings);
}

// clang-format off
const NodeCase node_counts[] = {
    {"VersionsAbove", [](NMOS_IS04_ST& r) {
         r.versions_count = 17;
         for (auto& version : r.versions) set_text(version, "v1.2");
     }, {"versions_count is 17, at most 16 are allowed"}},
    NUMBER("VersionsNegative", versions_count, -1, not_negative),
    {"EndpointsAbove", [](NMOS_IS04_ST& r) {
         r.endpoints_count = 27;
         for (auto& endpoint : r.endpoints) endpoint = r.endpoints[0];
     }, {"endpoints_count is 27, at most 26 are allowed"}},
    NUMBER("EndpointsNone", endpoints_count, 0, one_needed),
    {"EndpointsNegative", [](NMOS_IS04_ST& r) { r.endpoints_count = -2147483647 - 1; },
     {"endpoints_count is -2147483648, at least 1 is needed"}},
    {"ClocksAbove", [](NMOS_IS04_ST& r) {
         r.clocks_count = 2147483647;
         for (int i = 2; i < 6; ++i) {
             r.clocks[i] = r.clocks[1];
             set_text(r.clocks[i].name, "clk" + std::to_string(i));
         }
     }, {"clocks_count is 2147483647, at most 6 are allowed"}},
    {"ClocksNegative", [](NMOS_IS04_ST& r) {
         r.clocks_count = -2;
         r.sources_count = r.flows_count = r.senders_count = 0;
         r.devices[0].sender_ids_count = 0;
     }, {"clocks_count is -2, it must not be negative"}},
    {"InterfacesAbove", [](NMOS_IS04_ST& r) {
         r.interfaces_count = 13;
         for (int i = 2; i < 12; ++i) {
             r.interfaces[i] = r.interfaces[1];
             set_text(r.interfaces[i].name, "eth" + std::to_string(i));
         }
     }, {"interfaces_count is 13, at most 12 are allowed"}},
    {"SourcesAbove", [](NMOS_IS04_ST& r) {
         r.sources_count = 5;
         r.sources[3] = r.sources[2];
         set_text(r.sources[3].id, clean_parts::source_id(3));
     }, {"sources_count is 5, at most 4 are allowed"}},
    {"FlowsAbove", [](NMOS_IS04_ST& r) {
         r.flows_count = 100;
         r.flows[3] = r.flows[2];
         set_text(r.flows[3].id, clean_parts::flow_id(3));
     }, {"flows_count is 100, at most 4 are allowed"}},
    {"DevicesAbove", [](NMOS_IS04_ST& r) {
         r.devices_count = 5;
         for (std::size_t i = 1; i < 4; ++i) {
             r.devices[i] = r.devices[0];
             set_text(r.devices[i].id, clean_parts::uuid_of("de", i));
         }
     }, {"devices_count is 5, at most 4 are allowed"}},
    {"DeviceListsAbove", [](NMOS_IS04_ST& r) {
         DEVICE_IS04_ST& device = r.devices[0];
         device.receiver_ids_count = 25;
         device.sender_ids_count = 7;
         device.controls_count = 9;
         for (auto& control : device.controls) control = device.controls[0];
     }, {"devices[0].receiver_ids_count is 25, at most 24 are allowed",
         "devices[0].sender_ids_count is 7, at most 6 are allowed",
         "devices[0].controls_count is 9, at most 8 are allowed"}},
    {"DeviceListsNegative", [](NMOS_IS04_ST& r) {
         r.devices[0].receiver_ids_count = -3;
         r.devices[0].sender_ids_count = -2;
         r.devices[0].controls_count = -1;
     }, {"devices[0].receiver_ids_count is -3, it must not be negative",
         "devices[0].sender_ids_count is -2, it must not be negative",
         "devices[0].controls_count is -1, it must not be negative"}},
    NUMBER("SendersAbove", senders_count, 7, "at most 6 are allowed"),
    {"SenderListsAbove", [](NMOS_IS04_ST& r) {
         SENDER_IS04_ST& sender = r.senders[5];
         sender.interface_bindings_count = 11;
         for (auto& binding : sender.interface_bindings) set_text(binding, "eth1");
         sender.subscription_count = 10;
         for (auto& entry : sender.subscription) set_text(entry.peer_id, "null");
     }, {"senders[5].interface_bindings_count is 11, at most 10 are allowed",
         "senders[5].subscription_count is 10, at most 9 are allowed"}},
    {"SenderListsBelow", [](NMOS_IS04_ST& r) {
         r.senders[0].interface_bindings_count = -1;
         r.senders[0].subscription_count = 0;
     }, {"senders[0].interface_bindings_count is -1, it must not be negative",
         "senders[0].subscription_count is 0, at least 1 is needed"}},
    {"SenderWithoutInterfaces", [](NMOS_IS04_ST& r) { r.senders[0].interface_bindings_count = 0; },
     {}},
    NUMBER("ReceiversAbove", receivers_count, 25, "at most 24 are allowed"),
    {"ReceiverSubscriptionsAbove", [](NMOS_IS04_ST& r) {
         r.receivers[4].subscription_count = 12;
         for (auto& entry : r.receivers[4].subscription) set_text(entry.peer_id, "null");
     }, {"receivers[4].subscription_count is 12, at most 10 are allowed"}},
    {"ReceiverListsAbove", [](NMOS_IS04_ST& r) {
         RECEIVER_IS04_ST& receiver = r.receivers[23];
         receiver.interface_bindings_count = 11;
         for (auto& binding : receiver.interface_bindings) set_text(binding, "eth0");
         receiver.media_types_count = 13;
         for (auto& type : receiver.media_types) set_text(type, "video/smpte291");
     }, {"receivers[23].interface_bindings_count is 11, at most 10 are allowed",
         "receivers[23].media_types_count is 13, at most 12 are allowed"}},
    {"ReceiverListsBelow", [](NMOS_IS04_ST& r) {
         r.receivers[0].interface_bindings_count = -1;
         r.receivers[0].subscription_count = -1;
         r.receivers[0].media_types_count = 0;
     }, {"receivers[0].interface_bindings_count is -1, it must not be negative",
         "receivers[0].subscription_count is -1, at least 1 is needed",
         "receivers[0].media_types_count is 0, at least 1 is needed"}},
};

const NodeCase node_fields[] = {
    {"IdEmpty", [](NMOS_IS04_ST& r) { r.devices_count = r.sources_count = r.flows_count = 0;
                                      r.senders_count = r.receivers_count = 0;
                                      set_text(r.id, ""); },
     {"id is \"\", it must be a UUID in lower case"}},
    {"IdUpperCase", [](NMOS_IS04_ST& r) {
         set_text(r.receivers[3].id, "4E000000-0000-4000-8000-000000000003");
         r.devices[0].receiver_ids_count = 3;
     }, {"receivers[3].id is \"4E000000-0000-4000-8000-000000000003\", "
         "it must be a UUID in lower case"}},
    {"IdOfVersionZero", [](NMOS_IS04_ST& r) {
         set_text(r.receivers[3].id, "00000000-0000-0000-0000-000000000000");
         r.devices[0].receiver_ids_count = 3;
     }, {"receivers[3].id is \"00000000-0000-0000-0000-000000000000\", "
         "it must be a UUID in lower case"}},
    {"IdOfOtherVariant", [](NMOS_IS04_ST& r) {
         set_text(r.receivers[3].id, "4e000000-0000-4000-c000-000000000003");
         r.devices[0].receiver_ids_count = 3;
     }, {"receivers[3].id is \"4e000000-0000-4000-c000-000000000003\", "
         "it must be a UUID in lower case"}},
    {"IdTooLong", [](NMOS_IS04_ST& r) {
         set_text(r.receivers[3].id, "4e000000-0000-4000-8000-0000000000031");
         r.devices[0].receiver_ids_count = 3;
     }, {"receivers[3].id is \"4e000000-0000-4000-8000-0000000000031\", "
         "it must be a UUID in lower case"}},
    {"IdNull", [](NMOS_IS04_ST& r) {
         set_text(r.senders[5].id, "null");
         r.devices[0].sender_ids_count = 5;
     }, {"senders[5].id is \"null\", it must be a UUID in lower case"}},
    {"IdWithoutEnd", [](NMOS_IS04_ST& r) {
         fill_whole(r.senders[5].id, 'a');
         r.devices[0].sender_ids_count = 5;
     }, {"senders[5].id is \"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa\", "
         "there is no NUL in its 48 bytes"}},
    {"IdTwiceInOneArray", [](NMOS_IS04_ST& r) {
         set_text(r.receivers[7].id, clean_parts::receiver_id(2));
         set_text(r.devices[0].receivers[7], clean_parts::receiver_id(2));
     }, {"receivers[7].id is \"4e000000-0000-4000-8000-000000000002\", receivers[2].id is the same"}},
    {"IdTwiceInTwoArrays", [](NMOS_IS04_ST& r) {
         set_text(r.senders[1].id, clean_parts::source_id(2));
         set_text(r.devices[0].senders[1], clean_parts::source_id(2));
     }, {"senders[1].id is \"50000000-0000-4000-8000-000000000002\", sources[2].id is the same"}},
    {"IdOfTheNodeAgain", [](NMOS_IS04_ST& r) {
         set_text(r.flows[2].id, clean_parts::node_id());
         set_text(r.senders[5].flow_id, clean_parts::node_id());
     }, {"flows[2].id is \"10000000-0000-4000-8000-000000000000\", id is the same"}},
    TEXT("VersionWithoutColon", version, "1700000123", time_stamp),
    TEXT("VersionNanosecondsAbove", flows[1].version, "1:1000000000", time_stamp),
    TEXT("VersionNanosecondsNegative", devices[0].version, "1:-1", time_stamp),
    TEXT("VersionWithoutSeconds", sources[0].version, ":5", time_stamp),
    TEXT("VersionWithoutNanoseconds", senders[2].version, "5:", time_stamp),
    TEXT("VersionWithMore", receivers[2].version, "5:6 ", time_stamp),
    {"VersionsAtTheirBounds", [](NMOS_IS04_ST& r) {
         set_text(r.version, "0:0");
         set_text(r.devices[0].version, "18446744073709551615:999999999");
         set_text(r.senders[0].version, "5:0000000000000000000007");
     }, {}},
    {"LabelWithoutEnd", [](NMOS_IS04_ST& r) { fill_whole(r.label, 'x'); },
     {"label is \"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx\", "
      "there is no NUL in its 64 bytes"}},
    {"LabelInLatin1", [](NMOS_IS04_ST& r) { set_text(r.label, "caf\xE9"); },
     {"label is \"caf\\xe9\", it must be UTF-8"}},
    {"DescriptionWithoutEnd", [](NMOS_IS04_ST& r) { fill_whole(r.description, '\n'); },
     {"description is \"\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a"
      "\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a"
      "\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\\x0a\"... (128 bytes), "
      "there is no NUL in its 128 bytes"}},
    TEXT("HrefWithoutScheme", href, "192.0.2.10:3212/", http_url),
    TEXT("HrefOfTheScheme", href, "https://", http_url),
    TEXT("HrefWithSpace", href, "http://a b/", http_url),
    {"HostnameWithoutEnd", [](NMOS_IS04_ST& r) { fill_whole(r.hostname, 'h'); },
     {"hostname is \"hhhhhhhhhhhhhhhhhhhhhhhhhhhhhhhh\", there is no NUL in its 32 bytes"}},
    TEXT("ApiVersion", versions[1], "v1.", api_version),
    TEXT("ApiVersionWithoutLetter", versions[0], "1.2", api_version),
    TEXT("ApiVersionWithMore", versions[0], "v1.2/", api_version),
    TEXT("EndpointHost", endpoints[0].host, "192.0.2.256", ipv4),
    TEXT("EndpointHostShort", endpoints[0].host, "192.0.2", ipv4),
    TEXT("EndpointHostLong", endpoints[0].host, "192.0.2.1.1", ipv4),
    TEXT("EndpointHostOctal", endpoints[0].host, "192.0.2.010", ipv4),
    NUMBER("EndpointPortZero", endpoints[0].port, 0, port),
    NUMBER("EndpointPortAbove", endpoints[1].port, 65536, port),
    NUMBER("EndpointPortWithFraction", endpoints[0].port, 80.5, port),
    {"EndpointPortNan", [](NMOS_IS04_ST& r) {
         r.endpoints[1].port = std::numeric_limits<double>::quiet_NaN();
     }, {"endpoints[1].port is nan, it must be a whole number from 1 to 65535"}},
    {"EndpointPortInfinite", [](NMOS_IS04_ST& r) {
         r.endpoints[0].port = -std::numeric_limits<double>::infinity();
     }, {"endpoints[0].port is -inf, it must be a whole number from 1 to 65535"}},
    TEXT("EndpointProtocol", endpoints[0].protocol, "HTTP", protocols),
    TEXT("EndpointProtocolList", endpoints[0].protocol, "http, https", protocols),
    TEXT("ClockName", clocks[1].name, "clk", clock_name),
    TEXT("ClockNameTwice", clocks[1].name, "clk0", "clocks[0].name is the same"),
    TEXT("ClockKind", clocks[1].ref_type, "PTP", "it must be one of: internal, ptp"),
    TEXT("PtpVersion", clocks[0].version, "IEEE1588-2019", "it must be one of: IEEE1588-2008"),
    TEXT("PtpGrandmaster", clocks[0].gmid, "00-00-5E-FF-FE-00-53-01",
         "it must be like 00-00-5e-ff-fe-00-53-01, in lower case"),
    {"OtherClockHasNoPtpMembers", [](NMOS_IS04_ST& r) {
         fill_whole(r.clocks[1].version, 'v');
         fill_whole(r.clocks[1].gmid, 'g');
     }, {}},
    {"ChassisIdNull", [](NMOS_IS04_ST& r) { set_text(r.interfaces[0].chassis_id, "null"); }, {}},
    {"ControlOfAnyScheme", [](NMOS_IS04_ST& r) {
         set_text(r.devices[0].controls[0].type, "x-a+b.c2:control");
     }, {}},
    TEXT("MediaTypeWithSpace", receivers[0].media_types[0], "video/ raw",
         "it must be a media type that begins with video/"),
    TEXT("ChassisId", interfaces[0].chassis_id, "", "it must be UTF-8 and not empty"),
    TEXT("PortId", interfaces[0].port_id, "00:00:5e:00:53:01",
         "it must be like 00-00-5e-00-53-01, in lower case"),
    {"InterfaceNameTwice", [](NMOS_IS04_ST& r) {
         set_text(r.interfaces[1].name, "eth0");
         for (auto& sender : r.senders) sender.interface_bindings_count = 1;
         for (auto& receiver : r.receivers) receiver.interface_bindings_count = 1;
     }, {"interfaces[1].name is \"eth0\", interfaces[0].name is the same"}},
    TEXT("SourceDevice", sources[0].device_id, absent_id, known_device),
    {"SourceDeviceWithoutEnd", [](NMOS_IS04_ST& r) { fill_whole(r.sources[1].device_id, '0'); },
     {"sources[1].device_id is \"000000000000000000000000000000000000000000000000\"... (96 bytes), "
      "there is no NUL in its 96 bytes"}},
    TEXT("SourceClock", sources[2].clock_name, "clk2", "no clock of the record has this name"),
    TEXT("SourceClockNull", sources[2].clock_name, "null", clock_name),
    {"SourceClockBeyondTheCount", [](NMOS_IS04_ST& r) {
         r.clocks_count = 1;
         set_text(r.sources[0].clock_name, "clk1");
     }, {"sources[0].clock_name is \"clk1\", no clock of the record has this name"}},
    {"SourceFormat", [](NMOS_IS04_ST& r) { set_text(r.sources[0].format, "video"); },
     {"sources[0].format is \"video\", it must be one of: urn:x-nmos:format:video, "
      "urn:x-nmos:format:data, urn:x-nmos:format:mux"}},
    {"SourceFormatAudioWithoutChannels", [](NMOS_IS04_ST& r) {
         set_text(r.sources[0].format, "urn:x-nmos:format:audio");
     }, {"sources[0].format is \"urn:x-nmos:format:audio\", it must be one of: "
         "urn:x-nmos:format:video, urn:x-nmos:format:data, urn:x-nmos:format:mux"}},
    {"SourceFormatOfTheAudioSource", [](NMOS_IS04_ST& r) { set_text(r.sources[1].format, ""); },
     {"sources[1].format is \"\", it must be one of: urn:x-nmos:format:video, "
      "urn:x-nmos:format:audio, urn:x-nmos:format:data, urn:x-nmos:format:mux"}},
    {"FlowFormatOfTheVideoFlow", [](NMOS_IS04_ST& r) {
         set_text(r.flows[0].format, "urn:x-nmos:format:audio");
         set_text(r.flows[0].media_type, "audio/L24");
     }, {"flows[0].format is \"urn:x-nmos:format:audio\", it must be one of: "
         "urn:x-nmos:format:video, urn:x-nmos:format:data, urn:x-nmos:format:mux"}},
    {"FlowFormatOfTheAudioFlow", [](NMOS_IS04_ST& r) {
         set_text(r.flows[1].format, "urn:x-nmos:format:video");
         set_text(r.flows[1].media_type, "video/raw");
     }, {"flows[1].format is \"urn:x-nmos:format:video\", it must be one of: "
         "urn:x-nmos:format:audio, urn:x-nmos:format:data, urn:x-nmos:format:mux"}},
    {"FlowFormatOfAnotherFlow", [](NMOS_IS04_ST& r) {
         set_text(r.flows[2].format, "urn:x-nmos:format:audio");
         set_text(r.flows[2].media_type, "audio/L16");
     }, {"flows[2].format is \"urn:x-nmos:format:audio\", it must be one of: "
         "urn:x-nmos:format:data, urn:x-nmos:format:mux"}},
    {"FlowSize", [](NMOS_IS04_ST& r) {
         r.flows[0].frame_width = 0;
         r.flows[0].frame_height = 2147483648.0;
     }, {"flows[0].frame_width is 0, it must be a whole number from 1 to 2147483647",
         "flows[0].frame_height is 2147483648, it must be a whole number from 1 to 2147483647"}},
    {"FlowColour", [](NMOS_IS04_ST& r) {
         set_text(r.flows[0].interlace_mode, "interlaced");
         set_text(r.flows[0].colorspace, "bt709");
         set_text(r.flows[0].transfer_characteristic, "");
     }, {"flows[0].interlace_mode is \"interlaced\", it must be one of: progressive, "
         "interlaced_tff, interlaced_bff, interlaced_psf",
         "flows[0].colorspace is \"bt709\", it must be one of: BT601, BT709, BT2020, BT2100",
         "flows[0].transfer_characteristic is \"\", it must be one of: SDR, HLG, PQ"}},
    {"FlowColourOfMultiplexedVideo", [](NMOS_IS04_ST& r) {
         set_text(r.flows[0].format, "urn:x-nmos:format:mux");
         set_text(r.flows[0].media_type, "video/SMPTE2022-6");
         set_text(r.flows[0].interlace_mode, "");
         set_text(r.flows[0].colorspace, "");
         set_text(r.flows[0].transfer_characteristic, "");
     }, {}},
    {"FlowColourOfMultiplexedVideoIsShownToo", [](NMOS_IS04_ST& r) {
         set_text(r.flows[0].format, "urn:x-nmos:format:mux");
         set_text(r.flows[0].media_type, "video/SMPTE2022-6");
         set_text(r.flows[0].interlace_mode, "\xFE");
         set_text(r.flows[0].colorspace, "\xFF");
         fill_whole(r.flows[0].transfer_characteristic, 'S');
     }, {"flows[0].interlace_mode is \"\\xfe\", it must be UTF-8",
         "flows[0].colorspace is \"\\xff\", it must be UTF-8",
         "flows[0].transfer_characteristic is \"SSSSSSSSSSSSSSSSSSSSSSSSSSSSSSSS\", there is no NUL "
         "in its 32 bytes"}},
    TEXT("FlowMediaTypeVideo", flows[0].media_type, "audio/L24",
         "it must be a media type that begins with video/"),
    TEXT("FlowMediaTypeAudio", flows[1].media_type, "audio/",
         "it must be a media type that begins with audio/"),
    TEXT("FlowMediaTypeData", flows[2].media_type, "video/a/b", "it must be a media type"),
    {"FlowRatesOfVideo", [](NMOS_IS04_ST& r) {
         r.flows[0].bit_depth = -10;
         r.flows[0].grain_rate_denominator = 0;
         r.flows[0].grain_rate_numerator = 59.94;
         r.flows[0].sample_rate_numerator = -1;
     }, {"flows[0].bit_depth is -10, it must be a whole number from 1 to 2147483647",
         "flows[0].grain_rate_denominator is 0, it must be a whole number from 1 to 2147483647",
         "flows[0].grain_rate_numerator is 59.94, it must be a whole number from 1 to 2147483647"}},
    {"FlowRatesOfAudio", [](NMOS_IS04_ST& r) {
         r.flows[1].frame_width = -1;
         r.flows[1].bit_depth = std::numeric_limits<double>::infinity();
         r.flows[1].grain_rate_denominator = 1e300;
         r.flows[1].grain_rate_numerator = 0;
         r.flows[1].sample_rate_numerator = 0.5;
     }, {"flows[1].bit_depth is inf, it must be a whole number from 1 to 2147483647",
         "flows[1].grain_rate_denominator is 1e+300, it must be a whole number from 1 to 2147483647",
         "flows[1].grain_rate_numerator is 0, it must be a whole number from 1 to 2147483647",
         "flows[1].sample_rate_numerator is 0.5, it must be a whole number from 1 to 2147483647"}},
    {"FlowRatesOfDataAreNotShown", [](NMOS_IS04_ST& r) {
         r.flows[2].bit_depth = -1;
         r.flows[2].grain_rate_denominator = -1;
         fill_whole(r.flows[2].colorspace, 'x');
     }, {}},
    {"FlowSource", [](NMOS_IS04_ST& r) { set_text(r.flows[1].source_id, clean_parts::flow_id(1)); },
     {"flows[1].source_id is \"f1000000-0000-4000-8000-000000000001\", no source of the record has "
      "this id"}},
    TEXT("FlowDevice", flows[1].device_id, "none", uuid),
    TEXT("DeviceKind", devices[0].type, "urn:x-nmos:device:camera",
         "it must be one of: urn:x-nmos:device:generic, urn:x-nmos:device:pipeline"),
    TEXT("DeviceKindEmpty", devices[0].type, "", uri),
    {"DeviceKindOfAMaker", [](NMOS_IS04_ST& r) { set_text(r.devices[0].type, "urn:x-maker:probe"); },
     {}},
    TEXT("DeviceNode", devices[0].node_id, absent_id, "the node has another id"),
    {"DeviceSender", [](NMOS_IS04_ST& r) {
         set_text(r.devices[0].senders[5], clean_parts::receiver_id(5));
     }, {"devices[0].senders[5] is \"4e000000-0000-4000-8000-000000000005\", no sender of the record "
         "has this id"}},
    {"DeviceSenderBeyondTheCount", [](NMOS_IS04_ST& r) { r.senders_count = 5; },
     {"devices[0].senders[5] is \"5e000000-0000-4000-8000-000000000005\", no sender of the record "
      "has this id"}},
    TEXT("DeviceReceiver", devices[0].receivers[23], absent_id,
         "no receiver of the record has this id"),
    TEXT("DeviceReceiverEmpty", devices[0].receivers[0], "", uuid),
    {"DeviceControl", [](NMOS_IS04_ST& r) {
         set_text(r.devices[0].controls[0].href, "/x-nmos/connection/v1.0/");
         set_text(r.devices[0].controls[0].type, "1urn:control");
     }, {"devices[0].controls[0].href is \"/x-nmos/connection/v1.0/\", it must be a URI",
         "devices[0].controls[0].type is \"1urn:control\", it must be a URI"}},
    {"SenderFlow", [](NMOS_IS04_ST& r) { set_text(r.senders[3].flow_id, clean_parts::flow_id(3)); },
     {"senders[3].flow_id is \"f1000000-0000-4000-8000-000000000003\", no flow of the record has "
      "this id"}},
    TEXT("SenderFlowNull", senders[3].flow_id, "null", uuid),
    {"SenderTransport", [](NMOS_IS04_ST& r) {
         set_text(r.senders[3].transport, "urn:x-nmos:transport:udp");
     }, {"senders[3].transport is \"urn:x-nmos:transport:udp\", it must be one of: "
         "urn:x-nmos:transport:rtp, urn:x-nmos:transport:rtp.ucast, urn:x-nmos:transport:rtp.mcast, "
         "urn:x-nmos:transport:dash"}},
    TEXT("SenderDevice", senders[0].device_id, absent_id, known_device),
    TEXT("SenderManifest", senders[0].manifest_href, "", http_url),
    TEXT("SenderInterface", senders[0].interface_bindings[1], "eth2",
         "no interface of the record has this name"),
    TEXT("SenderSubscription", senders[0].subscription[0].peer_id, "NULL", uuid_or_null),
    {"SenderSubscriptionElsewhere", [](NMOS_IS04_ST& r) {
         set_text(r.senders[0].subscription[0].peer_id, absent_id);
     }, {}},
    TEXT("ReceiverDevice", receivers[9].device_id, absent_id, known_device),
    TEXT("ReceiverTransport", receivers[9].transport, "rtp", uri),
    {"ReceiverInterface", [](NMOS_IS04_ST& r) { fill_whole(r.receivers[9].interface_bindings[0], 'e'); },
     {"receivers[9].interface_bindings[0] is "
      "\"eeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeeee\", there is no NUL in its "
      "64 bytes"}},
    TEXT("ReceiverSubscription", receivers[9].subscription[0].peer_id, "", uuid_or_null),
    {"ReceiverFormat", [](NMOS_IS04_ST& r) { set_text(r.receivers[23].format, "urn:x-nmos:format:anc"); },
     {"receivers[23].format is \"urn:x-nmos:format:anc\", it must be one of: "
      "urn:x-nmos:format:video, urn:x-nmos:format:audio, urn:x-nmos:format:data, "
      "urn:x-nmos:format:mux"}},
    {"ReceiverMediaTypes", [](NMOS_IS04_ST& r) {
         set_text(r.receivers[0].media_types[0], "raw");
         set_text(r.receivers[4].media_types[0], "video/raw");
         fill_whole(r.receivers[20].media_types[0], 'm');
     }, {"receivers[0].media_types[0] is \"raw\", it must be a media type that begins with video/",
         "receivers[4].media_types[0] is \"video/raw\", it must be a media type that begins with "
         "audio/",
         "receivers[20].media_types[0] is \"mmmmmmmmmmmmmmmm\", there is no NUL in its 16 bytes"}},
    NUMBER("NanosecondsNegative", version_nanoseconds, -1, nanoseconds),
    NUMBER("NanosecondsAbove", version_nanoseconds, 1000000000, nanoseconds),
};

/// Labels that are not UTF-8, or only nearly so, and some that are.
const NodeCase node_labels[] = {
    {"Overlong", [](NMOS_IS04_ST& r) { set_text(r.label, "\xC0\xAF"); },
     {"label is \"\\xc0\\xaf\", it must be UTF-8"}},
    {"OverlongOfThree", [](NMOS_IS04_ST& r) { set_text(r.label, "\xE0\x9F\xBF"); },
     {"label is \"\\xe0\\x9f\\xbf\", it must be UTF-8"}},
    {"OverlongOfFour", [](NMOS_IS04_ST& r) { set_text(r.label, "\xF0\x8F\xBF\xBF"); },
     {"label is \"\\xf0\\x8f\\xbf\\xbf\", it must be UTF-8"}},
    {"Surrogate", [](NMOS_IS04_ST& r) { set_text(r.label, "\xED\xA0\x80"); },
     {"label is \"\\xed\\xa0\\x80\", it must be UTF-8"}},
    {"AboveTheLast", [](NMOS_IS04_ST& r) { set_text(r.label, "\xF4\x90\x80\x80"); },
     {"label is \"\\xf4\\x90\\x80\\x80\", it must be UTF-8"}},
    {"LoneContinuation", [](NMOS_IS04_ST& r) { set_text(r.label, "a\x80"); },
     {"label is \"a\\x80\", it must be UTF-8"}},
    {"CutOff", [](NMOS_IS04_ST& r) { set_text(r.label, "a\xE2\x82"); },
     {"label is \"a\\xe2\\x82\", it must be UTF-8"}},
    {"BrokenByALetter", [](NMOS_IS04_ST& r) { set_text(r.label, "\xE2\x82z"); },
     {"label is \"\\xe2\\x82z\", it must be UTF-8"}},
    {"QuoteAndBackslashAreMarked", [](NMOS_IS04_ST& r) { set_text(r.label, "\"\\\xFF"); },
     {"label is \"\\\"\\\\\\xff\", it must be UTF-8"}},
    {"EveryLengthIsFine", [](NMOS_IS04_ST& r) {
         set_text(r.label, "a\x7F \xC2\x80 \xE0\xA0\x80 \xED\x9F\xBF \xEE\x80\x80 \xF0\x90\x80\x80 "
                           "\xF4\x8F\xBF\xBF");
     }, {}},
    {"ControlCharactersAreFine", [](NMOS_IS04_ST& r) { set_text(r.label, "a\tb\x01"); }, {}},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Counts, NodeStateFindings, testing::ValuesIn(node_counts),
                         case_name<NMOS_IS04_ST>);
INSTANTIATE_TEST_SUITE_P(Fields, NodeStateFindings, testing::ValuesIn(node_fields),
                         case_name<NMOS_IS04_ST>);
INSTANTIATE_TEST_SUITE_P(Utf8, NodeStateFindings, testing::ValuesIn(node_labels),
                         case_name<NMOS_IS04_ST>);

TEST(NodeStateCheck, CleanRecordHasNoFindings)
{
    EXPECT_THAT(check_record(*clean_node()), IsEmpty());
}

TEST(NodeStateCheck, WhatNoBodyShowsIsNotLookedAt)
{
    EXPECT_THAT(check_record(*clean_node(0xFF)), IsEmpty());
    EXPECT_THAT(check_record(*clean_node('a')), IsEmpty());
}

TEST(NodeStateCheck, ClearedRecordHasFindings)
{
    EXPECT_THAT(
        check_record(*std::make_unique<NMOS_IS04_ST>()),
        ElementsAre("id is \"\", it must be a UUID in lower case",
                    "version is \"\", it must be <seconds>:<nanoseconds> with nanoseconds from 0 "
                    "to 999999999",
                    "href is \"\", it must be a URL that begins with http:// or https://",
                    "endpoints_count is 0, at least 1 is needed"));
}

TEST(NodeStateCheck, FindingsStandInTheOrderOfTheFields)
{
    const auto record = clean_node();
    set_text(record->description, "\xFF");
    record->versions_count = -1;
    record->clocks_count = 7;
    for (int i = 2; i < 6; ++i) {
        record->clocks[i] = record->clocks[1];
        set_text(record->clocks[i].name, "clk" + std::to_string(i));
    }
    set_text(record->clocks[5].ref_type, "ntp");
    set_text(record->flows[0].format, "video");
    record->flows[0].frame_width = 0.25;
    set_text(record->flows[1].label, "\x80");
    set_text(record->senders[1].transport, "x");
    set_text(record->senders[1].manifest_href, "y");
    record->receivers[23].media_types_count = -5;
    record->version_nanoseconds = -7;
    EXPECT_THAT(
        check_record(*record),
        ElementsAre(
            "description is \"\\xff\", it must be UTF-8",
            "versions_count is -1, it must not be negative",
            "clocks_count is 7, at most 6 are allowed",
            "clocks[5].ref_type is \"ntp\", it must be one of: internal, ptp",
            "flows[0].format is \"video\", it must be one of: urn:x-nmos:format:video, "
            "urn:x-nmos:format:data, urn:x-nmos:format:mux",
            "flows[0].frame_width is 0.25, it must be a whole number from 1 to 2147483647",
            "flows[1].label is \"\\x80\", it must be UTF-8",
            "senders[1].transport is \"x\", it must be a URI",
            "senders[1].manifest_href is \"y\", it must be a URL that begins with http:// or "
            "https://",
            "receivers[23].media_types_count is -5, at least 1 is needed",
            "version_nanoseconds is -7, it must be a whole number from 0 to 999999999"));
}

TEST(NodeStateCheck, TextOf64BytesIsShownWhole)
{
    const auto record = clean_node();
    set_text(record->senders[0].manifest_href, std::string(64, 'm'));
    set_text(record->senders[1].manifest_href, std::string(65, 'm'));
    EXPECT_THAT(check_record(*record),
                ElementsAre("senders[0].manifest_href is "
                            "\"mmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmm\", "
                            "it must be a URL that begins with http:// or https://",
                            "senders[1].manifest_href is "
                            "\"mmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmm\"... (65 bytes), "
                            "it must be a URL that begins with http:// or https://"));
}

TEST(NodeStateCheck, ArbitraryBytesAreNeverReadOutside)
{
    check_arbitrary_bytes<NMOS_IS04_ST>(60);
    check_equal_bytes<NMOS_IS04_ST>();
}

TEST(NodeStateCheck, FullRecordWithoutAnyNulIsNeverReadOutside)
{
    const GuardedRecord<NMOS_IS04_ST> guarded;
    NMOS_IS04_ST& record = guarded.at_end();
    std::memset(&record, 'n', sizeof record);
    for (std::int32_t* const count :
         {&record.versions_count, &record.endpoints_count, &record.clocks_count,
          &record.interfaces_count, &record.sources_count, &record.flows_count,
          &record.devices_count, &record.senders_count, &record.receivers_count})
        *count = std::numeric_limits<std::int32_t>::max();
    const Findings findings = check_record(record);
    expect_readable(findings);
    // Ten texts without end for the last receiver's interface bindings, each named once.
    EXPECT_EQ(std::count_if(findings.begin(), findings.end(),
                            [](const std::string& finding) {
                                return finding.starts_with("receivers[23].interface_bindings[");
                            }),
              10);
}

// ---- NMOS_IS05_ST ------------------------------------------------------------------------------

using ConnectionCase = Case<NMOS_IS05_ST>;

class ConnectionStateFindings : public testing::TestWithParam<ConnectionCase>
{};

TEST_P(ConnectionStateFindings, AreNamed)
{
    const auto record = clean_connections();
    GetParam().spoil(*record);
    EXPECT_EQ(check_record(*record), GetParam().findings);
}

const std::string needs_port = std::string(", ") + port;
const std::string needs_mode = ", it must be one of: activate_immediate, "
                               "activate_scheduled_absolute, activate_scheduled_relative, null";
const std::string needs_time_or_null =
    ", it must be <seconds>:<nanoseconds> with nanoseconds from 0 to 999999999 or \"null\"";

// clang-format off
const ConnectionCase connection_fields[] = {
    NUMBER("LegsNone", senders[0].active.leg_count, 0, one_needed),
    NUMBER("LegsNegative", receivers[23].staged.leg_count, -4, one_needed),
    NUMBER("LegsAbove", senders[5].staged.leg_count, 3, "at most 2 are allowed"),
    {"UnusedLegOfASenderCleared", [](NMOS_IS05_ST& r) {
         r.senders[0].staged.leg_count = 1;
         r.senders[0].active.leg_count = 1;
         r.senders[0].active.transport_params[1] = CONNECTION_LEG_IS05_ST();
     }, {}},
    {"UnusedLegOfASenderShowsInItsSdpFile", [](NMOS_IS05_ST& r) {
         r.senders[0].staged.leg_count = 1;
         r.senders[0].active.leg_count = 1;
         fill_whole(r.senders[0].active.transport_params[1].source_ip, 'x');
         set_text(r.senders[0].active.transport_params[1].destination_ip, "1.2.3.4\r\na=x");
         r.senders[0].active.transport_params[1].destination_port =
             std::numeric_limits<double>::quiet_NaN();
     }, {"senders[0].active.transport_params[1].source_ip is "
         "\"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx\", there is no NUL in its 32 bytes",
         "senders[0].active.transport_params[1].destination_ip is \"1.2.3.4\\x0d\\x0aa=x\", it must "
         "be an IPv4 address or \"null\"",
         "senders[0].active.transport_params[1].destination_port is nan, it must be a whole number "
         "from 0 to 65535"}},
    {"SourcePortMinusZero", [](NMOS_IS05_ST& r) {
         r.senders[0].staged.leg_count = 1;
         r.senders[0].staged.transport_params[1].destination_port = -0.0;
     }, {"senders[0].staged.transport_params[1].destination_port is -0, it must be a whole number "
         "from 0 to 65535"}},
    {"SourcePortAbove", [](NMOS_IS05_ST& r) {
         r.senders[0].staged.leg_count = 1;
         r.senders[0].staged.transport_params[1].destination_port = 65536;
     }, {"senders[0].staged.transport_params[1].destination_port is 65536, it must be a whole number "
         "from 0 to 65535"}},
    {"OneLeg", [](NMOS_IS05_ST& r) {
         r.receivers[0].staged.leg_count = 1;
         std::memset(&r.receivers[0].staged.transport_params[1], 0xFF,
                     sizeof r.receivers[0].staged.transport_params[1]);
     }, {}},
    TEXT("PeerId", senders[1].staged.peer_id, "", uuid_or_null),
    TEXT("PeerIdUpperCase", receivers[1].active.peer_id, "AB000000-0000-4000-8000-000000000000",
         uuid_or_null),
    {"PeerIdOfAnyPeer", [](NMOS_IS05_ST& r) { set_text(r.receivers[1].active.peer_id, absent_id); },
     {}},
    {"Mode", [](NMOS_IS05_ST& r) { set_text(r.senders[0].staged.mode, "activate"); },
     {"senders[0].staged.mode is \"activate\", it must be one of: activate_immediate, "
      "activate_scheduled_absolute, activate_scheduled_relative, null"}},
    {"ModeWithoutEnd", [](NMOS_IS05_ST& r) { fill_whole(r.senders[0].staged.mode, 'm'); },
     {"senders[0].staged.mode is \"mmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmm\", there is no NUL in its 32 "
      "bytes"}},
    {"EveryMode", [](NMOS_IS05_ST& r) {
         set_text(r.senders[0].staged.mode, "activate_immediate");
         set_text(r.senders[1].staged.mode, "activate_scheduled_absolute");
         set_text(r.senders[2].staged.mode, "activate_scheduled_relative");
         set_text(r.senders[2].staged.requested_time, "5:0");
         set_text(r.senders[2].staged.activation_time, "1700000123:999999999");
     }, {}},
    {"Times", [](NMOS_IS05_ST& r) {
         set_text(r.receivers[2].staged.requested_time, "5");
         set_text(r.receivers[2].staged.activation_time, "5:1000000000");
     }, {"receivers[2].staged.requested_time is \"5\", it must be <seconds>:<nanoseconds> with "
         "nanoseconds from 0 to 999999999 or \"null\"",
         "receivers[2].staged.activation_time is \"5:1000000000\", it must be "
         "<seconds>:<nanoseconds> with nanoseconds from 0 to 999999999 or \"null\""}},
    {"TransportFileDataWithoutEnd", [](NMOS_IS05_ST& r) {
         fill_whole(r.receivers[0].active.transport_file_data, 'v');
     }, {"receivers[0].active.transport_file_data is "
         "\"vvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvvv\"... (4096 bytes), there is no NUL in "
         "its 4096 bytes"}},
    {"TransportFileDataInLatin1", [](NMOS_IS05_ST& r) {
         set_text(r.receivers[0].active.transport_file_data, "s=\xE9\r\n");
         set_text(r.receivers[0].active.transport_file_type, "application/sdp");
     }, {"receivers[0].active.transport_file_data is \"s=\\xe9\\x0d\\x0a\", it must be UTF-8 or "
         "\"null\""}},
    {"TransportFileType", [](NMOS_IS05_ST& r) {
         set_text(r.receivers[0].active.transport_file_data, "v=0\r\n");
         set_text(r.receivers[0].active.transport_file_type, "sdp");
     }, {"receivers[0].active.transport_file_type is \"sdp\", it must be a media type or \"null\""}},
    {"TransportFileTypeWithoutEnd", [](NMOS_IS05_ST& r) {
         fill_whole(r.receivers[0].active.transport_file_type, 't');
     }, {"receivers[0].active.transport_file_type is \"ttttttttttttttttttttttttttttttttttttttt\", "
         "there is no NUL in its 39 bytes"}},
    {"TransportFileOfData", [](NMOS_IS05_ST& r) {
         set_text(r.receivers[0].staged.transport_file_data, "v=0\r\n");
     }, {"receivers[0].staged.transport_file_type is \"null\", \"null\" must stand in both "
         "transport_file_data and this field or in neither"}},
    TEXT("TransportFileOfType", receivers[0].staged.transport_file_type, "application/sdp",
         "\"null\" must stand in both transport_file_data and this field or in neither"),
    {"TransportFile", [](NMOS_IS05_ST& r) {
         set_text(r.receivers[0].staged.transport_file_data, "v=0\r\n");
         set_text(r.receivers[0].staged.transport_file_type, "application/sdp");
     }, {}},
    {"SenderAddressesStaged", [](NMOS_IS05_ST& r) {
         set_text(r.senders[0].staged.transport_params[1].source_ip, "");
         set_text(r.senders[0].staged.transport_params[1].destination_ip, "239.0.0.256");
     }, {"senders[0].staged.transport_params[1].source_ip is \"\", it must be \"auto\", an IPv4 "
         "address or \"null\"",
         "senders[0].staged.transport_params[1].destination_ip is \"239.0.0.256\", it must be "
         "\"auto\", an IPv4 address or \"null\""}},
    {"SenderAddressesActive", [](NMOS_IS05_ST& r) {
         set_text(r.senders[0].active.transport_params[0].source_ip, "auto");
         set_text(r.senders[0].active.transport_params[0].destination_ip, "ff02::1");
     }, {"senders[0].active.transport_params[0].source_ip is \"auto\", it must be an IPv4 address or "
         "\"null\"",
         "senders[0].active.transport_params[0].destination_ip is \"ff02::1\", it must be an IPv4 "
         "address or \"null\""}},
    {"SenderAddressesOpen", [](NMOS_IS05_ST& r) {
         set_text(r.senders[0].staged.transport_params[0].source_ip, "auto");
         set_text(r.senders[0].staged.transport_params[0].destination_ip, "auto");
         set_text(r.senders[0].staged.transport_params[1].source_ip, "null");
         set_text(r.senders[0].active.transport_params[1].destination_ip, "null");
     }, {}},
    {"SenderHasNoInterfaceNorTransportFile", [](NMOS_IS05_ST& r) {
         fill_whole(r.senders[0].active.transport_params[0].interface_ip, 'x');
         fill_whole(r.senders[0].active.transport_file_data, 'x');
         fill_whole(r.senders[0].active.transport_file_type, 'x');
     }, {}},
    {"ReceiverAddresses", [](NMOS_IS05_ST& r) {
         set_text(r.receivers[0].staged.transport_params[0].source_ip, "auto");
         set_text(r.receivers[0].staged.transport_params[0].destination_ip, "auto");
         set_text(r.receivers[0].staged.transport_params[0].interface_ip, "eth0");
         set_text(r.receivers[0].active.transport_params[0].interface_ip, "auto");
     }, {"receivers[0].staged.transport_params[0].source_ip is \"auto\", it must be an IPv4 address "
         "or \"null\"",
         "receivers[0].staged.transport_params[0].destination_ip is \"auto\", it must be an IPv4 "
         "address or \"null\"",
         "receivers[0].staged.transport_params[0].interface_ip is \"eth0\", it must be \"auto\", an "
         "IPv4 address or \"null\"",
         "receivers[0].active.transport_params[0].interface_ip is \"auto\", it must be an IPv4 "
         "address or \"null\""}},
    {"ReceiverAddressesOpen", [](NMOS_IS05_ST& r) {
         set_text(r.receivers[0].staged.transport_params[0].source_ip, "null");
         set_text(r.receivers[0].staged.transport_params[0].destination_ip, "null");
         set_text(r.receivers[0].staged.transport_params[0].interface_ip, "auto");
         set_text(r.receivers[0].active.transport_params[0].interface_ip, "null");
     }, {}},
    {"Ports", [](NMOS_IS05_ST& r) {
         r.senders[0].staged.transport_params[0].destination_port = 0;
         r.senders[0].active.transport_params[1].destination_port = 65536;
         r.receivers[0].staged.transport_params[0].destination_port = 5004.5;
         r.receivers[0].active.transport_params[0].destination_port =
             std::numeric_limits<double>::quiet_NaN();
         r.receivers[0].active.transport_params[1].destination_port =
             std::numeric_limits<double>::infinity();
     }, {"senders[0].staged.transport_params[0].destination_port is 0" + needs_port,
         "senders[0].active.transport_params[1].destination_port is 65536" + needs_port,
         "receivers[0].staged.transport_params[0].destination_port is 5004.5" + needs_port,
         "receivers[0].active.transport_params[0].destination_port is nan" + needs_port,
         "receivers[0].active.transport_params[1].destination_port is inf" + needs_port}},
    {"SourcePortOfALegThatIsNotStaged", [](NMOS_IS05_ST& r) {
         CONNECTION_HALF_IS05_ST& staged = r.senders[2].staged;
         staged.leg_count = 1;
         set_text(staged.transport_params[1].source_ip, "not shown");
         staged.transport_params[1].destination_port = -1;
     }, {"senders[2].staged.transport_params[1].destination_port is -1, it must be a whole number "
         "from 0 to 65535"}},
    {"SourcePortZeroOfALegThatIsNotStaged", [](NMOS_IS05_ST& r) {
         r.senders[2].staged.leg_count = 1;
         r.senders[2].staged.transport_params[1].destination_port = 0;
     }, {}},
    {"PortOfAReceiversLegThatIsNotStaged", [](NMOS_IS05_ST& r) {
         r.receivers[2].staged.leg_count = 1;
         r.receivers[2].staged.transport_params[1].destination_port = -1;
     }, {}},
    {"OneHalfCleared", [](NMOS_IS05_ST& r) { r.senders[0].staged = CONNECTION_HALF_IS05_ST(); },
     {"senders[0].staged.leg_count is 0, at least 1 is needed",
      "senders[0].staged.peer_id is \"\", it must be a UUID in lower case or \"null\"",
      "senders[0].staged.mode is \"\"" + needs_mode,
      "senders[0].staged.requested_time is \"\"" + needs_time_or_null,
      "senders[0].staged.activation_time is \"\"" + needs_time_or_null}},
    {"SlotsNotInUse", [](NMOS_IS05_ST& r) {
         r.senders[5] = CONNECTION_IS05_ST();
         r.receivers[0] = CONNECTION_IS05_ST();
         r.receivers[23] = CONNECTION_IS05_ST();
     }, {}},
    {"Session", [](NMOS_IS05_ST& r) {
         set_text(r.ptp_grandmaster_id, "00-00-5E-FF-FE-00-53");
         set_text(r.sdp_session_id, "");
         set_text(r.sdp_session_version, "1\r\na=x");
     }, {"ptp_grandmaster_id is \"00-00-5E-FF-FE-00-53\", it must be like 00-00-5E-FF-FE-00-53-01",
         "sdp_session_id is \"\", it must be digits",
         "sdp_session_version is \"1\\x0d\\x0aa=x\", it must be digits"}},
    {"SessionWithoutEnd", [](NMOS_IS05_ST& r) { fill_whole(r.sdp_session_id, '1'); },
     {"sdp_session_id is \"11111111111111111111111111111111\", there is no NUL in its 32 bytes"}},
    {"GrandmasterInLowerCase", [](NMOS_IS05_ST& r) {
         set_text(r.ptp_grandmaster_id, "00-00-5e-ff-fe-00-53-01");
     }, {}},
    {"SessionWithoutSenders", [](NMOS_IS05_ST& r) {
         for (auto& sender : r.senders) sender = CONNECTION_IS05_ST();
         set_text(r.ptp_grandmaster_id, "");
         set_text(r.sdp_session_id, "");
         set_text(r.sdp_session_version, "");
     }, {}},
    {"OrderOfTheFields", [](NMOS_IS05_ST& r) {
         set_text(r.senders[5].active.mode, "x");
         set_text(r.sdp_session_id, "x");
         set_text(r.receivers[0].staged.mode, "x");
     }, {"senders[5].active.mode is \"x\", it must be one of: activate_immediate, "
         "activate_scheduled_absolute, activate_scheduled_relative, null",
         "sdp_session_id is \"x\", it must be digits",
         "receivers[0].staged.mode is \"x\", it must be one of: activate_immediate, "
         "activate_scheduled_absolute, activate_scheduled_relative, null"}},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Fields, ConnectionStateFindings, testing::ValuesIn(connection_fields),
                         case_name<NMOS_IS05_ST>);

/// A slot counts as in use as soon as one of these is not as cleared.
const ConnectionCase slots_in_use[] = {
    {"ByLegs", [](NMOS_IS05_ST& r) { r.receivers[7].staged.leg_count = 1; }, {}},
    {"ByPeer", [](NMOS_IS05_ST& r) { set_text(r.receivers[7].active.peer_id, "null"); }, {}},
    {"ByMasterEnable", [](NMOS_IS05_ST& r) { r.receivers[7].active.master_enable = 1; }, {}},
    {"ByMode", [](NMOS_IS05_ST& r) { set_text(r.receivers[7].staged.mode, "null"); }, {}},
    {"ByRequestedTime",
     [](NMOS_IS05_ST& r) { set_text(r.receivers[7].staged.requested_time, "null"); },
     {}},
    {"ByActivationTime",
     [](NMOS_IS05_ST& r) { set_text(r.receivers[7].active.activation_time, "null"); },
     {}},
};

class SlotInUse : public testing::TestWithParam<ConnectionCase>
{};

TEST_P(SlotInUse, IsChecked)
{
    const auto record = std::make_unique<NMOS_IS05_ST>();
    GetParam().spoil(*record);
    EXPECT_THAT(check_record(*record),
                testing::Contains(testing::StartsWith("receivers[7].active.transport_file_type ")));
}

INSTANTIATE_TEST_SUITE_P(ConnectionStateCheck, SlotInUse, testing::ValuesIn(slots_in_use),
                         case_name<NMOS_IS05_ST>);

TEST(ConnectionStateCheck, CleanRecordHasNoFindings)
{
    EXPECT_THAT(check_record(*clean_connections()), IsEmpty());
}

TEST(ConnectionStateCheck, WhatNoBodyShowsIsNotLookedAt)
{
    EXPECT_THAT(check_record(*clean_connections(0xFF)), IsEmpty());
    EXPECT_THAT(check_record(*clean_connections('a')), IsEmpty());
}

TEST(ConnectionStateCheck, ClearedRecordHasNoFindings)
{
    EXPECT_THAT(check_record(*std::make_unique<NMOS_IS05_ST>()), IsEmpty());
}

TEST(ConnectionStateCheck, ArbitraryBytesAreNeverReadOutside)
{
    check_arbitrary_bytes<NMOS_IS05_ST>(30);
    check_equal_bytes<NMOS_IS05_ST>();
}

// ---- st_param_sys ------------------------------------------------------------------------------

using ParameterCase = Case<st_param_sys>;

class SystemParameterFindings : public testing::TestWithParam<ParameterCase>
{};

TEST_P(SystemParameterFindings, AreNamed)
{
    const auto record = clean_parameters();
    GetParam().spoil(*record);
    EXPECT_EQ(check_record(*record), GetParam().findings);
}

// clang-format off
const ParameterCase parameter_fields[] = {
    {"VideoVlanIds", [](st_param_sys& s) {
         s.pri_video_vlan_id[0] = 4096;
         s.sec_video_vlan_id[3] = -1;
     }, {"pri_video_vlan_id[0] is 4096, it must be a whole number from 0 to 4095",
         "sec_video_vlan_id[3] is -1, it must be a whole number from 0 to 4095"}},
    {"AudioVlanIds", [](st_param_sys& s) {
         s.pri_audio_vlan_id[1][0] = 32767;
         s.pri_audio_vlan_id[1][1] = 32767;
         s.sec_audio_vlan_id[2][0] = -32768;
         s.sec_audio_vlan_id[2][3] = -32768;
     }, {"pri_audio_vlan_id[1][0] is 32767, it must be a whole number from 0 to 4095",
         "sec_audio_vlan_id[2][0] is -32768, it must be a whole number from 0 to 4095"}},
    {"AncillaryVlanIds", [](st_param_sys& s) {
         s.pri_anc_vlan_id[2] = 5000;
         s.sec_anc_vlan_id[0] = -2;
     }, {"pri_anc_vlan_id[2] is 5000, it must be a whole number from 0 to 4095",
         "sec_anc_vlan_id[0] is -2, it must be a whole number from 0 to 4095"}},
    {"VideoAddresses", [](st_param_sys& s) {
         s.pri_video_addresses[0].src_ip[0] = 256;
         s.pri_video_addresses[0].dst_ip[3] = -1;
         s.sec_video_addresses[3].src_ip[3] = 1000;
         s.sec_video_addresses[3].dst_ip[0] = -1000;
     }, {"pri_video_addresses[0].src_ip[0] is 256, it must be a whole number from 0 to 255",
         "pri_video_addresses[0].dst_ip[3] is -1, it must be a whole number from 0 to 255",
         "sec_video_addresses[3].src_ip[3] is 1000, it must be a whole number from 0 to 255",
         "sec_video_addresses[3].dst_ip[0] is -1000, it must be a whole number from 0 to 255"}},
    {"AudioAddresses", [](st_param_sys& s) {
         s.pri_audio_addresses[1][0].src_ip[2] = 256;
         s.pri_audio_addresses[1][1].src_ip[2] = 256;
         s.sec_audio_addresses[3][0].dst_ip[3] = 256;
         s.sec_audio_addresses[3][3].dst_ip[3] = 256;
     }, {"pri_audio_addresses[1][0].src_ip[2] is 256, it must be a whole number from 0 to 255",
         "sec_audio_addresses[3][0].dst_ip[3] is 256, it must be a whole number from 0 to 255"}},
    {"AncillaryAddresses", [](st_param_sys& s) {
         s.pri_anc_addresses[2].dst_ip[1] = 256;
         s.sec_anc_addresses[0].src_ip[0] = 256;
     }, {"pri_anc_addresses[2].dst_ip[1] is 256, it must be a whole number from 0 to 255",
         "sec_anc_addresses[0].src_ip[0] is 256, it must be a whole number from 0 to 255"}},
    {"VideoPorts", [](st_param_sys& s) {
         s.pri_video_dst_port[2][0] = 5004;
         s.pri_video_dst_port[2][2] = 5004;
         s.sec_video_dst_port[13] = -1;
         s.sec_video_dst_port[2] = -1;
     }, {"pri_video_dst_port[2][0] is 5004, it must be a whole number from 0 to 255",
         "sec_video_dst_port[13] is -1, it must be a whole number from 0 to 255"}},
    {"AudioPorts", [](st_param_sys& s) {
         s.pri_audio_dst_port[3][1] = 256;
         s.pri_audio_dst_port[3][15] = 256;
         s.sec_audio_dst_port[48] = 256;
         s.sec_audio_dst_port[61] = 256;
     }, {"pri_audio_dst_port[3][1] is 256, it must be a whole number from 0 to 255",
         "sec_audio_dst_port[48] is 256, it must be a whole number from 0 to 255"}},
    {"AncillaryPorts", [](st_param_sys& s) {
         s.pri_anc_dst_port[0][1] = 256;
         s.sec_anc_dst_port[3][0] = -1;
         s.sec_anc_dst_port[3][3] = -1;
     }, {"pri_anc_dst_port[0][1] is 256, it must be a whole number from 0 to 255",
         "sec_anc_dst_port[3][0] is -1, it must be a whole number from 0 to 255"}},
    {"PayloadTypesBelow", [](st_param_sys& s) {
         s.sdp_rtp_payload_video = 95;
         s.sdp_rtp_payload_audio = 0;
         s.sdp_rtp_payload_anc = -96;
     }, {"sdp_rtp_payload_video is 95, it must be a whole number from 96 to 127",
         "sdp_rtp_payload_audio is 0, it must be a whole number from 96 to 127",
         "sdp_rtp_payload_anc is -96, it must be a whole number from 96 to 127"}},
    {"PayloadTypesAbove", [](st_param_sys& s) { s.sdp_rtp_payload_video = 128; },
     {"sdp_rtp_payload_video is 128, it must be a whole number from 96 to 127"}},
    {"PayloadTypeOfVideoIsNotReadForSt2022", [](st_param_sys& s) {
         s.sdp_st2110_mode = 0;
         s.sdp_rtp_payload_video = 128;
     }, {}},
    {"Bounds", [](st_param_sys& s) {
         s.pri_video_vlan_id[0] = 4095;
         s.pri_video_addresses[0].src_ip[0] = 255;
         s.pri_video_dst_port[0][1] = 255;
     }, {}},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Fields, SystemParameterFindings, testing::ValuesIn(parameter_fields),
                         case_name<st_param_sys>);

TEST(SystemParameterCheck, CleanRecordHasNoFindings)
{
    EXPECT_THAT(check_record(*clean_parameters()), IsEmpty());
}

TEST(SystemParameterCheck, CodesAndWhatIsNotReadAreNotLookedAt)
{
    EXPECT_THAT(check_record(*clean_parameters(-1)), IsEmpty());
    EXPECT_THAT(check_record(*clean_parameters(32767)), IsEmpty());
}

TEST(SystemParameterCheck, ClearedTableHasNoPayloadTypes)
{
    EXPECT_THAT(check_record(*std::make_unique<st_param_sys>()),
                ElementsAre("sdp_rtp_payload_audio is 0, it must be a whole number from 96 to 127",
                            "sdp_rtp_payload_anc is 0, it must be a whole number from 96 to 127"));
}

TEST(SystemParameterCheck, EveryElementThatIsReadHasOneFinding)
{
    st_param_sys sys;
    std::memset(&sys, 0xFF, sizeof sys);
    const Findings findings = check_record(sys);
    // 4 streams, 2 legs, 3 essences: a VLAN identifier, 8 octets and 2 port bytes; 3 payload types.
    EXPECT_EQ(findings.size(), 4u * 2 * 3 * (1 + 8 + 2) + 3);
    Findings sorted = findings;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(std::adjacent_find(sorted.begin(), sorted.end()), sorted.end());
}

TEST(SystemParameterCheck, ArbitraryBytesAreNeverReadOutside)
{
    check_arbitrary_bytes<st_param_sys>(300);
    check_equal_bytes<st_param_sys>();
}

#undef NUMBER
#undef TEXT

} // namespace
