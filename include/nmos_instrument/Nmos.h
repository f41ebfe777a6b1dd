// SPDX-License-Identifier: Apache-2.0
//
// Nmos: the node's DNS-SD advertisement, the instrument's settings document, the rules that decide
// which senders and receivers the node shows, and the listings at the root of all NMOS APIs.
//
// nmos_instrument.h says what holds for all operations.
//
// ```cpp
// Nmos nmos;
// nmos.update_txt_port_number(8080);
// nmos.ver_rcv = 253; // as stored before a restart
// nmos.update_txt_ver_rcv();
// assert(nmos.ver_rcv == 254);
// nmos.update_txt_ver_rcv();
// assert(nmos.ver_rcv == 0); // 255 never occurs
//
// const std::string service = nmos.make_node_service_text(1);
// assert(service.find("<port>8080</port>") != std::string::npos);
// assert(nmos.make_node_service_text(0).empty()); // withdrawn
//
// std::string path = "a/b";
// assert(nmos.replaceAll(path, "/", "\\/") == "a\\/b" && path == "a\\/b");
//
// const int second_video_sender = 13 + 1;
// assert(nmos.is_insert_node_senders(0, second_video_sender) == 0);
// assert(nmos.is_insert_node_senders(1, second_video_sender) == 1);
// ```

#ifndef NMOS_INSTRUMENT_NMOS_H
#define NMOS_INSTRUMENT_NMOS_H

#include <string>

#include "nmos_instrument/export.h"
#include "nmos_instrument/system_parameters.h"

class NMOS_INSTRUMENT_EXPORT Nmos
{
public:
    /// Sets the members' defaults.
    Nmos();
    ~Nmos();

    /// Replaces every occurrence of `from` in `subject` by `to`, left to right, in place, and
    /// returns a copy of the result. What a replacement inserted is not searched again. An empty
    /// `from` changes nothing. `subject` is unchanged when it throws (std::bad_alloc,
    /// std::length_error).
    std::string replaceAll(std::string& subject, std::string from, std::string to);

    /// Listing of the server's root: "x-nmos/". Fixed text.
    std::string make_xnmos();

    /// Listing of "x-nmos/": "node/", "registration/", "connection/". Fixed text.
    std::string make_api();

    /// The instrument's settings as one JSON object: eight global members, "stream1" to "stream4"
    /// with 49 members each, and "judge_stream1" to "judge_stream4" with six. Slashes escaped.
    ///
    /// Intentional, since the readers of this document expect it: "stream2" to "stream4" repeat the
    /// values of "stream1"; the status objects are fixed ("link_up" true ... "comment"
    /// "No Comment"). A value outside its range is shown as it is: an octet as its signed number, a
    /// port as the signed result of low | high << 8. `ignored` is not read.
    std::string make_param_json(const st_param_sys* param, int ignored);

    /// @name Values of the advertisement's TXT records (IS-04 v1.2, peer to peer operation)
    /// @{
    void update_txt_port_number(int port);  ///< stores `port` as it is
    void update_txt_protocol(int protocol); ///< stores `protocol` as it is: 0 "http", 1 "https"
    void update_txt_ver_slf();              ///< advances ver_slf, see there
    void update_txt_ver_src();              ///< advances ver_src
    void update_txt_ver_flw();              ///< advances ver_flw
    void update_txt_ver_dvc();              ///< advances ver_dvc
    void update_txt_ver_snd();              ///< advances ver_snd
    void update_txt_ver_rcv();              ///< advances ver_rcv
    /// @}

    /// Writes the Avahi service file "/etc/avahi/services/nmos-node.service", whose folder must
    /// exist. Always returns 0; a file that cannot be written is not reported.
    ///
    /// `enable` 1 writes the text of make_node_service_text; every other value empties the file,
    /// which withdraws the advertisement. The first two arguments are not read. The members are
    /// never changed. Two calls must not run at once: they write one file.
    int make_node_service(unsigned int, int, int enable);

    /// The text that make_node_service writes: an Avahi static service of type "_nmos-node._tcp".
    /// Empty unless `enable` is 1. For hosts that keep their service files elsewhere. Since 1.0.
    ///
    /// A `protocol` other than 0 and 1 is written as "http".
    std::string make_node_service_text(int enable) const;

    /// Whether the node shows a sender: 1 yes, 0 no. `label_index` is 13 + the sender's position;
    /// any other value is shown. `all_senders` is the selector of NodeApi.h.
    int is_insert_node_senders(int all_senders, int label_index);

    /// Whether the node shows a receiver: 1 yes, 0 no. `label_index` is 17 + the receiver's
    /// position; any other value is shown. `video_only` is the selector receiver_filter of
    /// NodeApi.h, `audio_group_mode` its audio_group_filter.
    int is_insert_node_receivers(int video_only, int audio_group_mode, int label_index);

    // The members are public so that a host can keep the counters across restarts. A counter is
    // advanced by its own operation only: new = (old + 1) modulo 255. Intentional: 254 is followed
    // by 0; readers of the advertisement only look for a change. Any restored int has a defined
    // next value.

    std::string text; ///< empty; not read by any operation
    int port;         ///< TCP port of the Node API; 3000
    int protocol;     ///< 0 "http", 1 "https"; 0
    int ver_slf;      ///< version of the node (self) resource; 0
    int ver_src;      ///< version of the sources; 0
    int ver_flw;      ///< version of the flows; 0
    int ver_dvc;      ///< version of the devices; 0
    int ver_snd;      ///< version of the senders; 0
    int ver_rcv;      ///< version of the receivers; 0
};

#endif
