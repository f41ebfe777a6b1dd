// SPDX-License-Identifier: Apache-2.0

#include "default_labels.h"

namespace nmos_instrument {

const TableText protocol_names[2] = {"http", "https"};

// clang-format off
const TableText default_labels[46] = {
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

void fill_strings(std::string* strings, const TableText* texts, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        strings[i] = texts[i];
}

} // namespace nmos_instrument
