// SPDX-License-Identifier: Apache-2.0

#include "listings/service_file.h"

#include "text/number_text.h"
#include "text/text_buffer.h"

namespace nmos_instrument {

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
                "    <type>_nmos-node._tcp</type>\n"
                "    <port>",
                NumberText(values.port),
                "</port>\n"
                "    <txt-record>api_proto=",
                values.protocol, txt_end, "    <txt-record>api_ver=v1.2", txt_end,
                "    <txt-record>ver_slf=", NumberText(values.ver_slf), txt_end,
                "    <txt-record>ver_src=", NumberText(values.ver_src), txt_end,
                "    <txt-record>ver_flw=", NumberText(values.ver_flw), txt_end,
                "    <txt-record>ver_dvc=", NumberText(values.ver_dvc), txt_end,
                "    <txt-record>ver_snd=", NumberText(values.ver_snd), txt_end,
                "    <txt-record>ver_rcv=", NumberText(values.ver_rcv), txt_end,
                "  </service>\n"
                "</service-group>\n");
    return text.take();
}

} // namespace nmos_instrument
