# SPDX-License-Identifier: Apache-2.0
"""How a class with annotated members becomes a C struct whose members are checked.

Each annotation says what the member is in Python and what it is in C:

    class ENDPOINT_IS04_ST(Record):
        host: Annotated[str, Text(16)]   # char host[16]
        port: Double                     # double port
"""

import ctypes
from collections.abc import Iterator, Sequence
from typing import Annotated, Any, Generic, TypeVar, overload

ENCODING = "utf-8"
ERRORS = "surrogateescape"  # bytes that are not UTF-8 survive in both directions


class Text:
    """char[size]: a text that ends with a NUL, or fills the field."""

    def __init__(self, size: int) -> None:
        self.size = size
        self.ctype: Any = ctypes.c_uint8 * size

    def to_python(self, raw: Any, where: str) -> str:
        return bytes(raw).split(b"\0", 1)[0].decode(ENCODING, ERRORS)

    def to_c(self, value: str, where: str) -> Any:
        if not isinstance(value, str):
            raise TypeError(f"{where} is a str, not {type(value).__name__}")
        data = value.encode(ENCODING, ERRORS)
        if len(data) >= self.size:
            raise ValueError(
                f"{where} takes at most {self.size - 1} bytes, these are {len(data)}: {value!r}")
        if b"\0" in data:
            raise ValueError(f"{where} takes no NUL, here is one: {value!r}")
        return self.ctype.from_buffer_copy(data.ljust(self.size, b"\0"))


class Bytes:
    """uint8_t[size] that no operation reads."""

    def __init__(self, size: int) -> None:
        self.size = size
        self.ctype: Any = ctypes.c_uint8 * size

    def to_python(self, raw: Any, where: str) -> bytes:
        return bytes(raw)

    def to_c(self, value: bytes, where: str) -> Any:
        if len(value) != self.size:
            raise ValueError(f"{where} takes {self.size} bytes, these are {len(value)}")
        return self.ctype.from_buffer_copy(value)


class Number:
    """An integer of `bits` bits."""

    def __init__(self, ctype: Any, low: int, high: int) -> None:
        self.ctype = ctype
        self.low = low
        self.high = high

    def to_python(self, raw: int, where: str) -> int:
        return raw

    def to_c(self, value: int, where: str) -> int:
        if not isinstance(value, int):
            raise TypeError(f"{where} is an int, not {type(value).__name__}")
        if not self.low <= value <= self.high:
            raise OverflowError(f"{where} is from {self.low} to {self.high}, not {value}")
        return value


class Truth:
    """uint8_t: false when 0, true otherwise."""

    ctype = ctypes.c_uint8

    def to_python(self, raw: int, where: str) -> bool:
        return raw != 0

    def to_c(self, value: bool, where: str) -> int:
        return int(bool(value))


class Real:
    """double"""

    ctype = ctypes.c_double

    def to_python(self, raw: float, where: str) -> float:
        return raw

    def to_c(self, value: float, where: str) -> float:
        if not isinstance(value, (int, float)):
            raise TypeError(f"{where} is a number, not {type(value).__name__}")
        return float(value)


class Array:
    """An array of `size` entries: records, or what another kind here describes."""

    def __init__(self, entry: Any, size: int) -> None:
        self.entry = Struct(entry) if isinstance(entry, type) else entry
        self.ctype: Any = self.entry.ctype * size

    def to_python(self, raw: Any, where: str) -> "Entries[Any]":
        return Entries(raw, self.entry, where)

    def to_c(self, value: Any, where: str) -> Any:
        raise AttributeError(f"{where} is an array: assign to its entries")


class Struct:
    """A record within a record."""

    def __init__(self, record_class: Any) -> None:
        self.ctype = record_class

    def to_python(self, raw: Any, where: str) -> Any:
        return raw

    def to_c(self, value: Any, where: str) -> Any:
        if not isinstance(value, self.ctype):
            raise TypeError(f"{where} is a {self.ctype.__name__}, not {type(value).__name__}")
        return value


Flag = Annotated[bool, Truth()]
Double = Annotated[float, Real()]
Int16 = Annotated[int, Number(ctypes.c_int16, -(2**15), 2**15 - 1)]
Int32 = Annotated[int, Number(ctypes.c_int32, -(2**31), 2**31 - 1)]
UInt32 = Annotated[int, Number(ctypes.c_uint32, 0, 2**32 - 1)]
UInt64 = Annotated[int, Number(ctypes.c_uint64, 0, 2**64 - 1)]

Entry = TypeVar("Entry")


class Entries(Sequence[Entry], Generic[Entry]):
    """The entries of an array member. All of its capacity is there, whatever the count says."""

    def __init__(self, raw: Any, kind: Any, where: str) -> None:
        self._raw = raw
        self._kind = kind
        self._where = where

    def __len__(self) -> int:
        return len(self._raw)

    @overload
    def __getitem__(self, index: int) -> Entry: ...

    @overload
    def __getitem__(self, index: slice) -> "list[Entry]": ...

    def __getitem__(self, index: Any) -> Any:
        if isinstance(index, slice):
            return [self[i] for i in range(*index.indices(len(self)))]
        where = self._entry(index)
        return self._kind.to_python(self._raw[index], where)

    def __setitem__(self, index: int, value: Entry) -> None:
        where = self._entry(index)
        self._raw[index] = self._kind.to_c(value, where)

    def __iter__(self) -> Iterator[Entry]:
        return (self[i] for i in range(len(self)))

    def __repr__(self) -> str:
        return f"<{self._where}: {list(self)!r}>"

    def _entry(self, index: int) -> str:
        if not -len(self) <= index < len(self):
            raise IndexError(f"{self._where} has {len(self)} entries, there is no {index}")
        return f"{self._where}[{index}]"


class _Member:
    """A member as its kind shows it."""

    def __init__(self, field: Any, kind: Any, where: str) -> None:
        self._field = field
        self._kind = kind
        self._where = where
        self.offset: int = field.offset
        self.size: int = field.size

    def __get__(self, record: Any, owner: Any = None) -> Any:
        if record is None:
            return self
        return self._kind.to_python(self._field.__get__(record, owner), self._where)

    def __set__(self, record: Any, value: Any) -> None:
        self._field.__set__(record, self._kind.to_c(value, self._where))


class Record(ctypes.Structure):
    """A C struct. `bytes(record)` are its bytes, `from_buffer_copy(data)` makes one of bytes, and
    a new one is all zero. A member that does not exist cannot be set."""

    def __setattr__(self, name: str, value: Any) -> None:
        if not isinstance(getattr(type(self), name, None), _Member):
            raise AttributeError(f"{type(self).__name__} has no member {name}")
        super().__setattr__(name, value)


RecordClass = TypeVar("RecordClass", bound="type[Record]")


def record(cls: RecordClass) -> RecordClass:
    """Lays out the members that the class annotates, in their order, as C does."""
    kinds = {name: annotation.__metadata__[0] for name, annotation in cls.__annotations__.items()}
    cls._fields_ = [(name, kind.ctype) for name, kind in kinds.items()]
    for name, kind in kinds.items():
        setattr(cls, name, _Member(getattr(cls, name), kind, f"{cls.__name__}.{name}"))
    return cls


def require_size(cls: "type[Record]", size: int) -> None:
    """On 32-bit x86 ctypes aligns a double to 4 where the records have it aligned to 8."""
    if ctypes.sizeof(cls) != size:
        raise ImportError(f"{cls.__name__} has {ctypes.sizeof(cls)} bytes in this Python, but"
                          f" {size} in C: this CPU's ctypes cannot lay it out")
