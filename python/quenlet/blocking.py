"""The agent for programs without an event loop: every operation waits for its answer."""

from __future__ import annotations

import select
import time
from collections.abc import Generator, Iterable
from typing import Any, TypeVar

from . import location, notifications, operations
from .channel import Channel
from .errors import DonationsDisabled, QuenletError, broken, error, timed_out
from .protocol import TIME_LIMIT, Answer, Connection, Operation
from .values import Account, Card, Donation

_PAUSE = 0.02

T = TypeVar("T")


class _Stream:
    """A connection and its channel. For one thread at a time, but `shut` is for any."""

    def __init__(self, deadline: float) -> None:
        """Connects. Raises NoAgent, or TimedOut if the agent does not accept in time."""
        self._channel = _connected(deadline)
        self._connection = Connection()
        self._unsent = memoryview(b"")
        self._failure: QuenletError | None = None
        # Set while what is known of the stream may be behind what has passed over it.
        self._is_moving = False

    def perform(self, operation: Operation[T], deadline: float) -> T:
        self._check()
        while self._unsent:  # A former request has timed out half-way.
            self._exchange(deadline)
        identifier, data = self._connection.request(operation)
        self._unsent = memoryview(data)
        try:
            while True:
                for answer in self._exchange(deadline):
                    if answer.identifier != identifier:
                        continue
                    if answer.error:
                        raise answer.error
                    result: T = answer.result
                    return result
        finally:
            self._connection.forget(identifier)

    def wait_for(self, receiver: notifications.Receiver) -> None:
        """Waits until a notification may have come. Raises ConnectionBroken when the agent ends."""
        self._check()
        poll = select.poll()
        poll.register(receiver, select.POLLIN)
        poll.register(self._channel, select.POLLIN)
        while not any(ready == receiver.fileno() for ready, _ in poll.poll()):
            self._receive()  # There is no request under way, and so no answer either.

    def shut(self) -> None:
        """Ends the connection, and with it the operation that another thread may wait for."""
        self._channel.shut()

    def close(self) -> None:
        self._end(broken("the client is closed"))
        self._channel.close()

    def _check(self) -> None:
        """Raises what has ended the connection, if anything has."""
        self._channel.check_owner()
        if self._is_moving:
            self._end(broken("a signal handler has interrupted an operation"))
        if self._failure:
            raise error(*self._failure.args)

    def _end(self, failure: QuenletError) -> None:
        self._failure = self._failure or failure
        self.shut()

    def _exchange(self, deadline: float) -> list[Answer[Any]]:
        """Waits, sends and receives once. Raises TimedOut if neither can be done in time."""
        seconds = deadline - time.monotonic()
        poll = select.poll()
        poll.register(self._channel, select.POLLIN | (select.POLLOUT if self._unsent else 0))
        ready = poll.poll(seconds * 1000) if seconds > 0 else []
        if not ready:
            raise timed_out()
        if ready[0][1] & select.POLLOUT:
            self._send()
        return self._receive() if ready[0][1] & ~select.POLLOUT else []

    def _send(self) -> None:
        self._is_moving = True
        try:
            self._unsent = self._channel.send(self._unsent)
        except QuenletError as fault:
            self._end(fault)
            self._is_moving = False
            raise
        self._is_moving = False

    def _receive(self) -> list[Answer[Any]]:
        """All answers that have come. Raises the failure that ends the connection, if none has."""
        answers: list[Answer[Any]] = []
        self._is_moving = True
        try:
            for answer in self._connection.receive(self._channel.receive()):
                answers.append(answer)
        except QuenletError as fault:
            self._end(fault)
            if not answers:
                self._is_moving = False
                raise error(*(self._failure or fault).args) from None
        self._is_moving = False
        return answers


def _connected(deadline: float) -> Channel:
    while True:
        connected = location.connect()
        if connected:
            return Channel(connected)
        if time.monotonic() > deadline:
            raise timed_out()
        time.sleep(_PAUSE)


class Client:
    """The agent, on one connection: `with Client() as me: card = me.card()`.

    For one thread at a time; only `close` may be called from others. The operations are those of
    `quenlet.Client`, which says what they do, and their errors are the same. After an operation has
    timed out the next one may be tried; after the connection has broken every one says so.
    """

    def __init__(self, *, time_limit: float = TIME_LIMIT) -> None:
        """`time_limit` is for connecting, and for each answer, in seconds; it may be changed."""
        self.time_limit = time_limit
        self._stream: _Stream | None = None

    def __enter__(self) -> Client:
        """Connects. Raises NoAgent, or TimedOut if the agent does not accept in time."""
        if self._stream:
            raise RuntimeError("the client is in use")
        self._stream = _Stream(self._deadline())
        return self

    def __exit__(self, *_: object) -> None:
        if self._stream:
            self._stream.close()
            self._stream = None

    def close(self) -> None:
        """Ends the connection. What waits in another thread ends with ConnectionBroken."""
        stream = self._stream  # Its thread may end it meanwhile.
        if stream:
            stream.shut()

    def card(self) -> Card:
        return self._perform(operations.card())

    def synchronous_card(self) -> Card:
        return self._perform(operations.synchronous_card())

    def donations(self) -> list[Donation]:
        return self._perform(operations.donations())

    def donate(self, donations: Iterable[Donation]) -> None:
        self._perform(operations.donate(donations))

    def remove(self, donation_identifiers: Iterable[str]) -> None:
        self._perform(operations.remove(donation_identifiers))

    def remove_bundle(self, bundle_identifier: str) -> None:
        self._perform(operations.remove_bundle(bundle_identifier))

    def reject(self, donation_identifier: str) -> None:
        self._perform(operations.reject(donation_identifier))

    def reject_cluster(self, cluster_identifier: str) -> None:
        self._perform(operations.reject_cluster(cluster_identifier))

    def remove_all_rejections(self) -> None:
        self._perform(operations.remove_all_rejections())

    def change_account(self, old: Account | None, new: Account | None) -> None:
        self._perform(operations.change_account(old, new))

    def changes(self) -> Generator[Card | None, None, None]:
        stream = self._connected_stream()
        with notifications.Receiver() as receiver:
            card = self._card_if_any()
            yield card
            while True:
                stream.wait_for(receiver)
                if not receiver.card_has_changed():
                    continue
                former, card = card, self._card_if_any()
                if card != former:
                    yield card

    def _card_if_any(self) -> Card | None:
        try:
            return self.card()
        except DonationsDisabled:
            return None

    def _perform(self, operation: Operation[T]) -> T:
        return self._connected_stream().perform(operation, self._deadline())

    def _connected_stream(self) -> _Stream:
        if not self._stream:
            raise broken("the client is not connected: use it in `with`")
        return self._stream

    def _deadline(self) -> float:
        return time.monotonic() + self.time_limit
