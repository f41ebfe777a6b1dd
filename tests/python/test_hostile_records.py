# SPDX-License-Identifier: Apache-2.0
"""Every operation on the records and files of the fuzz corpora, and on bytes that repeat: it returns
a text, or raises what it is documented to raise. Run with the address sanitizer, nothing else is
touched."""

import json
import random

import nmos_instrument as nmos
import pytest
from conftest import ROOT

CORPUS = ROOT / "fuzz" / "corpus"


def repeated(data, size):
    """As the fuzz targets fill a record: the bytes repeat when they are too few."""
    return (data * (size // len(data) + 1))[:size] if data else bytes(size)


def files_of(target):
    return sorted((CORPUS / target).iterdir())


def hostile_bytes():
    """The files of the record targets, and what no file of them is: texts without NUL, NaN in every
    double, counts at both ends, noise."""
    for target in ("node_record", "connection_record"):
        for file in files_of(target):
            yield pytest.param(file.read_bytes(), id=f"{target}-{file.name}")
    yield pytest.param(b"\xff" * 8, id="nan")
    yield pytest.param(b"\x7f", id="high-counts")
    yield pytest.param(b"\x80", id="low-counts")
    yield pytest.param(b'\xc3("\\/', id="quotes")
    yield pytest.param(random.Random(14).randbytes(4096), id="noise")


INDEXES = (-(2**31), -1, 0, 1, 3, 5, 6, 23, 24, 2**31 - 1)
SELECTORS = ((0, 0, 0), (1, 2, 1), (-1, 1, -1), (2**31 - 1, -(2**31), 5))


def answer(function, *arguments, is_json=True):
    try:
        text = function(*arguments)
    except (IndexError, OverflowError) as error:
        assert str(error)
        return
    if is_json:
        json.loads(text, strict=True)


@pytest.mark.parametrize("data", hostile_bytes())
def test_node(data):
    node = nmos.NMOS_IS04_ST.from_buffer_copy(repeated(data, 79864))
    for function in (nmos.node_self, nmos.node_sources, nmos.node_flows,
                     nmos.registration_resource_node, nmos.registration_resource_sources,
                     nmos.registration_resource_flows, nmos.registration_resource_senders,
                     nmos.registration_resource_receivers):
        answer(function, node)
    for first, second, third in SELECTORS:
        answer(nmos.node_devices, node, first, second, third)
        answer(nmos.registration_resource_devices, node, first, second, third)
        answer(nmos.node_senders, node, third)
        answer(nmos.node_receivers, node, first, second)
        answer(nmos.connection_single_receivers, node, first, second, is_json=False)
        answer(nmos.connection_single_senders, node, third != 0, is_json=False)
        for index in INDEXES:
            answer(nmos.node_deviceid, node, index, first, second, third)
            answer(nmos.registration_resource_deviceid, node, index, first, second, third)
    for index in INDEXES:
        for function in (nmos.node_sourceid, nmos.node_flowid, nmos.node_senderid,
                         nmos.node_receiverid, nmos.registration_resource_sourceid,
                         nmos.registration_resource_flowid, nmos.registration_resource_senderid,
                         nmos.registration_resource_receiverid):
            answer(function, node, index)
    for sender in node.senders:
        answer(nmos.node_receiverid_target, sender)
    assert isinstance(nmos.check_node(node), list)
    nmos.registration_update_version(node)
    nmos.registration_update_ip_address(node, "x" * 1000, "1e999")
    for member in nmos.NMOS_IS04_ST.__annotations__:
        repr(getattr(node, member))


@pytest.mark.parametrize("data", hostile_bytes())
def test_connections_and_settings(data):
    connections = nmos.NMOS_IS05_ST.from_buffer_copy(repeated(data, 414128))
    settings = nmos.st_param_sys.from_buffer_copy(repeated(data, 1874))
    for index in INDEXES:
        for function in (nmos.connection_single_receiverid_staged,
                         nmos.connection_single_receiverid_active,
                         nmos.connection_single_senderid_staged,
                         nmos.connection_single_senderid_active):
            answer(function, connections, index)
        answer(nmos.connection_single_senderid_sdp, connections, index, settings, is_json=False)
    answer(nmos.param_json, settings)
    assert isinstance(nmos.check_connections(connections), list)
    assert isinstance(nmos.check_settings(settings), list)
    node = nmos.NMOS_IS04_ST.from_buffer_copy(repeated(data, 79864))
    for first, second, third in SELECTORS:
        assert isinstance(nmos.check_records(node, connections, settings, first, second, third),
                          list)


@pytest.mark.parametrize("file", files_of("sdp_file") + files_of("sdp_reading"),
                         ids=lambda file: file.name)
def test_sdp_files(file):
    sdp = file.read_bytes()[2:] if file.parent.name == "sdp_file" else file.read_bytes()
    for current_format in (-(2**15), 0, 3, 9, 2**15 - 1):
        try:
            found, errors = nmos.connection_analyze_sdp_file(sdp, True, current_format, False)
        except nmos.SdpFileError as error:
            found, errors = error.found, error.errors
        else:
            assert found.status == (200 if errors == "" else 400)
        assert found.found_flags & ~0x1FFF == 0
        assert errors == "" or errors.endswith("\n")
    assert "\r" not in nmos.connection_convert_crlf(sdp, "\n")


@pytest.mark.parametrize("file", files_of("text_functions") + files_of("request_line"),
                         ids=lambda file: file.name)
def test_texts(file):
    text = file.read_bytes()
    try:
        nmos.connection_fullpath_from_request(text)
    except ValueError:
        assert b"/" not in text
    nmos.replace_all(text, "a", "aa" * 50)
    for parts in (-1, 0, 1, 7, 2**31 - 1):
        count, entries = nmos.connection_split_string(text.replace(b"\0", b""), " ", parts)
        assert 0 <= count <= max(parts, 0) and len(entries) in (count, count + 1)
