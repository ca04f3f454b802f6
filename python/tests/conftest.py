"""An agent of its own for each test that asks for one. Run with scripts/test-python."""

from __future__ import annotations

import asyncio
import contextlib
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import time
from collections.abc import Callable, Iterator
from pathlib import Path
from signal import SIGCONT, SIGSTOP, SIGTERM, Signals
from typing import Any

import pytest

import quenlet

PROGRAMS = Path(sys.prefix) / "bin"
BUNDLE = "com.example.mail"

# The runtime directory in a home: deeper than a socket's address is long.
RUNTIME = "run" + "x" * 100


def until(holds: Callable[[], bool]) -> None:
    """Waits until something holds, and fails when it does not come to hold."""
    deadline = time.monotonic() + 20
    while not holds():
        assert time.monotonic() < deadline, "waited in vain"
        time.sleep(0.02)


def donation(content: quenlet.Content, name: str, **origin: Any) -> quenlet.Donation:
    identifier = f"{BUNDLE}:{name}"
    return quenlet.Donation(
        content, quenlet.Origin(BUNDLE, identifier, quenlet.in_days(90), **origin)
    )


Ask = Callable[..., list[Any]]


def ask_blocking(*operations: Callable[[Any], Any], **options: Any) -> list[Any]:
    results: list[Any] = []
    with quenlet.blocking.Client(**options) as me:
        for operation in operations:
            try:
                results.append(operation(me))
            except quenlet.QuenletError as fault:
                results.append(fault)
    return results


def ask_asyncio(*operations: Callable[[Any], Any], **options: Any) -> list[Any]:
    async def results() -> list[Any]:
        faults: list[Any] = []
        asyncio.get_running_loop().set_exception_handler(lambda _, fault: faults.append(fault))
        async with quenlet.Client(**options) as me:
            # One after the other: each has its turn when the one before has ended.
            given = [
                (await asyncio.gather(operation(me), return_exceptions=True))[0]
                for operation in operations
            ]
        assert faults == []
        return given

    return asyncio.run(asyncio.wait_for(results(), 60))


def card(me: Any) -> Any:
    return me.card()


def donations(me: Any) -> Any:
    return me.donations()


def code(result: Any) -> Any:
    """The class and the code of an error, or what else an operation gave."""
    return (type(result), result.code) if isinstance(result, quenlet.QuenletError) else result


@pytest.fixture(params=[ask_blocking, ask_asyncio])
def ask(request: pytest.FixtureRequest) -> Any:
    """Performs operations with one client, of either kind. Returns their results and errors."""
    return request.param


class Agent:
    """The agent of a temporary home."""

    def __init__(self, home: Path) -> None:
        self.home = home
        self._process: subprocess.Popen[bytes] | None = None

    def start(self) -> None:
        with (self.home / "agent.err").open("ab") as errors:
            self._process = subprocess.Popen(
                [PROGRAMS / "quenlet-agent"], stdout=subprocess.DEVNULL, stderr=errors
            )
        until(self._serves)

    def _serves(self) -> bool:
        try:
            return isinstance(ask_blocking(card)[0], quenlet.Card)
        except quenlet.NoAgent:
            return False

    def signal(self, number: Signals) -> None:
        assert self._process
        self._process.send_signal(number)

    def pause(self) -> None:
        """Stops the process, and returns when its last thread has stopped."""
        assert self._process
        self.signal(SIGSTOP)
        os.waitid(os.P_PID, self._process.pid, os.WSTOPPED)

    def end(self, number: Signals = SIGTERM) -> None:
        if self._process:
            self.signal(SIGCONT)
            self.signal(number)
            self._process.wait(20)
            self._process = None

    def tool(self, *words: str) -> str:
        """What the command prints."""
        command = [str(PROGRAMS / "quenlet"), *words]
        done = subprocess.run(command, capture_output=True, text=True, timeout=30)
        assert done.returncode == 0, done.stderr
        return done.stdout


@pytest.fixture
def home(monkeypatch: pytest.MonkeyPatch) -> Iterator[Path]:
    """An empty home, with the directories that the environment names in it."""
    path = Path(tempfile.mkdtemp(prefix="quenlet-"))
    for variable, name in (("HOME", "."), ("XDG_RUNTIME_DIR", RUNTIME), ("XDG_CONFIG_HOME", "etc")):
        (path / name).mkdir(mode=0o700, exist_ok=True)
        monkeypatch.setenv(variable, os.path.abspath(path / name))
    yield path
    shutil.rmtree(path)


def listener(home: Path) -> socket.socket:
    """A socket in the place of the agent's, which does not listen yet."""
    directory = home / RUNTIME / "quenlet"
    directory.mkdir(mode=0o700)
    bound = socket.socket(socket.AF_UNIX)
    with contextlib.chdir(directory):
        bound.bind("ovaro.quenlet.agent")
    return bound


@pytest.fixture
def agent(home: Path) -> Iterator[Agent]:
    running = Agent(home)
    try:
        running.start()
        yield running
    finally:
        running.end()
