// SPDX-License-Identifier: Apache-2.0
//
// The resources of example_node.h as they must come out, written by hand: `_plain` where an
// operation writes plain slashes, `_escaped` where it writes "\/". Resources that no operation
// writes with escaped slashes have one text.

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_EXAMPLE_NODE_TEXTS_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_EXAMPLE_NODE_TEXTS_H

#include <string>

#include "support/varied.h"

namespace example_texts {

/// No text of the example has an escape of its own.
inline std::string escaped(const std::string& plain)
{
    return varied(plain, {{"/", R"(\/)"}});
}

inline const std::string no_tags = R"("tags":{},)";

inline const std::string source_0_plain =
    R"({"caps":{},"clock_name":"source/0/clock","description":"source/0/description",)"
    R"("device_id":"source/0/device","format":"urn:x-nmos:format:audio","id":"source/0/id",)"
    R"("label":"source/0/label","parents":[],"tags":{},"version":"source/0/version"})";
inline const std::string source_1_plain =
    R"({"caps":{},"channels":[{"label":""}],"clock_name":"source/1/clock",)"
    R"("description":"source/1/description","device_id":"source/1/device",)"
    R"("format":"urn:x-nmos:format:video","id":"source/1/id","label":"source/1/label",)"
    R"("parents":[],"tags":{},"version":"source/1/version"})";
inline const std::string source_2_plain =
    R"({"caps":{},"clock_name":"source/2/clock","description":"source/2/description",)"
    R"("device_id":"source/2/device","format":"source/2/format","id":"source/2/id",)"
    R"("label":"source/2/label","parents":[],"tags":{},"version":"source/2/version"})";
inline const std::string source_3_plain =
    R"({"caps":{},"clock_name":"source/3/clock","description":"source/3/description",)"
    R"("device_id":"source/3/device","format":"source/3/format","id":"source/3/id",)"
    R"("label":"source/3/label","parents":[],"tags":{},"version":"source/3/version"})";

inline const std::string source_0_escaped = escaped(source_0_plain);
inline const std::string source_1_escaped = escaped(source_1_plain);
inline const std::string source_2_escaped = escaped(source_2_plain);
inline const std::string source_3_escaped = escaped(source_3_plain);

inline const std::string flow_0_plain =
    R"({"colorspace":"flow/0/colorspace",)"
    R"("components":[{"bit_depth":10,"height":1080,"name":"Y","width":1920},)"
    R"({"bit_depth":10,"height":1080,"name":"Cb","width":1920},)"
    R"({"bit_depth":10,"height":1080,"name":"Cr","width":1920}],)"
    R"("description":"flow/0/description","device_id":"flow/0/device","format":"flow/0/format",)"
    R"("frame_height":1080,"frame_width":1920,)"
    R"("grain_rate":{"denominator":1001,"numerator":60000},"id":"flow/0/id",)"
    R"("interlace_mode":"flow/0/interlace","label":"flow/0/label","media_type":"video/raw",)"
    R"("parents":[],"source_id":"flow/0/source","tags":{},)"
    R"("transfer_characteristic":"flow/0/transfer","version":"flow/0/version"})";
inline const std::string flow_1_plain =
    R"({"bit_depth":24,"description":"flow/1/description","device_id":"flow/1/device",)"
    R"("format":"flow/1/format","grain_rate":{"denominator":125,"numerator":6000},)"
    R"("id":"flow/1/id","label":"flow/1/label","media_type":"audio/L24","parents":[],)"
    R"("sample_rate":{"denominator":1,"numerator":48000},"source_id":"flow/1/source",)"
    R"("tags":{},"version":"flow/1/version"})";
inline const std::string flow_2_plain =
    R"({"description":"flow/2/description","device_id":"flow/2/device",)"
    R"("format":"urn:x-nmos:format:video","id":"flow/2/id","label":"flow/2/label",)"
    R"("media_type":"video/raw","parents":[],"source_id":"flow/2/source","tags":{},)"
    R"("version":"flow/2/version"})";
inline const std::string flow_3_plain =
    R"({"description":"flow/3/description","device_id":"flow/3/device",)"
    R"("format":"urn:x-nmos:format:audio","id":"flow/3/id","label":"flow/3/label",)"
    R"("media_type":"audio/L16","parents":[],"source_id":"flow/3/source","tags":{},)"
    R"("version":"flow/3/version"})";

inline const std::string flow_0_escaped = escaped(flow_0_plain);
inline const std::string flow_1_escaped = escaped(flow_1_plain);
inline const std::string flow_2_escaped = escaped(flow_2_plain);
inline const std::string flow_3_escaped = escaped(flow_3_plain);

/// Devices with all of their ids.
inline const std::string device_0 =
    R"({"controls":[{"href":"http://192.0.2.10/x-nmos/connection/v1.0/",)"
    R"("type":"urn:x-nmos:control:sr-ctrl/v1.0"},)"
    R"({"href":"http://192.0.2.11/second","type":"control/1"}],)"
    R"("description":"device/0/description","id":"device/0/id","label":"device/0/label",)"
    R"("node_id":"device/0/node",)"
    R"("receivers":["r/0","r/1","r/2","r/3","r/4","r/5","r/6","r/7","r/8","r/9","r/10","r/11",)"
    R"("r/12","r/13","r/14","r/15","r/16","r/17","r/18","r/19","r/20","r/21","r/22","r/23"],)"
    R"("senders":["s/0","s/1","s/2","s/3","s/4","s/5"],)"
    R"("tags":{},"type":"device/0/type","version":"device/0/version"})";
inline const std::string device_1 =
    R"({"controls":[],"description":"device/1/description","id":"device/1/id",)"
    R"("label":"device/1/label","node_id":"device/1/node","receivers":[],"senders":[],)"
    R"("tags":{},"type":"device/1/type","version":"device/1/version"})";

/// The same as the list of the Registration API has them: no tags.
inline const std::string device_0_without_tags = varied(device_0, {{no_tags, ""}});
inline const std::string device_1_without_tags = varied(device_1, {{no_tags, ""}});

inline const std::string sender_0 =
    R"({"description":"sender/0/description","device_id":"sender/0/device",)"
    R"("flow_id":"sender/0/flow","id":"sender/0/id","interface_bindings":["eth/0","eth/1"],)"
    R"("label":"sender/0/label","manifest_href":"http://192.0.2.10/sender/0/sdp",)"
    R"("subscription":{"active":false,"receiver_id":null},"tags":{},)"
    R"("transport":"sender/0/transport","version":"sender/0/version"})";
inline const std::string sender_1 =
    R"({"description":"sender/1/description","device_id":"sender/1/device",)"
    R"("flow_id":"sender/1/flow","id":"sender/1/id","interface_bindings":["eth/1"],)"
    R"("label":"sender/1/label","manifest_href":"http://192.0.2.10/sender/1/sdp",)"
    R"("subscription":{"active":true,"receiver_id":"sender/1/peer"},"tags":{},)"
    R"("transport":"sender/1/transport","version":"sender/1/version"})";
inline const std::string sender_2 =
    R"({"description":"sender/2/description","device_id":"sender/2/device",)"
    R"("flow_id":"sender/2/flow","id":"sender/2/id","interface_bindings":[],)"
    R"("label":"sender/2/label","manifest_href":"http://192.0.2.10/sender/2/sdp",)"
    R"("subscription":{},"tags":{},"transport":"sender/2/transport",)"
    R"("version":"sender/2/version"})";
/// Its id, flow_id and device_id hold the text null, which is a text like any other here.
inline const std::string sender_3 =
    R"({"description":"sender/3/description","device_id":"null","flow_id":"null","id":"null",)"
    R"("interface_bindings":[],"label":"sender/3/label",)"
    R"("manifest_href":"http://192.0.2.10/sender/3/sdp","subscription":{},"tags":{},)"
    R"("transport":"sender/3/transport","version":"sender/3/version"})";
inline const std::string sender_4 =
    R"({"description":"sender/4/description","device_id":"sender/4/device",)"
    R"("flow_id":"sender/4/flow","id":"sender/4/id","interface_bindings":[],)"
    R"("label":"sender/4/label","manifest_href":"http://192.0.2.10/sender/4/sdp",)"
    R"("subscription":{"active":true,"receiver_id":"NULL"},"tags":{},)"
    R"("transport":"sender/4/transport","version":"sender/4/version"})";
inline const std::string sender_5 =
    R"({"description":"sender/5/description","device_id":"sender/5/device",)"
    R"("flow_id":"sender/5/flow","id":"sender/5/id","interface_bindings":[],)"
    R"("label":"sender/5/label","manifest_href":"http://192.0.2.10/sender/5/sdp",)"
    R"("subscription":{},"tags":{},"transport":"sender/5/transport",)"
    R"("version":"sender/5/version"})";

inline const std::string receiver_0 =
    R"({"caps":{"media_types":["video/raw"]},"description":"receiver/0/description",)"
    R"("device_id":"receiver/0/device","format":"receiver/0/format","id":"receiver/0/id",)"
    R"("interface_bindings":["eth/0","eth/1"],"label":"receiver/0/label",)"
    R"("subscription":{"active":false,"sender_id":null},"tags":{},)"
    R"("transport":"receiver/0/transport","version":"receiver/0/version"})";
inline const std::string receiver_1 =
    R"({"caps":{"media_types":["audio/L24","audio/L16","video/smpte291"]},)"
    R"("description":"receiver/1/description","device_id":"receiver/1/device",)"
    R"("format":"receiver/1/format","id":"receiver/1/id","interface_bindings":["eth/1"],)"
    R"("label":"receiver/1/label",)"
    R"("subscription":{"active":true,"sender_id":"receiver/1/peer"},"tags":{},)"
    R"("transport":"receiver/1/transport","version":"receiver/1/version"})";
inline const std::string receiver_2 =
    R"({"caps":{"media_types":[]},"description":"receiver/2/description",)"
    R"("device_id":"receiver/2/device","format":"receiver/2/format","id":"receiver/2/id",)"
    R"("interface_bindings":[],"label":"receiver/2/label","subscription":{},"tags":{},)"
    R"("transport":"receiver/2/transport","version":"receiver/2/version"})";
inline const std::string receiver_23 =
    R"({"caps":{"media_types":[]},"description":"receiver/23/description",)"
    R"("device_id":"receiver/23/device","format":"receiver/23/format","id":"receiver/23/id",)"
    R"("interface_bindings":[],"label":"receiver/23/label","subscription":{},"tags":{},)"
    R"("transport":"receiver/23/transport","version":"receiver/23/version"})";

} // namespace example_texts

#endif
