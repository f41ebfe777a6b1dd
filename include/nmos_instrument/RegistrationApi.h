// SPDX-License-Identifier: Apache-2.0
//
// RegistrationApi: the request bodies of the IS-04 v1.2 Registration API, and the changes to the
// record that go with registration.
//
// nmos_instrument.h says what holds for all operations, NodeApi.h what the selectors mean. A
// registration body is the Node API's resource in an envelope: {"data":<resource>,"type":"<kind>"}.
//
// Three operations write into their record: make_resource_node, update_version and
// update_ipAddress. They must not run while another call reads the same record.
//
// ```cpp
// std::unique_ptr<NMOS_IS04_ST> node(new NMOS_IS04_ST()); // all zero
// node->version_seconds = 1541234567;                     // the host's clock, TAI
// node->version_nanoseconds = 5;
// std::strcpy(node->sources[0].version, "1541230000:0");
// node->sources_count = 1;
//
// RegistrationApi api;
// const std::string body = api.make_resource_node(node.get());
// assert(body.find("{\"data\":{\"api\":{") == 0);
// assert(body.find("\"version\":\"1541234567:5\"},\"type\":\"node\"}") != std::string::npos);
// assert(std::string(node->version) == "1541234567:5");            // the record was written
// assert(std::string(node->sources[0].version) == "1541230000:0"); // this is the host's
//
// // update_ipAddress does not move a node to another address:
// node->endpoints_count = 1;
// std::strcpy(node->endpoints[0].host, "192.168.1.20");
// api.update_ipAddress(node.get(), "10.0.0.5", "3001");
// assert(std::string(node->endpoints[0].host) == "10.0168.1.20");
// assert(node->endpoints[0].port > 3000.5 && node->endpoints[0].port < 3001.5);
// ```

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

    /// Array of `devices_count` devices WITHOUT "tags" and without envelopes. Plain slashes.
    /// Intentional: this list is not for posting. To register a device, post
    /// make_resource_deviceid.
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
    /// cleared. Intentional: sources, flows and senders keep their versions; the host writes a new
    /// one when it changes such a resource. Does not throw.
    void update_version(NMOS_IS04_ST* rec);

    /// Writes a part of another address into the record:
    ///
    /// - the first four bytes of the node's `href` become "http";
    /// - the first four bytes of `host` of each of `endpoints_count` endpoints become those of `ip`
    ///   (of a shorter `ip`, its text and a NUL);
    /// - `port` of each of these endpoints becomes `port`.
    ///
    /// Intentional: four bytes only; what the host wrote after them stays. To change `href` or
    /// `host`, write them yourself.
    ///
    /// `port` is read like strtod in the C locale, up to its first NUL. Leading white space, a
    /// sign, hexadecimal, "inf" and "nan" are understood; text that does not start with a number is
    /// 0. A port that is infinite or NaN makes later node bodies throw. Throws std::bad_alloc,
    /// before anything is written.
    void update_ipAddress(NMOS_IS04_ST* rec, std::string ip, std::string port);
};

#endif
