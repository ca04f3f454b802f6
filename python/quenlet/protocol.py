"""What a client knows of its connection, without any input or output.

A `Connection` makes the bytes of requests and reads those of answers; its user moves the
bytes, and watches the clock.
"""

from __future__ import annotations

from collections.abc import Callable, Iterator, Mapping, Sequence
from dataclasses import dataclass
from typing import Any, Generic, TypeVar

from .errors import SERVICE, QuenletError, error, invalid, malformed
from .messages import Kind, Message, MessageReader, pack
from .wire import Known, Reader, Value, WireError, WireObject, encode

ERROR_CLASS = "Error"
ERROR = Known(
    frozenset({ERROR_CLASS}), frozenset({"domain", "code", "userInfo", "DebugDescription"})
)

# How many bytes of answers that come in parts a client holds.
ANSWER_LIMIT = 1 << 30

# How long a client waits for an answer, in seconds.
TIME_LIMIT = 25.0

T = TypeVar("T")


@dataclass(frozen=True)
class Operation(Generic[T]):
    """A request of one of the agent's operations, and how its reply is read.

    `read` takes the reply's values from a reader of what is `known`, and raises what the agent
    answered, or WireError if the values are not those of this operation.
    """

    name: str
    arguments: Sequence[Value]
    read: Callable[[Reader], T]
    known: Known = ERROR


@dataclass(frozen=True)
class Answer(Generic[T]):
    """The end of the request with this identifier: its result, or an error."""

    identifier: int
    result: T
    error: QuenletError | None = None


def error_from(value: Value) -> QuenletError:
    """Reads an Error object. Raises WireError if the value is not one."""
    content = value.content if isinstance(value, WireObject) else None
    if not isinstance(content, dict):
        raise WireError("not an error")
    domain, code, details = (content.get(key) for key in ("domain", "code", "userInfo"))
    if not isinstance(domain, str) or isinstance(code, bool) or not isinstance(code, int):
        raise WireError("an error without domain or code")
    sentence = details.get("DebugDescription") if isinstance(details, dict) else None
    return error(domain, code, sentence if isinstance(sentence, str) else "")


def error_object(fault: QuenletError) -> WireObject:
    """The Error object that `error_from` reads. Raises WireError if its parts have wrong types."""
    if not isinstance(fault.domain, str) or type(fault.code) is not int:
        raise WireError("an error without domain or code")
    details: Mapping[str, Value] = {"DebugDescription": fault.sentence} if fault.sentence else {}
    content: Value = {"domain": fault.domain, "code": fault.code, "userInfo": details}
    return WireObject(ERROR_CLASS, content)


class Connection:
    """The requests under way on one connection. For one thread at a time.

    An exception from `receive` is the end of the connection: it must then be closed, and the error
    is that of every request under way.
    """

    def __init__(self, answer_limit: int = ANSWER_LIMIT) -> None:
        """`answer_limit` bounds the bytes of answers that come in parts."""
        self._answer_limit = answer_limit
        self._messages = MessageReader()
        self._last_identifier = 0
        self._awaited: dict[int, Operation[Any]] = {}
        self._forgotten: set[int] = set()
        self._parts: dict[int, bytearray] = {}

    def request(self, operation: Operation[Any]) -> tuple[int, bytes]:
        """Begins a request. Returns its identifier and the bytes to send.

        Raises InvalidArguments if the arguments cannot travel, or QuenletError with code 6 if they
        are too large; there is no request then.
        """
        try:
            body = encode([operation.name, *operation.arguments])
        except WireError as fault:
            raise invalid(str(fault)) from None
        identifier = self._last_identifier + 1
        try:
            data = pack(Message(Kind.REQUEST, identifier, body))
        except WireError as fault:
            raise error(SERVICE, 6, str(fault)) from None
        self._last_identifier = identifier
        self._awaited[identifier] = operation
        return identifier, data

    def forget(self, identifier: int) -> None:
        """Gives a request up: a late answer is dropped. Nothing happens if it has its answer."""
        if self._awaited.pop(identifier, None):
            self._forgotten.add(identifier)
            self._parts.pop(identifier, None)

    def receive(self, data: bytes) -> Iterator[Answer[Any]]:
        """Takes bytes from the agent, and yields the answers that they complete.

        Raises MalformedAnswer if they make no sense, or the failure of the whole connection.
        """
        try:
            for message in self._messages.feed(data):
                answer = self._take(message)
                if answer:
                    yield answer
        except WireError as fault:
            raise malformed(str(fault)) from None

    def _take(self, message: Message) -> Answer[Any] | None:
        identifier = message.identifier
        if message.kind == Kind.FAILURE and identifier == 0:
            raise error_from(Reader(message.body, ERROR).value())
        if identifier in self._forgotten:
            if message.kind != Kind.PART:
                self._forgotten.remove(identifier)
            return None
        operation = self._awaited.get(identifier)
        if message.kind == Kind.REQUEST or operation is None:
            raise WireError("an answer to no request")
        if message.kind == Kind.FAILURE:
            self._end(identifier)
            return _failure(message)
        body = self._assembled(message)
        if body is None:
            return None
        self._end(identifier)
        return _reply(identifier, operation, body)

    def _assembled(self, message: Message) -> bytes | bytearray | None:
        """The whole reply once its last part is here."""
        if message.kind == Kind.REPLY and message.identifier not in self._parts:
            return message.body
        held = sum(map(len, self._parts.values()))
        if held + len(message.body) > self._answer_limit:
            raise WireError(f"answers of more than {self._answer_limit} bytes")
        parts = self._parts.setdefault(message.identifier, bytearray())
        parts += message.body
        return parts if message.kind == Kind.REPLY else None

    def _end(self, identifier: int) -> None:
        del self._awaited[identifier]
        self._parts.pop(identifier, None)


def _failure(message: Message) -> Answer[Any]:
    try:
        failure = error_from(Reader(message.body, ERROR).value())
    except WireError as fault:
        failure = malformed(str(fault))
    return Answer(message.identifier, None, failure)


def _reply(identifier: int, operation: Operation[Any], body: bytes | bytearray) -> Answer[Any]:
    reader = Reader(body, operation.known)
    try:
        result = operation.read(reader)
        if not reader.at_end():
            raise WireError("more values than the operation replies")
        return Answer(identifier, result)
    except WireError as fault:
        return Answer(identifier, None, malformed(str(fault)))
    except QuenletError as refusal:
        return Answer(identifier, None, refusal)
