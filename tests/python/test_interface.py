# SPDX-License-Identifier: Apache-2.0
"""Python has what the C headers have: every function, every record, every member in its place."""

import ctypes
import inspect
import os
import re
import shutil
import subprocess

import nmos_instrument
import pytest
from conftest import ROOT, without_sanitizer
from headers import functions, records



def test_the_headers_are_read():
    assert len(functions()) == 74
    assert "node_receivers" in functions() and "check_settings" in functions()
    assert len(records()) == 20
    assert records()["ENDPOINT_IS04_ST"] == ["host", "port", "protocol"]
    assert records()["nmos_advertisement"][0] == "port"
    assert len(records()["NMOS_IS04_ST"]) == 28


@pytest.mark.parametrize("name", functions())
def test_every_operation_is_there_with_words(name):
    function = getattr(nmos_instrument, name)
    assert inspect.isfunction(function)
    assert len(inspect.getdoc(function)) > 10
    signature = inspect.signature(function)
    assert signature.return_annotation is not inspect.Signature.empty
    for parameter in signature.parameters.values():
        assert parameter.annotation is not inspect.Parameter.empty


def test_no_operation_is_there_that_c_has_not():
    own = {name for name, value in vars(nmos_instrument).items()
           if inspect.isfunction(value) and not name.startswith("_")}
    assert own == set(functions())


@pytest.mark.parametrize("name", records())
def test_every_member_is_there(name):
    record = getattr(nmos_instrument, name)
    assert list(record.__annotations__) == records()[name]
    assert inspect.getdoc(record)


def test_members_lie_where_the_compiler_puts_them(tmp_path):
    compiler = os.environ.get("NMOS_C_COMPILER") or shutil.which("cc")
    if not compiler:
        pytest.skip("there is no C compiler")
    lines = []
    for record, members in records().items():
        lines.append(f'printf("{record} %zu\\n", sizeof({record}));')
        for member in members:
            lines.append(f'printf("{record}.{member} %zu %zu\\n", offsetof({record}, {member}),'
                         f" sizeof((({record}*)0)->{member}));")
    source = tmp_path / "layout.c"
    source.write_text("#include <stddef.h>\n#include <stdio.h>\n#include \"nmos_instrument_c.h\"\n"
                      "int main(void) {\n" + "\n".join(lines) + "\nreturn 0; }\n")
    subprocess.run([compiler, "-std=c11", f"-I{ROOT / 'include'}", source, "-o", tmp_path / "layout"],
                   check=True, env=without_sanitizer())
    in_c = subprocess.run([tmp_path / "layout"], check=True, capture_output=True, text=True,
                          env=without_sanitizer()).stdout.splitlines()
    in_python = []
    for record, members in records().items():
        cls = getattr(nmos_instrument, record)
        in_python.append(f"{record} {ctypes.sizeof(cls)}")
        for member in members:
            field = getattr(cls, member)
            in_python.append(f"{record}.{member} {field.offset} {field.size}")
    assert in_python == in_c


def test_flags_have_the_values_of_c():
    header = (ROOT / "include/nmos_instrument/connection_state.h").read_text()
    in_c = {name: int(value, 16)
            for name, value in re.findall(r"sdp_found_(\w+) = (0x[0-9a-fA-F]+)", header)}
    assert len(in_c) == 13
    assert in_c == {flag.name: flag.value for flag in nmos_instrument.SdpFoundFlag}
    assert f"= {nmos_instrument.sdp_examined_lines};" in header


def test_error_numbers_are_those_of_c():
    header = (ROOT / "include/nmos_instrument_c.h").read_text()
    in_c = dict(re.findall(r"#define NMOS_ERROR_(\w+) \(SIZE_MAX - (\d+)\)", header))
    assert in_c == {"FIRST": "15", "INDEX": "1", "NOT_FINITE": "2", "NO_MEMORY": "3",
                    "INCOMPLETE": "4", "TOO_LONG": "5", "INTERNAL": "6"}
    from nmos_instrument import operations
    size_max = ctypes.c_size_t(-1).value
    assert operations._ERROR_FIRST == size_max - 15
    assert operations._EXCEPTIONS == {size_max - 1: IndexError, size_max - 2: OverflowError,
                                      size_max - 3: MemoryError, size_max - 4: ValueError,
                                      size_max - 5: ValueError}
    assert (operations.ERROR_INCOMPLETE, operations.ERROR_TOO_LONG) == (size_max - 4, size_max - 5)


def test_version_is_that_of_the_library():
    header = (ROOT / "include/nmos_instrument/version.h").read_text()
    version = ".".join(re.findall(r"VERSION_(?:MAJOR|MINOR|PATCH) (\d+)", header))
    assert f'\nversion = "{version}"' in (ROOT / "python/pyproject.toml").read_text()
