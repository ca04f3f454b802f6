"""The main loop of extensions, asked as the agent asks."""

from __future__ import annotations

import socket
import subprocess
import sys
from datetime import datetime, timezone
from pathlib import Path
from typing import Any

import pytest
from conftest import donation

import quenlet
from quenlet import EmailAddress, Image, QuenletError, extension
from quenlet.messages import Kind, Message, MessageReader, pack
from quenlet.protocol import ERROR
from quenlet.records import DONATION, DONATION_CLASS, donation_object
from quenlet.wire import Known, Reader, WireObject, encode

RENEW = "renewExpirationDateForDonatedValue:acknowledgementHandler:"
DONATE_ALL = "redonateAllValuesWithReason:"
MAIL, SURROGATE = donation(EmailAddress("zoe@example.org"), "m"), donation(Image(b"\1"), "\ud800")
NEW_YEAR = datetime(2100, 1, 1, tzinfo=timezone.utc)

# Re-donation with reason 1, and its answer without a value; a renewal's answer.
NAME = b"redonateAllValuesWithReason:".hex()
ASKED = bytes.fromhex("30000000 00 0100000000000000 051c" + NAME + "020100000000000000")
NOTHING = bytes.fromhex("0c000000 01 0100000000000000 0700 00")
UNTIL_2100 = bytes.fromhex("13000000 01 0200000000000000 04000000e0ca90ee41 00")


class Donor:
    def all_donations(self, reason: int) -> Any:
        if reason == 2:
            raise QuenletError("com.example.error", 31, "no network")
        if reason in (8, 9):
            raise QuenletError("\ud800" if reason == 8 else "d", 2**63, "zoe")
        return {1: [], 3: [MAIL, MAIL], 2**64 - 4: [MAIL], 5: [SURROGATE]}[reason]

    def renew(self, donation: quenlet.Donation) -> Any:
        dates = {"mail": NEW_YEAR, "none": None, "naive": datetime(2100, 1, 1)}
        return dates[donation.origin.donation_identifier.split(":")[1]]


def renewal(name: str) -> bytes:
    return encode([RENEW, donation_object(donation(EmailAddress("zoe@example.org"), name))])


BAD_RECORDS: dict[str, Any] = {
    "no content": {},
    "two contents": {"imageData": b"", "nameComponents": {}},
    "number in a name": {"nameComponents": {"new": 1}},
    "number under another's key": {"nameComponents": {"street": 1}},
    "null in a list": {"imageData": b"", "new": [None]},
    "flag for a style": {"postalAddress": {}, "label": "", "style": True},
}


def bad_renewal(record: Any) -> bytes:
    origin: Any = donation_object(MAIL).content
    return encode([RENEW, WireObject(DONATION_CLASS, {"origin": origin["origin"], **record})])


OWN_ERROR = (Kind.REPLY, "com.example.error", 31)
EXCEPTION = (Kind.REPLY, "ovaro.quenlet.extension-error", 9)
UNKNOWN, INVALID, MALFORMED = (
    (Kind.FAILURE, "ovaro.quenlet.service-error", code) for code in (3, 4, 5)
)


REQUESTS: dict[str, Any] = {
    "two": (encode([DONATE_ALL, 3]), [donation_object(MAIL)] * 2),
    "unsigned": (encode([DONATE_ALL, -4]), [donation_object(MAIL)]),
    "its own error": (encode([DONATE_ALL, 2]), OWN_ERROR),
    "error with a surrogate": (encode([DONATE_ALL, 8]), EXCEPTION),
    "error with a huge code": (encode([DONATE_ALL, 9]), EXCEPTION),
    "exception": (encode([DONATE_ALL, 7]), EXCEPTION),
    "surrogate": (encode([DONATE_ALL, 5]), EXCEPTION),
    "no date": (renewal("none"), EXCEPTION),
    "no zone": (renewal("naive"), EXCEPTION),
    "unknown": (encode(["wink:"]), UNKNOWN),
    "no reason": (encode([DONATE_ALL]), INVALID),
    "true": (encode([DONATE_ALL, True]), INVALID),
    "two reasons": (encode([DONATE_ALL, 1, 1]), INVALID),
    "no donation": (encode([RENEW, "mail"]), INVALID),
    "cut": (encode([DONATE_ALL, 1])[:-1], MALFORMED),
    "empty": (b"", MALFORMED),
    **{name: (bad_renewal(record), INVALID) for name, record in BAD_RECORDS.items()},
}


@pytest.mark.parametrize("row", REQUESTS)
def test_answers_each_request(row: str) -> None:
    body, expected = REQUESTS[row]
    [answer] = MessageReader().feed(extension.answer(Message(Kind.REQUEST, 17, body), Donor()))
    values = Reader(
        answer.body, Known(DONATION.classes | ERROR.classes, DONATION.keys | ERROR.keys)
    )
    result: Any = values.value()
    fault: Any = result if answer.kind == Kind.FAILURE else values.value()
    assert answer.identifier == 17 and values.at_end() and "zoe" not in str(fault)
    if fault:
        assert (answer.kind, fault.content["domain"], fault.content["code"]) == expected
    else:
        assert result == expected


LAST = [b"", pack(Message(Kind.REPLY, 3, b"")), pack(Message(Kind.REQUEST, 0, encode(["wink:"])))]


@pytest.mark.parametrize(("last", "status"), zip(LAST, (0, 1, 1)), ids=["end", "reply", "number 0"])
def test_runs_until_the_socket_ends(last: bytes, status: int) -> None:
    program = "import sys, quenlet, test_extension as t; sys.exit(quenlet.extension.run(t.Donor()))"
    command, here = [sys.executable, "-c", program], Path(__file__).parent
    agent, stdin = socket.socketpair()
    with agent, subprocess.Popen(command, stdin=stdin.fileno(), cwd=here) as running:
        stdin.close()
        agent.settimeout(20)
        agent.sendall(ASKED + pack(Message(Kind.REQUEST, 2, renewal("mail"))))
        assert agent.recv(len(NOTHING), socket.MSG_WAITALL) == NOTHING
        assert agent.recv(len(UNTIL_2100), socket.MSG_WAITALL) == UNTIL_2100
        agent.sendall(last)
        agent.shutdown(socket.SHUT_WR)
        assert running.wait(20) == status


def test_says_what_it_is_when_started_by_hand() -> None:
    command = [sys.executable, "-c", "import quenlet; exit(quenlet.extension.run(None))"]
    done = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True)
    assert done.returncode == 2
    assert "to be started by quenlet-agent" in done.stderr
