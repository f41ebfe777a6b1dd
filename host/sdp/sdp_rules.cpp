// SPDX-License-Identifier: Apache-2.0

#include "sdp/sdp_finding.h"

namespace nmos_instrument::host {
namespace {

constexpr bool refuses = true;
constexpr bool warns = false;

constexpr SdpRule rules[] = {
    {SdpCode::empty, refuses, "The file is empty",
     "It has no line, or empty ones only. An SDP file begins with the line v=0 (RFC 4566 5.1)."},
    {SdpCode::not_text, refuses, "The file is no text",
     "It holds a NUL byte, as a file in UTF-16 or a binary file does. An SDP file is text in UTF-8 "
     "(RFC 4566 5)."},
    {SdpCode::not_utf8, refuses, "The file is not UTF-8",
     "RFC 4566 5 requires UTF-8, and so does the JSON in which the file travels. Names in another "
     "character set, such as ISO 8859-1, must be converted."},
    {SdpCode::too_large, refuses, "The file is too large",
     "The connection state of a receiver keeps the file and has room for 4095 bytes. Of a file "
     "with "
     "more than 64 KiB nothing else is said."},

    {SdpCode::not_a_line, refuses, "A line is no line of SDP",
     "A line is one letter, \"=\" and a value, without a blank in front of \"=\" (RFC 4566 5). A "
     "reader must not use a file that has a line with another letter."},
    {SdpCode::empty_line, warns, "There is an empty line",
     "RFC 4566 has no empty lines. They are left out; only the first is named."},
    {SdpCode::no_version, warns, "The first line is not v=0",
     "RFC 4566 5.1 requires it. The file is read as if it were there."},
    {SdpCode::other_version, refuses, "The version is not 0", "RFC 4566 5.1 knows version 0 only."},
    {SdpCode::media_line, refuses, "An m= line is malformed",
     "It has a kind, a port, a protocol and at least one payload type, with blanks between them "
     "(RFC 4566 5.14): m=video 5004 RTP/AVP 96. Port 0 means that the medium is not sent."},
    {SdpCode::connection_line, refuses, "A c= line is malformed",
     "It is c=IN IP4 ADDRESS/TTL (RFC 4566 5.7), once for a medium or once for the session. A TTL "
     "that is missing, or one of a unicast address, does no harm. The instrument has no IPv6."},
    {SdpCode::no_connection, refuses, "A leg has no c= line",
     "Each medium has an address of its own or that of the session (RFC 4566 5.7)."},
    {SdpCode::group_line, refuses, "An a=group line is malformed",
     "It is a=group:DUP ONE TWO (RFC 5888, RFC 7104): what the group means, and the names that the "
     "a=mid lines give to the media. A DUP group has two names at least."},
    {SdpCode::repeated_mid, refuses, "Two media have the same a=mid",
     "Each name stands for one medium (RFC 5888 4), so it is not clear which one a group means."},
    {SdpCode::attribute, refuses, "An attribute is malformed",
     "a=rtpmap is a payload type, a blank, and ENCODING/CLOCK RATE (RFC 4566 6); a=fmtp is a "
     "payload type, a blank, and parameters. A payload type has one a=rtpmap line. A name that "
     "tells "
     "what to join is in lower case, without blanks around it."},
    {SdpCode::wrong_level, warns, "An attribute stands in front of the first m= line",
     "a=rtpmap, a=fmtp and a=mid describe one medium and belong behind its m= line. In front of "
     "the "
     "first m= line they are left out."},

    {SdpCode::no_medium, refuses, "No medium fits the receiver",
     "A medium fits if it is carried by RTP/AVP and its a=rtpmap line gives an encoding that the "
     "receiver takes."},
    {SdpCode::several_media, refuses, "Several media fit the receiver",
     "The file does not say which one is meant. Two paths of the same essence must be named in an "
     "a=group:DUP line (RFC 7104, SMPTE ST 2110-10); of other media the receiver can take only "
     "one, "
     "so send a file with that one."},
    {SdpCode::several_pairs, warns, "Several DUP groups fit the receiver",
     "The a=group lines stand in an order, so the first pair is taken."},
    {SdpCode::dup_without_mid, warns, "A DUP group names media without names",
     "No medium has an a=mid line. The group names two and two media fit, so these are the legs, "
     "in "
     "the order of the file."},
    {SdpCode::dup_pair, refuses, "A DUP group is no pair for the receiver",
     "A name of the group belongs to no medium, or one of its media does not fit the receiver. One "
     "leg alone is not taken, since the file promises two."},
    {SdpCode::part_of_picture, refuses, "A medium is part of a picture",
     "A MULTI-2SI group spreads one picture over several media. A receiver takes whole pictures."},
    {SdpCode::port_zero, warns, "A medium has port 0",
     "It is described but not sent (RFC 3264 5.1). Its leg is switched off."},
    {SdpCode::media_beside_pair, warns, "Other media beside the pair fit too",
     "The DUP group says which two belong together, so these are taken."},
    {SdpCode::more_than_two, warns, "A DUP group has more than two media",
     "The instrument has two interfaces. The first two names are taken."},
    {SdpCode::inactive, warns, "A medium is inactive",
     "a=inactive says that nothing is sent at the moment (RFC 4566 6). The leg is joined "
     "nevertheless, for the time when it is."},

    {SdpCode::address, refuses, "An address cannot be used",
     "The instrument takes IPv4 addresses in decimal without leading zeros, which every reader "
     "understands in the same way: a multicast group, or the unicast address of its interface. It "
     "does not look up names."},
    {SdpCode::foreign_unicast, refuses, "A unicast address is not ours",
     "A unicast stream arrives only where it is sent to: it must be the address of the interface "
     "of "
     "this leg. A PATCH that gives the leg's interface_ip overrides the file."},
    {SdpCode::several_addresses, warns, "A range of addresses or ports",
     "ADDRESS/TTL/COUNT and PORT/COUNT stand for layers of one stream (RFC 4566 5.7, 5.14). Only "
     "the first is joined."},
    {SdpCode::source_filter, refuses, "A source filter is malformed",
     "It is a=source-filter: incl IN IP4 DESTINATION SOURCE (RFC 4570 3), with addresses: names "
     "are "
     "not looked up."},
    {SdpCode::other_destination, warns, "A source filter is for another address",
     "It counts only for the destination that it names (RFC 4570 3), which is not that of the c= "
     "line. It is left out."},
    {SdpCode::excluded_sources, warns, "A source filter excludes sources",
     "IS-05 can name the one source that is wanted, but none that is not. Any source is taken."},
    {SdpCode::several_sources, refuses, "A leg has several sources",
     "IS-05 has room for one source on each leg. Name one, or none, or use one medium for each "
     "path."},
    {SdpCode::two_sources, warns, "Two sources send to one group",
     "They are taken as the two paths (RFC 7104 4.1): the first source on leg 1, the second on "
     "leg 2. With the attribute a=ssrc-group:DUP the file says so itself."},
    {SdpCode::same_path, warns, "Both legs are the same",
     "Group, source and port are equal, so the second leg protects from nothing but a fault "
     "between "
     "the switch and the instrument."},

    {SdpCode::payload_type, refuses, "A payload type is not dynamic",
     "RFC 3551 leaves 96 to 127 to streams like these."},
    {SdpCode::unknown_payload_type, refuses, "A payload type is not that of the m= line",
     "a=rtpmap and a=fmtp describe a payload type of their m= line (RFC 4566 6). Packets that "
     "carry "
     "another one would be thrown away."},
    {SdpCode::no_rtpmap, warns, "A medium has no a=rtpmap line",
     "A dynamic payload type needs one (RFC 4566 6). The medium is taken for what the receiver "
     "takes."},
    {SdpCode::clock_rate, refuses, "A clock rate does not fit",
     "Video and ancillary data have 90000 (SMPTE ST 2110-20, ST 2110-40), SMPTE ST 2022-6 has "
     "27000000, and the instrument takes audio at 48000."},
    {SdpCode::channels, refuses, "A number of channels does not fit",
     "SMPTE ST 2110-30 has 1 to 64 channels in a stream."},
    {SdpCode::sampling, refuses, "Sampling or depth is not supported",
     "The instrument measures 4:2:2 with 10 bits. A value ends at \";\" or at the end of the line; "
     "blanks and quotation marks count."},
    {SdpCode::size, refuses, "The picture size is not supported",
     "The instrument measures 1920x1080, 1280x720 and, progressive only, 3840x2160."},
    {SdpCode::format_switch, refuses, "The instrument would have to switch between 2K and 4K",
     "It cannot, or its settings do not permit it: format_switching in the configuration."},
    {SdpCode::frame_rate, refuses, "The frame rate is not supported",
     "An interlaced format is given in frames, not fields. SMPTE ST 2110-20 writes a whole number "
     "without a denominator: 25, not 25/1."},
    {SdpCode::transfer_characteristic, refuses, "The transfer characteristic is not supported",
     "TCS is one of those that the instrument can show."},
    {SdpCode::colorimetry, refuses, "The colorimetry is not supported",
     "colorimetry is one of those that the instrument can show."},
    {SdpCode::packing_mode, refuses, "The packing mode is not supported",
     "PM is one of those of SMPTE ST 2110-20, or 2022-6."},
    {SdpCode::standard, refuses, "The standard is not supported",
     "SSN names the edition of the standard. The instrument knows those of 2017. Quotation marks "
     "are not part of the value in SMPTE ST 2110-20."},
    {SdpCode::traffic_profile, refuses, "The traffic profile is not supported",
     "TP is one of those of SMPTE ST 2110-21."},
    {SdpCode::no_format, warns, "There are no format parameters",
     "SMPTE ST 2110-20 requires an a=fmtp line. Without it nothing about the picture can be "
     "checked."},
    {SdpCode::carriage, warns, "The carriage is SMPTE ST 2022-6",
     "The receiver is set to SMPTE ST 2110, and the file says PM=2022-6."},
    {SdpCode::misleading, refuses, "A format line holds another line",
     "The parameters hold what looks like an address, a port or a filter, and the instrument's "
     "parser would take it for one."},

    {SdpCode::legs_differ, refuses, "The legs differ",
     "Both legs carry the same packets (SMPTE ST 2022-7), so both media have the same format."},
    {SdpCode::legs_differ_slightly, warns, "The legs are described differently",
     "Both legs carry the same packets (SMPTE ST 2022-7). What differs does not matter to the "
     "receiver."},
};

} // namespace

std::span<const SdpRule> sdp_rules()
{
    return rules;
}

} // namespace nmos_instrument::host
