# SPDX-License-Identifier: Apache-2.0
"""Members of records: what they take and give."""

import nmos_instrument as nmos
import pytest


@pytest.fixture
def node():
    return nmos.NMOS_IS04_ST()


def test_a_new_record_is_zero(node):
    assert bytes(node) == bytes(79864)
    assert node.label == ""
    assert node.receivers[23].media_types[11] == ""
    assert node.version_seconds == 0


def test_texts_are_bounded(node):
    node.hostname = "x" * 31
    assert node.hostname == "x" * 31
    with pytest.raises(ValueError) as refused:
        node.hostname = "y" * 32
    assert str(refused.value) == (
        "NMOS_IS04_ST.hostname takes at most 31 bytes, these are 32: '" + "y" * 32 + "'")
    assert node.hostname == "x" * 31
    with pytest.raises(ValueError, match="takes at most 31 bytes, these are 32"):
        node.hostname = "é" * 16
    with pytest.raises(ValueError, match="NMOS_IS04_ST.label takes no NUL"):
        node.label = "a\0b"
    with pytest.raises(TypeError, match="NMOS_IS04_ST.label is a str, not int"):
        node.label = 5


def test_a_shorter_text_leaves_nothing_behind(node):
    node.hostname = "long name"
    node.hostname = "s"
    assert bytes(node)[352:362] == b"s" + bytes(9)


def test_a_text_without_nul_is_its_whole_width():
    node = nmos.NMOS_IS04_ST.from_buffer_copy(b"x" * 79864)
    assert node.hostname == "x" * 32


def test_bytes_that_are_no_utf8_survive(node):
    node.label = "\udcff\udc80"
    assert bytes(node)[96:99] == b"\xff\x80\0"
    assert node.label == "\udcff\udc80"


def test_arrays_have_their_entries(node):
    assert len(node.receivers) == 24
    node.receivers[3].media_types[1] = "video/raw"
    assert node.receivers[3].media_types[:3] == ["", "video/raw", ""]
    assert node.receivers[-21].media_types[1] == "video/raw"
    with pytest.raises(IndexError) as refused:
        node.receivers[24]
    assert str(refused.value) == "NMOS_IS04_ST.receivers has 24 entries, there is no 24"
    with pytest.raises(IndexError):
        node.versions[16] = "v1.2"
    with pytest.raises(ValueError, match=r"NMOS_IS04_ST.versions\[1\] takes at most 15 bytes"):
        node.versions[1] = "z" * 16
    with pytest.raises(AttributeError, match="NMOS_IS04_ST.versions is an array"):
        node.versions = ["v1.2"]
    assert [endpoint.port for endpoint in node.endpoints] == [0.0] * 26


def test_a_record_is_copied_into_an_array(node):
    clock = nmos.CLOCK_IS04_ST()
    clock.name = "clk0"
    node.clocks[2] = clock
    clock.name = "clk1"
    assert node.clocks[2].name == "clk0"
    with pytest.raises(TypeError, match=r"NMOS_IS04_ST.clocks\[0\] is a CLOCK_IS04_ST, not str"):
        node.clocks[0] = "clk0"


def test_numbers_are_bounded(node):
    node.receivers_count = -(2**31)
    assert node.receivers_count == -(2**31)
    with pytest.raises(OverflowError) as refused:
        node.receivers_count = 2**31
    assert str(refused.value) == (
        "NMOS_IS04_ST.receivers_count is from -2147483648 to 2147483647, not 2147483648")
    with pytest.raises(TypeError):
        node.receivers_count = 1.5
    node.version_seconds = 2**64 - 1
    with pytest.raises(OverflowError):
        node.version_seconds = -1
    node.endpoints[0].port = 3000
    assert node.endpoints[0].port == 3000.0


def test_flags():
    clock = nmos.CLOCK_IS04_ST()
    assert clock.locked is False
    clock.locked = True
    assert bytes(clock)[97] == 1
    assert nmos.CLOCK_IS04_ST.from_buffer_copy(b"\x80" * 98).locked is True


def test_settings_by_name_and_by_element():
    settings = nmos.st_param_sys()
    settings.redundancy = 1
    settings.pri_video_dst_port[0][0] = 5004 & 0xFF
    settings.pri_video_dst_port[0][1] = 5004 >> 8
    settings.pri_audio_addresses[3][2].dst_ip[1] = -7
    elements = memoryview(bytes(settings)).cast("h")
    assert elements[67] == 1
    assert (elements[168], elements[169]) == (0x8C, 0x13)
    assert elements[326 + (3 * 4 + 2) * 8 + 4 + 1] == -7
    with pytest.raises(OverflowError, match=r"pri_video_dst_port\[0\]\[0\] is from -32768 to 32767, not 40000"):
        settings.pri_video_dst_port[0][0] = 40000


def test_a_member_that_does_not_exist(node):
    with pytest.raises(AttributeError, match="NMOS_IS04_ST has no member lable"):
        node.lable = "misspelt"


def test_connections():
    connections = nmos.NMOS_IS05_ST()
    assert len(bytes(connections)) == 414128
    connections.receivers[23].active.transport_params[1].destination_port = 5004
    connections.senders[5].staged.peer_id = "null"
    assert connections.receivers[23].active.transport_params[1].destination_port == 5004.0
    half = nmos.CONNECTION_HALF_IS05_ST()
    half.mode = "activate_immediate"
    connections.senders[0].active = half
    assert connections.senders[0].active.mode == "activate_immediate"
    assert connections.senders[0].active.transport_params[0].reserved_at_end == bytes(7)
