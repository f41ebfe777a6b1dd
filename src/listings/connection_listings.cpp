// SPDX-License-Identifier: Apache-2.0

#include "listings/connection_listings.h"

namespace nmos_instrument {
namespace {

// Intentional: the closing brackets and braces are indented irregularly.

void append_sender_leg(TextBuffer& text, std::string_view source)
{
    text.append("  {\n"
                "    \"destination_port\": {},\n"
                "    \"destination_ip\": {},\n"
                "    \"rtp_enabled\": {},\n"
                "    \"source_ip\": {\n"
                "      \"enum\": [\n"
                "        \"",
                source,
                "\"\n"
                "       ]\n"
                "     },\n"
                "    \"source_port\": {}\n");
}

void append_receiver_leg(TextBuffer& text, std::string_view interface)
{
    text.append("  {\n"
                "    \"destination_port\": {},\n"
                "    \"interface_ip\": {\n"
                "      \"enum\": [\n"
                "        \"",
                interface,
                "\",\n"
                "        \"auto\"\n"
                "       ]\n"
                "     },\n"
                "    \"multicast_ip\": {},\n"
                "    \"rtp_enabled\": {},\n"
                "    \"source_ip\": {}\n");
}

using AppendLeg = void (*)(TextBuffer&, std::string_view);

std::string constraints(AppendLeg append_leg, std::string_view leg1, std::string_view leg2)
{
    TextBuffer text;
    text.append("[\n");
    append_leg(text, leg1);
    text.append("  },\n");
    append_leg(text, leg2);
    text.append("  }\n"
                "]\n");
    return text.take();
}

} // namespace

std::string sender_constraints(std::string_view leg1_source, std::string_view leg2_source)
{
    return constraints(append_sender_leg, leg1_source, leg2_source);
}

std::string receiver_constraints(std::string_view leg1_interface, std::string_view leg2_interface)
{
    return constraints(append_receiver_leg, leg1_interface, leg2_interface);
}

} // namespace nmos_instrument
