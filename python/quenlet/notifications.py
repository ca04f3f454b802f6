"""The socket on which notifications come that concern the donated card."""

from __future__ import annotations

import contextlib
import os
import secrets
import socket

from . import location
from .errors import QuenletError, of_system

CARD_CHANGED = b"ovaro.quenlet.me-card-values-did-change"

_NAME_LIMIT = 255
# More than a socket's queue holds; what comes meanwhile has its turn next.
_TAKEN_AT_ONCE = 64


class Receiver:
    """A socket of its own among those that get every notification, until it is closed."""

    def __init__(self) -> None:
        """Raises NoAgent if the directory of the sockets is not the user's own, or else the error
        of the system, as when it has no descriptors left.
        """
        self._owner = os.getpid()
        self._name = f"{self._owner}-{secrets.token_hex(16)}"
        try:
            self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM | socket.SOCK_NONBLOCK)
        except OSError as fault:
            raise of_system(fault) from None
        try:
            self._directory = location.open_directory("notifications")
        except QuenletError:
            self._socket.close()
            raise
        try:
            self._socket.bind(location.address(self._directory, self._name))
        except OSError as fault:
            self.close()
            raise of_system(fault) from None

    def fileno(self) -> int:
        return self._socket.fileno()

    def card_has_changed(self) -> bool:
        """Takes what has come; says whether the card may have changed."""
        changed = False
        for _ in range(_TAKEN_AT_ONCE):
            try:
                changed |= self._socket.recv(_NAME_LIMIT + 1) == CARD_CHANGED
            except BlockingIOError:
                break
        return changed

    def close(self) -> None:
        self._socket.close()
        if os.getpid() == self._owner:  # A forked child leaves the file to its parent.
            # A program that posted meanwhile may have removed it as one that nobody reads.
            with contextlib.suppress(OSError):
                os.unlink(self._name, dir_fd=self._directory)
        os.close(self._directory)

    def __enter__(self) -> Receiver:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()
