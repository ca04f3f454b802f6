"""Messages: a header of thirteen bytes and a body, in both directions of a stream socket."""

from __future__ import annotations

import enum
import struct
from collections.abc import Iterator
from dataclasses import dataclass

from .wire import WireError

MESSAGE_LIMIT = 33_554_432

_HEADER = struct.Struct("<IBQ")
# What the length counts of the header: all but itself.
_COUNTED = 9


class Kind(enum.IntEnum):
    REQUEST = 0
    REPLY = 1
    FAILURE = 2
    PART = 3


@dataclass(frozen=True)
class Message:
    kind: Kind
    identifier: int
    body: bytes


def pack(message: Message) -> bytes:
    """Makes the bytes of a message. Raises WireError if it is over the limit."""
    length = _COUNTED + len(message.body)
    if length > MESSAGE_LIMIT:
        raise WireError(f"a message of more than {MESSAGE_LIMIT} bytes")
    return _HEADER.pack(length, message.kind, message.identifier) + message.body


class MessageReader:
    """Cuts what comes from a stream into messages. Holds no more than the bytes that came."""

    def __init__(self) -> None:
        self._pending = bytearray()

    def feed(self, data: bytes) -> Iterator[Message]:
        """Takes bytes, and yields the messages that they complete, one by one.

        Raises WireError at an invalid header; what follows it cannot be read.
        """
        self._pending += data
        while len(self._pending) >= _HEADER.size:
            length, kind, identifier = _HEADER.unpack_from(self._pending)
            if not _COUNTED <= length <= MESSAGE_LIMIT or kind > Kind.PART:
                raise WireError("a message with an invalid header")
            end = _HEADER.size - _COUNTED + length
            if len(self._pending) < end:
                return
            body = bytes(self._pending[_HEADER.size : end])
            del self._pending[:end]
            yield Message(Kind(kind), identifier, body)
