// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_SERVICE_TEXT_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_SERVICE_TEXT_H

#include <string>

/// The service file of a fresh Nmos.
inline const std::string fresh_service = "<?xml version=\"1.0\" standalone='no'?>\n"
                                         "<!DOCTYPE service-group SYSTEM \"avahi-service.dtd\">\n"
                                         "\n"
                                         "<service-group>\n"
                                         "  <name replace-wildcards=\"yes\">%h</name>\n"
                                         "\n"
                                         "  <service>\n"
                                         "    <type>_nmos-node._tcp</type>\n"
                                         "    <port>3000</port>\n"
                                         "    <txt-record>api_proto=http</txt-record>\n"
                                         "    <txt-record>api_ver=v1.2</txt-record>\n"
                                         "    <txt-record>ver_slf=0</txt-record>\n"
                                         "    <txt-record>ver_src=0</txt-record>\n"
                                         "    <txt-record>ver_flw=0</txt-record>\n"
                                         "    <txt-record>ver_dvc=0</txt-record>\n"
                                         "    <txt-record>ver_snd=0</txt-record>\n"
                                         "    <txt-record>ver_rcv=0</txt-record>\n"
                                         "  </service>\n"
                                         "</service-group>\n";

#endif
