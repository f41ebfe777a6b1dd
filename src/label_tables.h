// SPDX-License-Identifier: Apache-2.0
//
// The protocol names and the instrument's default resource labels.
//
// Each unit that includes this header holds its own copy, built when the library is loaded (protocols
// first, then labels) and released when it is unloaded. No operation reads the labels: they reach the
// bodies through the `label` fields that the host writes. Their positions are the numbering of the
// membership rules.

#ifndef NMOS_INSTRUMENT_SRC_LABEL_TABLES_H
#define NMOS_INSTRUMENT_SRC_LABEL_TABLES_H

#include <string>

// clang-format off
[[maybe_unused]] static const std::string str_protocol[2] = {"http", "https"};

[[maybe_unused]] static const std::string uuid_label_list[46] = {
    /*  0 node            */ "QX3100/QX3300",
    /*  1 sources         */ "Source for Video",
                             "Source for Audio",
                             "Source for ANCILLARY",
                             "EN_Source_4",
    /*  5 flows           */ "Flow for Video",
                             "Flow for Audio",
                             "Flow for ANCILLARY",
                             "EN_Flow_4",
    /*  9 devices         */ "QX3100-OPT21 IP OPTION",
                             "EN_Device_2",
                             "EN_Device_3",
                             "EN_Device_4",
    /* 13 video senders   */ "IP Stream 1 Video Sender",
                             "IP Stream 2 Video Sender",
                             "IP Stream 3 Video Sender",
                             "IP Stream 4 Video Sender",
    /* 17 video receivers */ "IP Stream 1 for Video",
                             "IP Stream 2 for Video",
                             "IP Stream 3 for Video",
                             "IP Stream 4 for Video",
    /* 21 audio receivers */ "IP Stream 1 G1 for Audio",
                             "IP Stream 1 G2 for Audio",
                             "IP Stream 1 G3 for Audio",
                             "IP Stream 1 G4 for Audio",
    /* 25                 */ "IP Stream 2 G1 for Audio",
                             "IP Stream 2 G2 for Audio",
                             "IP Stream 2 G3 for Audio",
                             "IP Stream 2 G4 for Audio",
    /* 29                 */ "IP Stream 3 G1 for Audio",
                             "IP Stream 3 G2 for Audio",
                             "IP Stream 3 G3 for Audio",
                             "IP Stream 3 G4 for Audio",
    /* 33                 */ "IP Stream 4 G1 for Audio",
                             "IP Stream 4 G2 for Audio",
                             "IP Stream 4 G3 for Audio",
                             "IP Stream 4 G4 for Audio",
    /* 37 ancillary       */ "IP Stream 1 for ANCILLARY",
                             "IP Stream 2 for ANCILLARY",
                             "IP Stream 3 for ANCILLARY",
                             "IP Stream 4 for ANCILLARY",
    /* 41 test entries    */ "IP_TEST12",
                             "IP_TEST13",
                             "IP_TEST14",
    /* 44 other senders   */ "IP Stream 1 Audio Sender",
                             "IP Stream 1 ANCILLARY Sender",
};
// clang-format on

#endif
