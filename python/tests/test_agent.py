"""Agents that hang, die, refuse and change: what both kinds of client make of it."""

from __future__ import annotations

import asyncio
import contextlib
import errno
import itertools
import os
import resource
import socket
import subprocess
import sys
import threading
import time
from pathlib import Path
from signal import SIGCONT, SIGKILL
from typing import Any

import pytest
from conftest import RUNTIME, Agent, Ask, ask_asyncio, ask_blocking, card, code, donation, listener

import quenlet
from quenlet import ConnectionBroken, EmailAddress, Image, Name, NoAgent, TimedOut

BROKEN = (ConnectionBroken, 2)
MAIL = donation(EmailAddress("zoe@example.org", "home"), "mail")
# None of them fits into a socket's buffer.
PICTURES = [donation(Image(bytes(size)), f"{size}") for size in (700_000, 800_000, 900_000)]

# A program without an entitlement, and what it is told in each form of reply.
REFUSED = """
import quenlet
with quenlet.blocking.Client() as me:
    remove = lambda: me.remove([])
    for ask in me.card, me.synchronous_card, me.donations, remove, me.remove_all_rejections:
        try:
            print(ask())
        except quenlet.NotEntitled as fault:
            print(fault.code)
"""


def error_of(operation: Any) -> Any:
    try:
        return operation()
    except Exception as fault:
        return fault


def test_goes_on_after_a_late_answer(agent: Agent, ask: Ask) -> None:
    def resumed(me: Any) -> Any:
        agent.signal(SIGCONT)
        me.time_limit = 20
        return me.donations()

    agent.pause()
    # The rest of the picture goes out before what comes next.
    results = ask(card, lambda me: me.donate(PICTURES[:1]), resumed, time_limit=0.3)
    assert [code(each) for each in results] == [(TimedOut, 11), (TimedOut, 11), PICTURES[:1]]


def test_sends_nothing_twice_after_a_signal_handler_has_raised(
    agent: Agent, monkeypatch: pytest.MonkeyPatch
) -> None:
    original = socket.socket.send

    def interrupted(self: socket.socket, *arguments: Any) -> int:
        original(self, *arguments)
        raise KeyboardInterrupt

    with quenlet.blocking.Client() as me:
        with monkeypatch.context() as patch, pytest.raises(KeyboardInterrupt):
            patch.setattr(socket.socket, "send", interrupted)
            me.donate(PICTURES[:1])
        with pytest.raises(ConnectionBroken):
            me.card()


@pytest.mark.parametrize("call", ["send", "recv"])
def test_ends_when_the_system_refuses(
    agent: Agent, ask: Ask, monkeypatch: pytest.MonkeyPatch, call: str
) -> None:
    def refuse(*_: Any) -> Any:
        raise OSError(errno.ENOMEM, "no memory")

    def refused(me: Any) -> Any:
        patch.setattr(socket.socket, call, refuse)
        return me.card()

    refusal = (quenlet.QuenletError, errno.ENOMEM)
    with monkeypatch.context() as patch:
        assert [code(each) for each in ask(refused, card)] == [refusal, refusal]


def test_ends_when_the_agent_is_killed(agent: Agent, ask: Ask) -> None:
    agent.pause()
    killer = threading.Timer(0.3, agent.signal, [SIGKILL])
    killer.start()
    assert [code(each) for each in ask(card, card)] == [BROKEN, BROKEN]
    killer.join()
    with pytest.raises(NoAgent):
        ask(card)
    agent.end(SIGKILL)
    agent.start()
    assert ask(card) == [quenlet.Card()]


def test_gives_up_when_nobody_accepts(home: Path, ask: Ask) -> None:
    with listener(home) as busy, socket.socket(socket.AF_UNIX) as first:
        busy.listen(0)
        with contextlib.chdir(home / RUNTIME / "quenlet"):
            first.connect("ovaro.quenlet.agent")
        with pytest.raises(TimedOut):
            ask(card, time_limit=0.3)


def test_trusts_no_directory_that_is_open_to_others(agent: Agent, ask: Ask) -> None:
    for directory in (RUNTIME, f"{RUNTIME}/quenlet"):
        (agent.home / directory).chmod(0o750)
        with pytest.raises(NoAgent, match="open to others"):
            ask(card)
        (agent.home / directory).chmod(0o700)


def test_tells_what_the_system_refuses(agent: Agent, monkeypatch: pytest.MonkeyPatch) -> None:
    def fault_of(operation: Any) -> Any:
        limits = resource.getrlimit(resource.RLIMIT_NOFILE)
        for free in itertools.count():
            last = os.dup(0)
            os.close(last)
            resource.setrlimit(resource.RLIMIT_NOFILE, (last + free, limits[1]))
            fault = error_of(operation)
            resource.setrlimit(resource.RLIMIT_NOFILE, limits)
            if not isinstance(fault, quenlet.QuenletError):
                return fault
            assert code(fault) == (quenlet.QuenletError, errno.EMFILE)

    assert fault_of(lambda: ask_blocking(card)) == [quenlet.Card()]
    with quenlet.blocking.Client() as me:
        assert fault_of(lambda: next(me.changes())) == quenlet.Card()
    monkeypatch.setenv("XDG_RUNTIME_DIR", "/nowhere/at/all")
    assert code(error_of(lambda: ask_blocking(card))) == (NoAgent, 1)
    monkeypatch.setenv("XDG_RUNTIME_DIR", "/proc/quenlet")
    assert code(error_of(lambda: ask_blocking(card))) == (NoAgent, 1)


@pytest.mark.skipif(os.geteuid() != 0, reason="only root can pose as another user")
def test_trusts_no_socket_of_another_user(home: Path, ask: Ask) -> None:
    with listener(home) as other:
        os.seteuid(65534)
        other.listen()
        os.seteuid(0)
        with pytest.raises(NoAgent, match="another user"):
            ask(card)


def test_is_refused_without_an_entitlement(agent: Agent) -> None:
    python = Path(sys.base_prefix) / "bin/python3"
    command = [str(python), "-c", REFUSED]
    done = subprocess.run(command, capture_output=True, text=True, timeout=30)
    assert (done.stdout.split(), done.stderr) == (["4097"] * 5, "")


def test_can_be_cancelled_and_asked_many_things_at_once(agent: Agent) -> None:
    async def cancelled(me: Any) -> Any:
        with pytest.raises(TimeoutError):
            await asyncio.wait_for(me.card(), 0.2)
        agent.signal(SIGCONT)
        return await asyncio.gather(*(me.donate([each]) for each in PICTURES), me.donations())

    agent.pause()
    assert ask_asyncio(cancelled) == [[None, None, None, PICTURES]]


def test_can_be_closed_by_another_thread(agent: Agent) -> None:
    def closed(me: Any) -> Any:
        threading.Timer(0.2, me.close).start()
        return me.card()

    agent.pause()
    assert [code(each) for each in ask_blocking(closed, card)] == [BROKEN, BROKEN]


def test_leaves_the_parents_connection_alone_in_a_forked_child(agent: Agent) -> None:
    with quenlet.blocking.Client() as me:
        changes = me.changes()
        next(changes)
        before = sockets(agent)
        child = os.fork()
        if child == 0:
            faults = [code(each) for each in (error_of(me.card), error_of(lambda: next(changes)))]
            me.__exit__()
            os._exit(0 if faults == [BROKEN, BROKEN] else 1)
        assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0
        assert (me.card(), sockets(agent)) == (quenlet.Card(), before)


def test_cannot_be_entered_twice_or_followed_after_its_end(agent: Agent) -> None:
    me = quenlet.blocking.Client()
    with me:
        changes = me.changes()
        next(changes)
        assert isinstance(error_of(me.__enter__), RuntimeError)
        assert me.card() == quenlet.Card()
    assert code(error_of(lambda: next(changes))) == BROKEN
    with me:
        assert me.card() == quenlet.Card()

    async def enter_twice() -> None:
        async with quenlet.Client() as us:
            with pytest.raises(RuntimeError):
                await us.__aenter__()
            assert await us.card() == quenlet.Card()

    asyncio.run(enter_twice())


def sockets(agent: Agent) -> int:
    """The sockets that wait for notifications."""
    return len(os.listdir(agent.home / RUNTIME / "quenlet/notifications"))


def test_follows_the_card(agent: Agent) -> None:
    seen: list[Any] = []

    def follow_blocking(me: Any) -> Any:
        for card in me.changes():
            proceed(me, card)

    async def follow_asyncio(me: Any) -> Any:
        async for card in me.changes():
            await asyncio.to_thread(proceed, me, card)

    def donate() -> None:
        for each in (donation(Name(), "hidden"), MAIL):
            ask_blocking(lambda me: me.donate([each]))
            time.sleep(0.3)

    def proceed(me: Any, card: Any) -> None:
        """What happens after each card that came."""
        seen.append(card and [entry.content for entry in card.email_addresses])
        if seen == [[]]:
            threading.Thread(target=donate).start()
        elif seen[-1]:
            agent.tool("disable", "--yes")
        else:
            agent.end()

    for ask, follow in ((ask_blocking, follow_blocking), (ask_asyncio, follow_asyncio)):
        before = sockets(agent)
        assert [code(each) for each in ask(follow)] == [BROKEN]
        assert seen == [[], [MAIL.content], None]
        assert sockets(agent) < before
        agent.tool("reset", "--yes")
        agent.tool("enable")
        agent.start()
        seen.clear()
