// SPDX-License-Identifier: Apache-2.0

#include "listings/service_file.h"

#include <cstddef>

#include "text/number_text.h"
#include "text/text_buffer.h"

namespace nmos_instrument {
namespace {

void append_number_line(TextBuffer& text, std::string_view before, int number,
                        std::string_view after)
{
    char digits[number_text_size];
    const char* const end = write_integer(digits, number);
    text.append(before, std::string_view(digits, static_cast<std::size_t>(end - digits)), after);
}

} // namespace

std::string service_file_text(const ServiceValues& values)
{
    constexpr std::string_view txt_end = "</txt-record>\n";
    TextBuffer text;
    text.append("<?xml version=\"1.0\" standalone='no'?>\n"
                "<!DOCTYPE service-group SYSTEM \"avahi-service.dtd\">\n"
                "\n"
                "<service-group>\n"
                "  <name replace-wildcards=\"yes\">%h</name>\n"
                "\n"
                "  <service>\n"
                "    <type>_nmos-node._tcp</type>\n");
    append_number_line(text, "    <port>", values.port, "</port>\n");
    text.append("    <txt-record>api_proto=", values.protocol, txt_end,
                "    <txt-record>api_ver=v1.2</txt-record>\n");
    append_number_line(text, "    <txt-record>ver_slf=", values.ver_slf, txt_end);
    append_number_line(text, "    <txt-record>ver_src=", values.ver_src, txt_end);
    append_number_line(text, "    <txt-record>ver_flw=", values.ver_flw, txt_end);
    append_number_line(text, "    <txt-record>ver_dvc=", values.ver_dvc, txt_end);
    append_number_line(text, "    <txt-record>ver_snd=", values.ver_snd, txt_end);
    append_number_line(text, "    <txt-record>ver_rcv=", values.ver_rcv, txt_end);
    text.append("  </service>\n"
                "</service-group>\n");
    return text.take();
}

} // namespace nmos_instrument
