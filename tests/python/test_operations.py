# SPDX-License-Identifier: Apache-2.0
"""Operations by texts that are spelled out. That each text is right in every case is tested in C++;
that C and C++ answer alike, in tests/c."""

import json
import math
import threading

import nmos_instrument as nmos
import pytest


@pytest.fixture
def node():
    node = nmos.NMOS_IS04_ST()
    node.receivers_count = 1
    receiver = node.receivers[0]
    receiver.id = "2a14b7a2-5a0c-4a43-b7b0-9cf0a2b1c002"
    receiver.label = "Vidéo"
    receiver.media_types[0] = "video/raw"
    receiver.media_types_count = 1
    receiver.subscription[0].peer_id = "null"
    receiver.subscription_count = 1
    return node


RECEIVER = ('{"caps":{"media_types":["video/raw"]},"description":"","device_id":"","format":"",'
            '"id":"2a14b7a2-5a0c-4a43-b7b0-9cf0a2b1c002","interface_bindings":[],"label":"Vidéo",'
            '"subscription":{"active":false,"sender_id":null},"tags":{},"transport":"",'
            '"version":""}')


def test_node_bodies(node):
    assert nmos.node_version() == '[\n    "v1.2/"\n]\n'
    assert nmos.node_receivers(node, 0, 2) == f"[{RECEIVER}]"
    assert nmos.node_receivers(node, receiver_filter=1, audio_group_filter=0) == f"[{RECEIVER}]"
    assert nmos.node_receiverid(node, 0) == RECEIVER
    assert nmos.node_sources(node) == "[]"
    assert nmos.node_sourceid(node, 0) == "{}"
    node.senders[0].label = "S"
    assert json.loads(nmos.node_receiverid_target(node.senders[0]))["label"] == "S"


def test_registration(node):
    node.version_seconds = 1541234567
    node.version_nanoseconds = 5
    body = nmos.registration_resource_node(node)
    assert body.startswith('{"data":{"api":{') and body.endswith(
        '"version":"1541234567:5"},"type":"node"}')
    assert node.version == "1541234567:5"
    node.version_nanoseconds = 6
    assert nmos.registration_update_version(node) is None
    assert node.receivers[0].version == "1541234567:6"
    node.endpoints_count = 1
    node.endpoints[0].host = "192.168.1.20"
    nmos.registration_update_ip_address(node, "10.0.0.5", "3001")
    assert node.endpoints[0].host == "10.0168.1.20"
    assert node.endpoints[0].port == 3001.0
    assert nmos.registration_health() == ""


def test_connection_bodies():
    connections = nmos.NMOS_IS05_ST()
    staged = connections.receivers[0].staged
    staged.leg_count = 1
    staged.peer_id = "null"
    staged.transport_params[0].destination_ip = "239.0.0.1"
    staged.transport_params[0].destination_port = 5004
    body = json.loads(nmos.connection_single_receiverid_staged(connections, 0))
    assert body["sender_id"] is None
    assert body["transport_params"][0]["multicast_ip"] == "239.0.0.1"
    assert body["transport_params"][0]["destination_port"] == 5004
    sdp = nmos.connection_single_senderid_sdp(connections, 0, nmos.st_param_sys())
    assert sdp.startswith("v=0\r\n") and sdp.endswith("\r\n")
    constraints = json.loads(
        nmos.connection_single_senderid_constraints("192.0.2.10", "192.0.2.11"))
    assert [leg["source_ip"]["enum"] for leg in constraints] == [["192.0.2.10"], ["192.0.2.11"]]


def test_sdp_files():
    found, errors = nmos.connection_analyze_sdp_file(
        "c=IN IP4 239.0.0.1/64\r\nm=video 5004 RTP/AVP 96\r\n", True, 3, False)
    assert (found.status, errors) == (200, "")
    assert found.multicast_ip[:] == ["239.0.0.1", ""]
    assert found.destination_port[0] == "5004"
    assert found.rtp_payload_type == 96
    flag = nmos.SdpFoundFlag
    assert flag(found.found_flags) == (
        flag.multicast_ip_leg0 | flag.destination_port_leg0 | flag.rtp_payload_type)

    found, errors = nmos.connection_analyze_sdp_file(
        b"m=video 65536 RTP/AVP 97\r\n", True, 3, False)
    assert (found.status, errors) == (400, "Destination Port 65536 is range over.\n")
    assert found.rtp_payload_type == 97

    with pytest.raises(nmos.SdpFileError) as refused:
        nmos.connection_analyze_sdp_file(
            "m=video 65536 RTP/AVP 97\r\na=group:DUP first\r\n", True, 3, False)
    assert refused.value.errors == "Destination Port 65536 is range over.\n"
    assert refused.value.found.rtp_payload_type == 97
    with pytest.raises(OverflowError):
        nmos.connection_analyze_sdp_file("", True, 2**15, False)


def test_text_functions():
    assert nmos.connection_convert_crlf("a\r\nb\0\rc", "-") == "a-b\0-c"
    assert nmos.connection_fullpath_from_request("GET /x-nmos/ HTTP/1.1") == "/x-nmos/"
    with pytest.raises(ValueError, match="a request line its \"/\""):
        nmos.connection_fullpath_from_request("GET")
    assert nmos.connection_split_string("a bb 12x", " ", 8) == (2, ["a", "bb", "12"])
    assert nmos.connection_split_string("a bb 12x", " ", 2) == (2, ["a", "bb"])
    assert nmos.connection_split_string("a bb 12x", " ", 0) == (0, [])
    assert nmos.replace_all("a/b/c", "/", "\\/") == "a\\/b\\/c"


def test_advertisement():
    advertisement = nmos.nmos_advertisement()
    assert (advertisement.port, advertisement.protocol, advertisement.ver_rcv) == (3000, 0, 0)
    nmos.advertisement_update_txt_port_number(advertisement, 8080)
    advertisement.ver_rcv = 253
    nmos.advertisement_update_txt_ver_rcv(advertisement)
    assert advertisement.ver_rcv == 254
    nmos.advertisement_update_txt_ver_rcv(advertisement)
    assert advertisement.ver_rcv == 0
    text = nmos.advertisement_node_service_text(advertisement, 1)
    assert "<port>8080</port>" in text
    assert nmos.advertisement_node_service_text(advertisement, 0) == ""


def test_settings_and_membership():
    settings = nmos.st_param_sys()
    settings.redundancy = 1
    assert '"redundancy":1,' in nmos.param_json(settings)
    assert nmos.is_insert_node_senders(0, 13 + 1) == 0
    assert nmos.is_insert_node_senders(1, 13 + 1) == 1
    assert nmos.is_insert_node_receivers(0, 0, 17 + 5) == 0


def test_version():
    assert nmos.version().split(".")[0] == "1"


def test_findings_across_records(node):
    node.receivers[0].id = ""
    connections, settings = nmos.NMOS_IS05_ST(), nmos.st_param_sys()
    connections.receivers[0].active.leg_count = 1
    connections.receivers[0].active.master_enable = True
    findings = nmos.check_records(node, connections, settings, 0, 2, 1)
    assert findings and all(isinstance(finding, str) for finding in findings)
    with pytest.raises(TypeError, match="settings is a st_param_sys, not NMOS_IS05_ST"):
        nmos.check_records(node, connections, connections, 0, 2, 1)


def test_findings(node):
    assert nmos.check_node(node)[0] == 'id is "", it must be a UUID in lower case'
    assert nmos.check_connections(nmos.NMOS_IS05_ST()) == []


def test_indexes_outside_of_their_array(node):
    connections = nmos.NMOS_IS05_ST()
    for index in (-1, 24, 2**31 - 1, -(2**31)):
        for call in (lambda: nmos.node_receiverid(node, index),
                     lambda: nmos.node_deviceid(node, index, 0, 0, 0),
                     lambda: nmos.connection_single_senderid_staged(connections, index),
                     lambda: nmos.connection_single_receiverid_staged(connections, index),
                     lambda: nmos.connection_single_receiverid_active(connections, index)):
            with pytest.raises(IndexError):
                call()
    with pytest.raises(OverflowError, match="index is an int of 32 bits, 2147483648 is not"):
        nmos.node_receiverid(node, 2**31)


def test_numbers_that_json_cannot_show(node):
    node.endpoints_count = 1
    for port in (math.nan, math.inf, -math.inf):
        node.endpoints[0].port = port
        with pytest.raises(OverflowError, match="infinite or NaN"):
            nmos.node_self(node)


def test_arguments_of_another_kind(node):
    with pytest.raises(TypeError, match="node is a NMOS_IS04_ST, not NMOS_IS05_ST"):
        nmos.node_self(nmos.NMOS_IS05_ST())
    with pytest.raises(TypeError):
        nmos.node_self(None)
    with pytest.raises(TypeError, match="index is an int, not str"):
        nmos.node_receiverid(node, "0")
    with pytest.raises(TypeError):
        nmos.node_receiverid(node)
    with pytest.raises(ValueError, match="ip takes no NUL"):
        nmos.registration_update_ip_address(node, "10\0", "1")


def test_a_text_that_is_larger_than_the_first_buffer():
    text = "a\n" * 60000
    assert nmos.connection_convert_crlf(text, "<br>") == "a<br>" * 60000


def test_many_threads(node):
    wrong = []

    def ask():
        for _ in range(200):
            if nmos.node_receivers(node, 0, 2) != f"[{RECEIVER}]":
                wrong.append(1)

    threads = [threading.Thread(target=ask) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert wrong == []
