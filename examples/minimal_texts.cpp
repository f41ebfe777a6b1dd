// SPDX-License-Identifier: Apache-2.0
//
// The text library alone: records filled once, texts made from them.

#include <cstdio>
#include <memory>

#include <nmos_instrument/nmos_instrument.h>

using namespace nmos_instrument;

int main()
{
    RecordsDescription about;
    about.seed = "QX0000001"; // the serial number: all ids are made from it
    about.label = "Rack 4";
    about.interfaces[0] = {"media1", "00:00:5e:00:53:01", "192.0.2.10"};
    about.interfaces[1] = {"media2", "00:00:5e:00:53:02", "198.51.100.10"};
    about.address = "192.0.2.1";
    about.port = 8080;
    about.grandmaster = "00-00-5E-FF-FE-00-53-01";
    about.version_seconds = 1541234567; // of a real instrument: now, TAI

    const std::unique_ptr<NMOS_IS04_ST> node(new NMOS_IS04_ST());
    const std::unique_ptr<NMOS_IS05_ST> connections(new NMOS_IS05_ST());
    st_param_sys settings;
    Selection shown;
    for (const std::string& finding :
         fill_default_records(about, *node, *connections, settings, shown))
        std::fprintf(stderr, "%s\n", finding.c_str());

    set_text(node->receivers[receiver_video_1].label, "Monitor");
    std::printf("%s\n", NodeApi().make_self(node.get()).c_str());
    std::printf("%s\n", NodeApi().make_receiverid(node.get(), receiver_video_1).c_str());
    std::printf("%s", ConnectionApi()
                          .make_single_senderid_sdp(connections.get(), sender_audio, &settings)
                          .c_str());
    return 0;
}
