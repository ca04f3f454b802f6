"""Values as bytes: what requests, answers and notifications are made of.

The sender of the bytes is taken for an enemy. Decoding needs memory in proportion to the bytes that
are there, whatever sizes they announce, and ends with a `WireError` at the first fault. What stands
under keys that the reader does not know is checked, but not kept.
"""

from __future__ import annotations

import math
import struct
import sys
from collections.abc import Iterator, Mapping, Sequence
from dataclasses import dataclass
from datetime import datetime, timedelta, timezone
from typing import Union

NESTING_LIMIT = 64

NULL, BOOLEAN, INTEGER, REAL, DATE, STRING, DATA, LIST, DICTIONARY, OBJECT = range(10)

_INTEGER = struct.Struct("<q")
_REAL = struct.Struct("<d")
_EPOCH = datetime(1970, 1, 1, tzinfo=timezone.utc)
_FIRST_DATE = datetime.min.replace(tzinfo=timezone.utc)
_LAST_DATE = datetime.max.replace(tzinfo=timezone.utc)

# A decoded value is larger than its bytes, up to sixty times for an empty list. So a body may hold
# these many values that are kept, and one more for each so many of its bytes: more than any value
# of the agent's.
_FREE_VALUES = 1_000
_BYTES_A_VALUE = 4


class WireError(ValueError):
    """Bytes that hold no values, or values without bytes. The text quotes neither."""


@dataclass(frozen=True)
class WireObject:
    """An object: the name of its class, and its content."""

    class_name: str
    content: "Value"


class Record(dict[str, "Value"]):
    """A dictionary without its unknown keys."""

    __slots__ = ("unknown_kinds",)

    def __init__(self) -> None:
        super().__init__()
        # A bit for each kind of value under unknown keys, at any depth.
        self.unknown_kinds = 0

    def unknown_are(self, *kinds: int) -> bool:
        """Whether all values under unknown keys are of these kinds, at any depth."""
        return not self.unknown_kinds & ~sum(1 << kind for kind in kinds)


@dataclass(frozen=True)
class Known:
    """The classes of objects that may occur, and the keys whose values are kept, at any depth."""

    classes: frozenset[str] = frozenset()
    keys: frozenset[str] = frozenset()


Value = Union[
    None,
    bool,
    int,
    float,
    datetime,
    str,
    bytes,
    Sequence["Value"],
    Mapping[str, "Value"],
    WireObject,
]


def encode(values: Sequence[Value]) -> bytes:
    """Makes the bytes of values, one after the other.

    Raises WireError for a value that cannot travel: an integer beyond 64 bits, text with lone
    surrogates, a date without a time zone, nesting over 64, or a type that is none of ours.
    """
    out = bytearray()
    for value in values:
        _append(out, value, 0)
    return bytes(out)


def _append(out: bytearray, value: Value, depth: int) -> None:
    if value is None:
        out.append(NULL)
    elif isinstance(value, bool):
        out += bytes((BOOLEAN, value))
    elif isinstance(value, int):
        if not -(2**63) <= value < 2**63:
            raise WireError("an integer beyond 64 bits")
        out.append(INTEGER)
        out += _INTEGER.pack(value)
    elif isinstance(value, float):
        out.append(REAL)
        out += _REAL.pack(value)
    elif isinstance(value, datetime):
        out.append(DATE)
        out += _REAL.pack(seconds_since_epoch(value))
    elif isinstance(value, str):
        _append_text(out, STRING, value)
    elif isinstance(value, (bytes, bytearray, memoryview)):
        if isinstance(value, memoryview) and (value.ndim != 1 or value.itemsize != 1):
            raise WireError("memory that is not bytes")
        out.append(DATA)
        _append_size(out, len(value))
        out += value
    else:
        _append_container(out, value, depth + 1)


def _append_container(out: bytearray, value: Value, depth: int) -> None:
    if depth > NESTING_LIMIT:
        raise WireError(f"nested more than {NESTING_LIMIT} deep")
    if isinstance(value, WireObject):
        _append_text(out, OBJECT, value.class_name)
        _append(out, value.content, depth)
    elif isinstance(value, Mapping):
        out.append(DICTIONARY)
        _append_size(out, len(value))
        for key, item in value.items():
            if not isinstance(key, str):
                raise WireError("a key that is not a string")
            _append_text(out, STRING, key)
            _append(out, item, depth)
    elif isinstance(value, Sequence):
        out.append(LIST)
        _append_size(out, len(value))
        for item in value:
            _append(out, item, depth)
    else:
        raise WireError(f"a {type(value).__name__} cannot travel")


def _append_text(out: bytearray, kind: int, text: str) -> None:
    try:
        data = text.encode()
    except UnicodeEncodeError:
        raise WireError("text that is not Unicode") from None
    out.append(kind)
    _append_size(out, len(data))
    out += data


def _append_size(out: bytearray, size: int) -> None:
    while size > 0x7F:
        out.append(size & 0x7F | 0x80)
        size >>= 7
    out.append(size)


def seconds_since_epoch(date: datetime) -> float:
    """The date as it travels. Raises WireError for one without a time zone, or for no datetime."""
    if not isinstance(date, datetime) or date.utcoffset() is None:
        raise WireError("a date without a time zone")
    return (date - _EPOCH).total_seconds()


def date_at(seconds: float) -> datetime:
    """The date; one beyond the years 1 to 9999 becomes the nearest that a datetime can hold.

    Raises WireError unless the number is finite.
    """
    if not math.isfinite(seconds):
        raise WireError("a date that is not finite")
    try:
        return _EPOCH + timedelta(seconds=seconds)
    except OverflowError:
        return _LAST_DATE if seconds > 0 else _FIRST_DATE


class Reader:
    """Takes values off the front of some bytes. After a WireError it is of no use."""

    def __init__(self, data: bytes | bytearray, known: Known) -> None:
        """`data` must stay as it is."""
        self._data = data
        self._known = known
        self._at = 0
        self._is_keeping = True
        self._kinds = 0
        self._values_left = _FREE_VALUES + len(data) // _BYTES_A_VALUE

    def at_end(self) -> bool:
        return self._at == len(self._data)

    def value(self) -> Value:
        """Takes one value. Raises WireError if the bytes do not hold one."""
        return self._value(0)

    def next_is_null(self) -> bool:
        return self._data[self._at : self._at + 1] == bytes((NULL,))

    def items(self) -> Iterator[Value]:
        """Takes a list, one item after the other, so that it need not be held as a whole.

        Raises WireError if there is another value, or when an item is none.
        """
        if self._byte() != LIST:
            raise WireError("not a list")
        for _ in range(self._size()):
            yield self._value(1)

    def _value(self, depth: int) -> Value:
        kind = self._byte()
        self._count(kind)
        if kind == STRING:
            return self._text()
        if kind == DICTIONARY or kind == LIST or kind == OBJECT:
            return self._container(kind, depth + 1)
        if kind == DATA:
            return bytes(self._bytes(self._size()))
        if kind == REAL:
            return self._real()
        if kind == DATE:
            return date_at(self._real())
        if kind == INTEGER:
            number: int = _INTEGER.unpack(self._bytes(8))[0]
            return number
        if kind == NULL:
            return None
        if kind == BOOLEAN:
            return self._boolean()
        raise WireError("an unknown type of value")

    def _count(self, kind: int) -> None:
        if not self._is_keeping:
            self._kinds |= 1 << kind
            return
        self._values_left -= 1
        if self._values_left < 0:
            raise WireError("too many values")

    def _container(self, kind: int, depth: int) -> Value:
        if depth > NESTING_LIMIT:
            raise WireError(f"nested more than {NESTING_LIMIT} deep")
        if kind == OBJECT:
            name = self._text()
            if name not in self._known.classes:
                raise WireError("an object of a class that does not belong here")
            return WireObject(name, self._value(depth))
        if kind == DICTIONARY:
            return self._dictionary(depth)
        if self._is_keeping:
            return [self._value(depth) for _ in range(self._size())]
        for _ in range(self._size()):
            self._value(depth)
        return None

    def _dictionary(self, depth: int) -> Value:
        record = Record()
        for _ in range(self._size()):
            if self._byte() != STRING:
                raise WireError("a key that is not a string")
            key = self._text()
            if not self._is_keeping:
                self._value(depth)
            elif key in self._known.keys:
                record[sys.intern(key)] = self._value(depth)
            else:
                record.unknown_kinds |= self._pass_over(depth)
        return record

    def _pass_over(self, depth: int) -> int:
        """Checks a value without keeping it. Returns a bit for each kind of value in it."""
        self._is_keeping, self._kinds = False, 0
        self._value(depth)
        self._is_keeping = True
        return self._kinds

    def _boolean(self) -> bool:
        byte = self._byte()
        if byte > 1:
            raise WireError("a boolean that is neither 0 nor 1")
        return byte == 1

    def _real(self) -> float:
        number: float = _REAL.unpack(self._bytes(8))[0]
        return number

    def _text(self) -> str:
        try:
            return self._bytes(self._size()).decode()
        except UnicodeDecodeError:
            raise WireError("text that is not UTF-8") from None

    def _size(self) -> int:
        byte = self._byte()
        if byte < 0x80:
            return byte
        size, shift = byte & 0x7F, 7
        while byte > 0x7F:
            if shift > 63:
                raise WireError("a size beyond 64 bits")
            byte = self._byte()
            size |= (byte & 0x7F) << shift
            shift += 7
        if byte == 0 or size >= 2**64:
            raise WireError("a size that is not in its shortest form")
        return size

    def _byte(self) -> int:
        try:
            byte = self._data[self._at]
        except IndexError:
            raise WireError("a value that is not complete") from None
        self._at += 1
        return byte

    def _bytes(self, size: int) -> bytes | bytearray:
        data = self._data[self._at : self._at + size]
        if len(data) < size:
            raise WireError("a value that is not complete")
        self._at += size
        return data
