"""What a client makes of whatever a service may send."""

from __future__ import annotations

import contextlib
import struct
import threading
import tracemalloc
from collections.abc import Iterator
from pathlib import Path

import pytest
from conftest import Ask, card, code, listener

from quenlet import Card, ConnectionBroken, MalformedAnswer, QuenletError, operations
from quenlet.protocol import Connection

MALFORMED, OTHER = (MalformedAnswer, 5), (QuenletError, 77)


def text(value: str) -> bytes:
    return b"\5" + bytes((len(value),)) + value.encode()


def message(kind: int, body: bytes, identifier: int = 1, length: int | None = None) -> bytes:
    size = 9 + len(body) if length is None else length
    return struct.pack("<IBQ", size, kind, identifier) + body


def contact(*pairs: bytes) -> bytes:
    """The values of a reply: a card of these keys and values, and no error."""
    return b"\x09\x07Contact\x08" + bytes((len(pairs),)) + b"".join(pairs) + b"\0"


def new(value: bytes) -> bytes:
    """The same with a key that nobody knows."""
    return contact(text("new") + value)


def nickname(value: bytes) -> bytes:
    return contact(text("nickname") + value)


def mail(entry: bytes) -> bytes:
    return contact(text("emailAddresses") + b"\7\1" + entry)


EMPTY = contact()
ENTRY = b"\x08\3" + text("value") + text("a@b.example") + text("label") + text("")
ENTRY += text("valueOrigin") + b"\x08\4" + text("bundleIdentifier") + text("b")
ENTRY += text("donationIdentifier") + text("d") + text("donationDate") + b"\2" + bytes(8)
ENTRY += text("expirationDate") + b"\3"
FAR, INFINITE = struct.pack("<d", 1e300), struct.pack("<d", 1e999)
FAILURE = b"\x09\5Error\x08\3" + text("domain") + text("dom") + text("code") + b"\2\x4d" + bytes(7)
FAILURE += text("more") + b"\0"
NO_CODE = b"\x09\5Error\x08\1" + text("domain") + text("d")

MILLION = b"\7\x80\x80\x40" + b"\7\0" * 2**20

MALFORMED_REPLIES = {
    "too few values": EMPTY[:-1],
    "too many values": EMPTY + b"\0",
    "another type": text("Contact") + b"\0",
    "another class": b"\x09\1X\x08\0\0",
    "class in an unknown key": new(b"\x09\1X\0"),
    "unknown type": new(b"\x0a"),
    "boolean of 2": new(b"\1\2"),
    "key that is no string": contact(b"\6\1x\0"),
    "no UTF-8": nickname(b"\5\1\xff"),
    "null for text": nickname(b"\0"),
    "long size": nickname(b"\5\x81\0x"),
    "endless size": nickname(b"\5" + b"\xff" * 40),
    "huge text": nickname(b"\5" + b"\xff" * 8 + b"\x7fx"),
    "huge list": new(b"\7" + b"\xff" * 8 + b"\x7f\0"),
    "a million lists": nickname(MILLION),
    "deep": new(b"\7\1" * 63 + b"\0"),
    "infinite date": new(b"\4" + INFINITE),
    "entry without label": mail(b"\x08\1" + text("value") + text("x")),
    "entry of text": mail(text("a@b.example")),
    "infinite origin": mail(ENTRY + INFINITE),
    "incomplete origin": mail(ENTRY.replace(b"bundle", b"bungle") + FAR),
    "flag for a date": mail(ENTRY[:-1] + b"\1\1"),
}

# The first answer, and what becomes of it. The second one, which is good, is read all the same.
OF_ITS_REQUEST = {
    "unknown keys": (message(1, contact(text("a") + b"\7\1\0", text("b") + b"\1\1")), Card()),
    "62 deep": (message(1, new(b"\7\1" * 62 + b"\0")), Card()),
    "parts": (message(3, EMPTY[:5]) + message(3, b"") + message(1, EMPTY[5:]), Card()),
    "error in reply": (message(1, b"\0" + FAILURE), OTHER),
    "failure after a part": (message(3, EMPTY) + message(2, FAILURE), OTHER),
    "failure without error": (message(2, text("x")), MALFORMED),
    "error without code": (message(2, NO_CODE), MALFORMED),
    **{name: (message(1, body), MALFORMED) for name, body in MALFORMED_REPLIES.items()},
}

# The same for both requests, since the connection ends.
OF_THE_CONNECTION = {
    "short length": (message(1, b"", length=8), MALFORMED),
    "long length": (message(1, b"", length=33_554_433), MALFORMED),
    "unknown kind": (message(4, EMPTY), MALFORMED),
    "a request": (message(0, EMPTY), MALFORMED),
    "no such request": (message(1, EMPTY, identifier=3), MALFORMED),
    "failure of all": (message(2, FAILURE, identifier=0), OTHER),
    "rubbish failure of all": (message(2, b"\0", identifier=0), MALFORMED),
    "the end within a message": (message(1, EMPTY)[:-1], (ConnectionBroken, 2)),
}


@contextlib.contextmanager
def service(home: Path, *answers: bytes) -> Iterator[None]:
    """A service that gives each request of a connection the next answer, then ends it."""

    def serve() -> None:
        peer, _ = listening.accept()
        with peer, contextlib.suppress(OSError):
            for each in answers:
                peer.recv(4096)
                peer.sendall(each)

    with listener(home) as listening:
        listening.listen()
        thread = threading.Thread(target=serve)
        thread.start()
        yield
        thread.join(10)


@pytest.mark.parametrize("row", OF_ITS_REQUEST)
def test_judges_an_answer_by_itself(home: Path, ask: Ask, row: str) -> None:
    answer, expected = OF_ITS_REQUEST[row]
    with service(home, answer, message(1, EMPTY, identifier=2)):
        assert [code(each) for each in ask(card, card)] == [expected, Card()]


@pytest.mark.parametrize("row", OF_THE_CONNECTION)
def test_ends_a_connection_that_makes_no_sense(home: Path, ask: Ask, row: str) -> None:
    answer, expected = OF_THE_CONNECTION[row]
    with service(home, answer):
        assert [code(each) for each in ask(card, card)] == [expected, expected]


def test_reads_what_python_cannot_hold(home: Path, ask: Ask) -> None:
    with service(home, message(1, mail(ENTRY + FAR))):
        [read] = ask(card)
    [entry] = read.email_addresses
    assert (entry.content.address, entry.origin.expiration_date.year) == ("a@b.example", 9999)
    assert "a@b" not in repr(read)


def test_keeps_nothing_under_unknown_keys() -> None:
    connection = Connection()
    connection.request(operations.card())
    records = b"\7\x80\x80\4" + (b"\x08\1" + text("x") + b"\7\1\0") * 2**16
    data = message(1, contact(text("new") + records, text("newer") + MILLION))
    tracemalloc.start()
    [answer] = connection.receive(data)
    peak = tracemalloc.get_traced_memory()[1]
    tracemalloc.stop()
    assert answer.result == Card()
    assert peak < 4 * len(data)


def test_holds_parts_within_bounds_and_drops_late_ones() -> None:
    connection = Connection(answer_limit=1_000)
    for identifier in (1, 2, 3):
        connection.request(operations.card())
    connection.forget(3)
    late = message(3, bytes(2_000), identifier=3) + message(1, b"", identifier=3)
    failed = message(3, bytes(600)) + message(2, FAILURE)
    [answer] = connection.receive(late + failed + message(3, bytes(1_000), identifier=2))
    assert answer.identifier == 1
    with pytest.raises(MalformedAnswer, match="more than 1000 bytes"):
        list(connection.receive(message(3, b"\0", identifier=2)))
