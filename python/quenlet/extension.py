"""The main loop of donor extensions: programs that the agent starts, asks and ends."""

from __future__ import annotations

import os
import socket
import stat
import sys
from collections.abc import Callable, Iterable
from datetime import datetime
from typing import Protocol

from .errors import EXTENSION, SERVICE, QuenletError, error, invalid, malformed
from .messages import Kind, Message, MessageReader, pack
from .protocol import error_object
from .records import DONATION, donation_from, donation_object
from .values import Donation
from .wire import Reader, Value, WireError, encode

_RENEW = "renewExpirationDateForDonatedValue:acknowledgementHandler:"
_DONATE_ALL = "redonateAllValuesWithReason:"
_RECEIVED_AT_ONCE = 1 << 18


class Donor(Protocol):
    """What an author of an extension writes.

    A QuenletError that an operation raises reaches the agent as it is, and the agent's log: its
    sentence must not quote values. Of any other exception only the fact is told. Either way the
    values stay as they are.
    """

    def all_donations(self, reason: int) -> Iterable[Donation]:
        """All values to donate, each under the bundle identifier of the manifest. `reason` is what
        the agent gives as its reason for asking, a number below 2^64."""

    def renew(self, donation: Donation) -> datetime:
        """Until when a donated value still holds; a past date takes it back."""


def run(donor: Donor) -> int:
    """Answers the agent until it ends the connection. Returns the program's exit status.

    Takes over standard input, which is /dev/null from then on. Started by anyone but the agent, it
    says so on standard error and returns 2. Returns 1 when what the agent sends is not a message.
    """
    agent = _taken_over()
    if not agent:
        print(f"{sys.argv[0]}: a donor extension, to be started by quenlet-agent", file=sys.stderr)
        return 2
    with agent:
        try:
            _answer_all(agent, donor)
        except WireError:
            return 1
        except OSError:
            pass  # The agent has gone, and nobody would read an answer.
    return 0


def answer(request: Message, donor: Donor) -> bytes:
    """Asks the donor what a request asks for, and makes the bytes of the answer.

    Raises WireError for a message that is not a request.
    """
    if request.kind != Kind.REQUEST or request.identifier == 0:
        raise WireError("not a request")
    try:
        body = _reply(request.body, donor)
        return pack(Message(Kind.REPLY, request.identifier, body))
    except QuenletError as fault:
        failure = fault
    except WireError as fault:
        failure = error(SERVICE, 6, str(fault))
    return pack(Message(Kind.FAILURE, request.identifier, encode([error_object(failure)])))


def _reply(request: bytes, donor: Donor) -> bytes:
    """The bytes of the reply's values. Raises QuenletError if the request makes no sense."""
    reader = Reader(request, DONATION)
    try:
        values = [reader.value()]
        while not reader.at_end():
            values.append(reader.value())
    except WireError as fault:
        raise malformed(str(fault)) from None
    name, arguments = values[0], values[1:]
    if name == _RENEW:
        return _renew(arguments, donor)
    if name == _DONATE_ALL:
        return _donate_all(arguments, donor)
    raise error(SERVICE, 3, "the extension has no such operation")


def _renew(arguments: list[Value], donor: Donor) -> bytes:
    if len(arguments) != 1:
        raise invalid("a renewal is of one donation")
    try:
        donation = donation_from(arguments[0])
    except WireError as fault:
        raise invalid(str(fault)) from None
    return _asked(lambda: _checked(donor.renew(donation)))


def _checked(date: datetime) -> datetime:
    if not isinstance(date, datetime):
        raise TypeError("renew returns a datetime")
    return date


def _donate_all(arguments: list[Value], donor: Donor) -> bytes:
    reason = arguments[0] if len(arguments) == 1 else None
    if not isinstance(reason, int) or isinstance(reason, bool):
        raise invalid("a re-donation has one number as its reason")
    unsigned = reason % 2**64
    return _asked(lambda: [donation_object(each) for each in donor.all_donations(unsigned)])


def _asked(ask: Callable[[], Value]) -> bytes:
    try:
        try:
            return encode([ask(), None])
        except QuenletError as fault:
            return encode([None, error_object(fault)])
    except Exception:  # An author's code may raise anything, and its text may quote values.
        refusal = error(EXTENSION, 9, "the donor's own code raised an exception")
        return encode([None, error_object(refusal)])


def _taken_over() -> socket.socket | None:
    """The agent's socket, or None if standard input is none."""
    try:
        if not stat.S_ISSOCK(os.fstat(0).st_mode):
            return None
    except OSError:
        return None
    agent = socket.socket(fileno=os.dup(0))
    agent.setblocking(True)
    nothing = os.open(os.devnull, os.O_RDWR)
    os.dup2(nothing, 0)
    os.close(nothing)
    return agent


def _answer_all(agent: socket.socket, donor: Donor) -> None:
    messages = MessageReader()
    while data := agent.recv(_RECEIVED_AT_ONCE):
        for request in messages.feed(data):
            agent.sendall(answer(request, donor))
