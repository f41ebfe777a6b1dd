// SPDX-License-Identifier: Apache-2.0
//
// RegistrationApi: the request bodies of the IS-04 v1.2 Registration API, and the rewriting of the
// record that goes with registration.
//
// What holds for all operations (JSON text, bounded fields and counts, exceptions, threads) stands
// in nmos_instrument.h; the selectors in NodeApi.h. A registration body is the Node API's resource
// in an envelope: {"data":<resource>,"type":"<kind>"}. Whether its slashes are plain or escaped
// differs from kind to kind; that is meant, and the same JSON value to every reader.
//
// Three operations write into their record: make_resource_node, update_version and
// update_ipAddress. They must not run while another call reads the same record.

#ifndef NMOS_INSTRUMENT_REGISTRATIONAPI_H
#define NMOS_INSTRUMENT_REGISTRATIONAPI_H

#include <string>

#include "nmos_instrument/export.h"
#include "nmos_instrument/node_state.h"

class NMOS_INSTRUMENT_EXPORT RegistrationApi
{
public:
    RegistrationApi();
    ~RegistrationApi();

    /// Listing of the API's versions: "v1.2/". Fixed text.
    std::string make_version();

    /// Listing of the API's resources, "resource/" and "health/". Fixed text; `rec` is not read and
    /// may be null.
    std::string make_base(NMOS_IS04_ST* rec);

    /// Body of the heartbeat: always empty. `rec` is not read and may be null.
    std::string make_health(NMOS_IS04_ST* rec);

    /// Registration of the node: NodeApi::make_self in an envelope of type "node". Plain slashes.
    ///
    /// Writes: calls update_version first, so that the body carries the new version. Throws as
    /// NodeApi::make_self does; the versions are rewritten by then.
    std::string make_resource_node(NMOS_IS04_ST* rec);

    /// Array of `devices_count` devices WITHOUT "tags" and without envelopes. Plain slashes. It is
    /// meant so; to register a device, post make_resource_deviceid.
    std::string make_resource_devices(NMOS_IS04_ST* rec, int receiver_filter,
                                      int audio_group_filter, int sender_filter);

    /// Registration of `devices[index]`, index 0 to 3, type "device", with "tags". Plain slashes.
    /// Throws std::out_of_range.
    std::string make_resource_deviceid(NMOS_IS04_ST* rec, int index, int receiver_filter,
                                       int audio_group_filter, int sender_filter);

    /// Array of `sources_count` registrations of type "source". Slashes escaped ("\/").
    std::string make_resource_sources(NMOS_IS04_ST* rec);

    /// Registration of `sources[index]`, index 0 to 3, type "source". Slashes escaped ("\/").
    /// Unlike NodeApi::make_sourceid it does not read the count. Throws std::out_of_range.
    std::string make_resource_sourceid(NMOS_IS04_ST* rec, int index);

    /// Array of `flows_count` registrations of type "flow". Slashes escaped ("\/"). Throws
    /// std::overflow_error when a number that is written is NaN or infinite.
    std::string make_resource_flows(NMOS_IS04_ST* rec);

    /// Registration of `flows[index]`, index 0 to 3, type "flow". Slashes escaped ("\/"). Unlike
    /// NodeApi::make_flowid it does not read the count. Throws std::out_of_range,
    /// std::overflow_error.
    std::string make_resource_flowid(NMOS_IS04_ST* rec, int index);

    /// Array of `senders_count` registrations of type "sender", no selector. Plain slashes.
    std::string make_resource_senders(NMOS_IS04_ST* rec);

    /// Registration of `senders[index]`, index 0 to 5, type "sender". Plain slashes. Unlike
    /// NodeApi::make_senderid it does not read the count. Throws std::out_of_range.
    std::string make_resource_senderid(NMOS_IS04_ST* rec, int index);

    /// Array of `receivers_count` registrations of type "receiver", no selector. Plain slashes.
    std::string make_resource_receivers(NMOS_IS04_ST* rec);

    /// Registration of `receivers[index]`, index 0 to 23, type "receiver". Plain slashes. Throws
    /// std::out_of_range.
    std::string make_resource_receiverid(NMOS_IS04_ST* rec, int index);

    /// Writes "<version_seconds>:<version_nanoseconds>" into `version` of the node, of the
    /// `devices_count` devices and of the `receivers_count` receivers; the rest of each field is
    /// cleared. Sources, flows and senders keep the host's versions: meant so, the host restamps
    /// them when it changes them. Does not throw.
    void update_version(NMOS_IS04_ST* rec);

    /// Moves the record's endpoints towards another address. Writes:
    ///
    /// - the first four bytes of the node's `href`, which become "http"; no more than that;
    /// - for each of `endpoints_count` endpoints the first four bytes of `host` by those of `ip`
    ///   (an `ip` of up to three bytes: its text and NUL), and `port`.
    ///
    /// Four bytes only, never the whole address: "192.168.1.20" with "10.0.0.5" becomes
    /// "10.0168.1.20". It is meant so and kept; a host that wants a new `href` or `host` writes
    /// them itself. `port` is read like strtod in the C locale, up to its first NUL: leading white
    /// space, sign, hexadecimal, "inf" and "nan" are understood, text that does not start with a
    /// number is 0. An infinite or NaN port makes later node bodies throw. Does not throw itself.
    void update_ipAddress(NMOS_IS04_ST* rec, std::string ip, std::string port);
};

#endif
