# SPDX-License-Identifier: Apache-2.0
"""How a function of nmos_instrument_c.h is called: a Python function of the same name says by its
annotations what it takes and gives."""

import ctypes
import functools
import inspect
from typing import Any, Callable, Optional, TypeVar, Union

from .library import library
from .records import ENCODING, ERRORS, Record

AnyText = Union[str, bytes]  # may hold NUL bytes

_ERROR_FIRST = ctypes.c_size_t(-16).value
_EXCEPTIONS = {
    ctypes.c_size_t(-2).value: IndexError,
    ctypes.c_size_t(-3).value: OverflowError,
    ctypes.c_size_t(-4).value: MemoryError,
    ctypes.c_size_t(-5).value: ValueError,
    ctypes.c_size_t(-6).value: ValueError,
}
ERROR_INCOMPLETE = ctypes.c_size_t(-5).value
ERROR_TOO_LONG = ctypes.c_size_t(-6).value

_FIRST_SIZE = 65536

library.nmos_error_text.restype = ctypes.c_char_p
library.nmos_error_text.argtypes = [ctypes.c_size_t]


library.nmos_version.restype = ctypes.c_char_p
library.nmos_version.argtypes = []


def version() -> str:
    """The version of the library that runs, as "1.0.0"."""
    words: bytes = library.nmos_version()
    return words.decode()


def error_text(result: int) -> str:
    """What an error of the C interface is, in a few words."""
    words: bytes = library.nmos_error_text(result)
    return words.decode()


def raise_error(name: str, result: int) -> None:
    """Raises what the result says, if it is an error."""
    if result >= _ERROR_FIRST:
        raise _EXCEPTIONS.get(result, RuntimeError)(f"{name}: {error_text(result)}")


def data_of(text: AnyText) -> bytes:
    return text.encode(ENCODING, ERRORS) if isinstance(text, str) else bytes(text)


def int_argument(name: str, value: int, bits: int = 32) -> int:
    """The value, if it is an int of C."""
    if not isinstance(value, int):
        raise TypeError(f"{name} is an int, not {type(value).__name__}")
    if not -(2 ** (bits - 1)) <= value < 2 ** (bits - 1):
        raise OverflowError(f"{name} is an int of {bits} bits, {value} is not")
    return int(value)


def text_of(name: str, *arguments: Any) -> str:
    """The text that the C function writes into a buffer. If the first one is too small, the result
    says how large the second must be."""
    function = library[name]
    function.restype = ctypes.c_size_t
    size = _FIRST_SIZE
    while True:
        buffer = ctypes.create_string_buffer(size)
        length: int = function(*arguments, buffer, ctypes.c_size_t(size))
        raise_error(name, length)
        if length < size:
            return buffer.raw[:length].decode(ENCODING, ERRORS)
        size = length + 1


def _in_c(name: str, kind: Any, value: Any) -> "list[Any]":
    """What one argument of Python is in C."""
    if kind is int:
        return [ctypes.c_int(int_argument(name, value))]
    if kind is bool:
        return [ctypes.c_int(bool(value))]
    if kind is str:
        data = data_of(value)
        if b"\0" in data:
            raise ValueError(f"{name} takes no NUL, here is one: {value!r}")
        return [ctypes.c_char_p(data)]
    if kind is AnyText:
        data = data_of(value)
        return [ctypes.c_char_p(data), ctypes.c_size_t(len(data))]
    if isinstance(kind, type) and issubclass(kind, Record):
        if not isinstance(value, kind):
            raise TypeError(f"{name} is a {kind.__name__}, not {type(value).__name__}")
        return [ctypes.byref(value)]
    raise NotImplementedError(f"{name}: an argument of type {kind}")


def _result_of(name: str, kind: Any, arguments: "list[Any]") -> Any:
    if kind is str:
        return text_of(name, *arguments)
    if kind == list[str]:
        return text_of(name, *arguments).splitlines()
    function = library[name]
    if kind is int:
        function.restype = ctypes.c_int
        return function(*arguments)
    function.restype = ctypes.c_size_t
    raise_error(name, function(*arguments))
    return None


Operation = TypeVar("Operation", bound=Callable[..., Any])


def operation(function: Operation, indexes: Optional[int] = None) -> Operation:
    """Calls the C function that is named `nmos_` and the name of this one. `indexes` is how many
    values the argument `index` may have, where the C function cannot know."""
    name = "nmos_" + function.__name__
    signature = inspect.signature(function)

    @functools.wraps(function)
    def call(*args: Any, **kwargs: Any) -> Any:
        given = signature.bind(*args, **kwargs).arguments
        if indexes is not None and given["index"] >= indexes:
            raise IndexError(f"index is from 0 to {indexes - 1}, not {given['index']}")
        arguments = [
            part for argument, value in given.items()
            for part in _in_c(argument, signature.parameters[argument].annotation, value)
        ]
        return _result_of(name, signature.return_annotation, arguments)

    return call  # type: ignore[return-value]
