"""Where the agent of the current user listens, and whether it is that user's."""

from __future__ import annotations

import contextlib
import os
import socket
import stat
import struct

from .errors import QuenletError, no_agent, of_system

SERVICE_NAME = "ovaro.quenlet.agent"

_CREDENTIALS = struct.Struct("=iII")


def runtime_directory() -> str:
    """The user's directory for sockets; it need not be there."""
    given = os.environ.get("XDG_RUNTIME_DIR", "")
    if given.startswith("/"):
        return given
    usual = f"/run/user/{os.getuid()}"
    if os.path.isdir(usual):
        return usual
    variables = ("TMPDIR", "TMP", "TEMP", "TEMPDIR")
    temporary = next((os.environ[name] for name in variables if name in os.environ), "/tmp")
    return os.path.join(temporary, f"quenlet-{os.getuid()}")


def open_directory(*names: str) -> int:
    """Opens the directory with these names below the runtime directory; makes it if it is missing.

    Raises NoAgent if one on the way is not the user's own, closed to others, or else the error of
    the system.
    """
    descriptor = _entered(None, "/")
    try:
        for name in (runtime_directory(), "quenlet", *names):
            below = _made(descriptor, name)
            os.close(descriptor)
            descriptor = below
    except QuenletError:
        os.close(descriptor)
        raise
    return descriptor


def address(directory: int, name: str) -> str:
    """A path that fits into a socket's address, however deep the directory lies."""
    return f"/proc/self/fd/{directory}/{name}"


def _made(parent: int, name: str) -> int:
    try:
        with contextlib.suppress(FileExistsError):
            os.mkdir(name, 0o700, dir_fd=parent)
    except FileNotFoundError:
        raise no_agent(f"nothing leads to {name}") from None
    except OSError as fault:
        raise of_system(fault) from None
    descriptor = _entered(parent, name)
    status = os.fstat(descriptor)
    if status.st_uid == os.geteuid() and not stat.S_IMODE(status.st_mode) & 0o077:
        return descriptor
    os.close(descriptor)
    raise no_agent(f"the directory {name} is not the user's own, or open to others")


def _entered(parent: int | None, name: str) -> int:
    flags = os.O_PATH | os.O_DIRECTORY | os.O_NOFOLLOW | os.O_CLOEXEC
    try:
        return os.open(name, flags, dir_fd=parent)
    except NotADirectoryError:
        raise no_agent(f"{name} is not a directory") from None
    except OSError as fault:
        raise of_system(fault) from None


def _check_peer(peer: socket.socket) -> None:
    data = peer.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, _CREDENTIALS.size)
    user = _CREDENTIALS.unpack(data)[1]
    if user not in (0, os.geteuid()):
        raise no_agent("the socket is another user's")


def connect() -> socket.socket | None:
    """Connects to the agent. Returns None while the agent has no time to accept: try again.

    Raises NoAgent if nobody listens, or somebody who is not to be trusted, or else the
    error of the system. Does not wait.
    """
    directory = open_directory()
    try:
        return _connected(address(directory, SERVICE_NAME))
    except BlockingIOError:
        return None
    except (FileNotFoundError, ConnectionRefusedError):
        raise no_agent(f"nobody listens under {SERVICE_NAME}") from None
    except OSError as fault:
        raise of_system(fault) from None
    finally:
        os.close(directory)


def _connected(path: str) -> socket.socket:
    connected = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM | socket.SOCK_NONBLOCK)
    try:
        connected.connect(path)
        _check_peer(connected)
    except (OSError, QuenletError):
        connected.close()
        raise
    return connected
