"""A client's end of its connection: what moves the bytes, with an event loop and without."""

from __future__ import annotations

import os
import socket

from .errors import broken, of_system

_RECEIVED_AT_ONCE = 1 << 18


class Channel:
    """A connected socket that never waits, and that belongs to the process which connected it.

    A child of a fork holds the same connection, and must neither use nor end it.
    """

    def __init__(self, connected: socket.socket) -> None:
        self._socket = connected
        self._owner = os.getpid()

    def fileno(self) -> int:
        return self._socket.fileno()

    def check_owner(self) -> None:
        """Raises ConnectionBroken in a child of the process that connected."""
        if os.getpid() != self._owner:
            raise broken("the client belongs to the process before the fork: make a new one")

    def send(self, data: memoryview) -> memoryview:
        """Sends what the socket takes. Returns the rest. Raises the error of the system."""
        try:
            return data[self._socket.send(data, socket.MSG_NOSIGNAL) :]
        except BlockingIOError:
            return data
        except (BrokenPipeError, ConnectionResetError):
            # The agent is gone. It may have said why, so that the end is left to `receive`.
            return memoryview(b"")
        except OSError as fault:
            raise of_system(fault) from None

    def receive(self) -> bytes:
        """What has come; nothing if nothing has.

        Raises ConnectionBroken once the agent has ended, or else the error of the system.
        """
        try:
            data = self._socket.recv(_RECEIVED_AT_ONCE)
        except BlockingIOError:
            return b""
        except ConnectionResetError:
            raise broken() from None
        except OSError as fault:
            raise of_system(fault) from None
        if not data:
            raise broken()
        return data

    def shut(self) -> None:
        """Ends the connection, also for a thread that waits for it."""
        if os.getpid() != self._owner:
            return
        try:
            self._socket.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass  # The agent was first.

    def close(self) -> None:
        self._socket.close()
