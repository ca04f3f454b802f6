"""The agent for programs with an asyncio event loop."""

from __future__ import annotations

import asyncio
from collections.abc import AsyncGenerator, Awaitable, Iterable
from typing import Any, TypeVar

from . import location, notifications, operations
from .channel import Channel
from .errors import DonationsDisabled, QuenletError, broken, error, timed_out
from .protocol import TIME_LIMIT, Answer, Connection, Operation
from .values import Account, Card, Donation

_PAUSE = 0.02

T = TypeVar("T")


class _Stream:
    """A connection and its channel on the running event loop."""

    def __init__(self, channel: Channel) -> None:
        self._channel = channel
        self._loop = asyncio.get_running_loop()
        self._connection = Connection()
        self._futures: dict[int, asyncio.Future[Any]] = {}
        self._failure: QuenletError | None = None
        self._unsent = memoryview(b"")
        self._turn = asyncio.Lock()
        self._all_sent = asyncio.Event()
        self._all_sent.set()
        self._watchers: set[asyncio.Event] = set()
        self._loop.add_reader(channel, self._receive)

    async def perform(self, operation: Operation[T]) -> T:
        self._channel.check_owner()
        # One request waits to be sent; those behind it wait here, in the order in which they came,
        # and can still be taken back.
        async with self._turn:
            while not self._all_sent.is_set():
                await self._all_sent.wait()
            if self._failure:
                raise error(*self._failure.args)
            identifier, data = self._connection.request(operation)
            future: asyncio.Future[T] = self._loop.create_future()
            self._futures[identifier] = future
            self._unsent = memoryview(data)
            self._send()
        try:
            return await future
        finally:
            del self._futures[identifier]
            self._connection.forget(identifier)

    def wake_at_end(self, watcher: asyncio.Event) -> None:
        """Has the event set when the connection ends, unless `let_sleep` comes first."""
        self._watchers.add(watcher)

    def let_sleep(self, watcher: asyncio.Event) -> None:
        self._watchers.discard(watcher)

    def close(self, failure: QuenletError) -> None:
        """Ends the connection; every operation under way ends with the failure."""
        if self._failure:
            return
        self._failure = failure
        self._loop.remove_reader(self._channel)
        self._drop_unsent()
        self._channel.close()
        for watcher in self._watchers:
            watcher.set()
        for future in self._futures.values():
            if not future.done():
                future.set_exception(error(*failure.args))

    def _send(self) -> None:
        try:
            self._unsent = self._channel.send(self._unsent)
        except QuenletError as fault:
            self.close(fault)
            return
        if not self._unsent:
            self._drop_unsent()
        elif self._all_sent.is_set():
            self._all_sent.clear()
            self._loop.add_writer(self._channel, self._send)

    def _drop_unsent(self) -> None:
        self._unsent = memoryview(b"")
        if not self._all_sent.is_set():
            self._loop.remove_writer(self._channel)
            self._all_sent.set()

    def _receive(self) -> None:
        try:
            for answer in self._connection.receive(self._channel.receive()):
                self._deliver(answer)
        except QuenletError as fault:
            self.close(fault)

    def _deliver(self, answer: Answer[Any]) -> None:
        future = self._futures[answer.identifier]
        if future.done():
            return
        if answer.error:
            future.set_exception(answer.error)
        else:
            future.set_result(answer.result)


async def _connected() -> _Stream:
    while True:
        connected = location.connect()
        if connected:
            return _Stream(Channel(connected))
        await asyncio.sleep(_PAUSE)


class Client:
    """The agent, on one connection: `async with Client() as me: card = await me.card()`.

    For one event loop. Any number of operations may be under way; they take effect in the order in
    which they were begun. One that is cancelled may still be done. All raise QuenletError, and
    TimedOut if no answer comes in time. After the connection has broken every operation says so:
    make a new client then.
    """

    def __init__(self, *, time_limit: float = TIME_LIMIT) -> None:
        """`time_limit` is for connecting, and for each answer, in seconds; it may be changed."""
        self.time_limit = time_limit
        self._stream: _Stream | None = None

    async def __aenter__(self) -> Client:
        """Connects. Raises NoAgent, or TimedOut if the agent does not accept in time."""
        if self._stream:
            raise RuntimeError("the client is in use")
        self._stream = await self._in_time(_connected())
        return self

    async def __aexit__(self, *_: object) -> None:
        self.close()
        self._stream = None

    def close(self) -> None:
        """Ends the connection. Operations under way end with ConnectionBroken."""
        if self._stream:
            self._stream.close(broken("the client is closed"))

    async def card(self) -> Card:
        """The donated me card, as the last change left it."""
        return await self._perform(operations.card())

    async def synchronous_card(self) -> Card:
        """The same by the agent's second operation for it, whose reply has another form."""
        return await self._perform(operations.synchronous_card())

    async def donations(self) -> list[Donation]:
        """Every donation in the order in which their identifiers first came, shown or not."""
        return await self._perform(operations.donations())

    async def donate(self, donations: Iterable[Donation]) -> None:
        """Donates all values or none. Each replaces what has the same donation identifier.

        Values that the owner has rejected are left out without a word. Returns when the donation
        is on the disk.
        """
        await self._perform(operations.donate(donations))

    async def remove(self, donation_identifiers: Iterable[str]) -> None:
        """Takes donations back. Those that it does not hold are passed over."""
        await self._perform(operations.remove(donation_identifiers))

    async def remove_bundle(self, bundle_identifier: str) -> None:
        """Takes back all donations of a donor."""
        await self._perform(operations.remove_bundle(bundle_identifier))

    async def reject(self, donation_identifier: str) -> None:
        """Takes away what has the same content as a donation, and keeps it away."""
        await self._perform(operations.reject(donation_identifier))

    async def reject_cluster(self, cluster_identifier: str) -> None:
        """Does the same for all donations of a cluster."""
        await self._perform(operations.reject_cluster(cluster_identifier))

    async def remove_all_rejections(self) -> None:
        """Is answered, but changes nothing at present."""
        await self._perform(operations.remove_all_rejections())

    async def change_account(self, old: Account | None, new: Account | None) -> None:
        """Tells of an account as it was and as it is; None before it was added, once removed."""
        await self._perform(operations.change_account(old, new))

    async def changes(self) -> AsyncGenerator[Card | None, None]:
        """Yields the card, and again whenever it has become another one: None while there is none,
        since donations are off or the agent is just starting.

        Changes in quick succession may come as one. Raises what `card` raises, and
        ConnectionBroken when the agent ends.
        """
        stream, changed = self._connected_stream(), asyncio.Event()
        loop = asyncio.get_running_loop()
        with notifications.Receiver() as receiver:

            def receive() -> None:
                if receiver.card_has_changed():
                    changed.set()

            loop.add_reader(receiver, receive)
            stream.wake_at_end(changed)
            try:
                card = await self._card_if_any()
                yield card
                while True:
                    await changed.wait()
                    changed.clear()
                    former, card = card, await self._card_if_any()
                    if card != former:
                        yield card
            finally:
                stream.let_sleep(changed)
                loop.remove_reader(receiver)

    async def _card_if_any(self) -> Card | None:
        try:
            return await self.card()
        except DonationsDisabled:
            return None

    async def _perform(self, operation: Operation[T]) -> T:
        return await self._in_time(self._connected_stream().perform(operation))

    def _connected_stream(self) -> _Stream:
        if not self._stream:
            raise broken("the client is not connected: use it in `async with`")
        return self._stream

    async def _in_time(self, work: Awaitable[T]) -> T:
        try:
            async with asyncio.timeout(self.time_limit):
                return await work
        except TimeoutError:
            raise timed_out() from None
