"""The errors of this package: one class for all, and one for each case that a caller handles."""

from __future__ import annotations

SERVICE = "ovaro.quenlet.service-error"
DONATION = "ovaro.quenlet.donation-error"
POSIX = "posix-error"
GENERAL = "ovaro.general-error"
EXTENSION = "ovaro.quenlet.extension-error"


class QuenletError(Exception):
    """What the agent answered, or why it could not be asked.

    `domain` and `code` say what happened and stay the same between versions; `sentence` is for
    people and holds no donated value.
    """

    def __init__(self, domain: str, code: int, sentence: str = "") -> None:
        super().__init__(domain, code, sentence)
        self.domain = domain
        self.code = code
        self.sentence = sentence

    def __str__(self) -> str:
        head = f"{self.domain} {self.code}"
        return f"{head}: {self.sentence}" if self.sentence else head


class NoAgent(QuenletError):
    """Nobody listens, or the listener is not to be trusted."""


class ConnectionBroken(QuenletError):
    """The agent ended before it answered. Every operation may be repeated with a new client."""


class TimedOut(QuenletError):
    """No answer came in time. The agent may still do what it was asked."""


class InvalidArguments(QuenletError):
    """An argument is not valid; nothing has changed."""


class MalformedAnswer(QuenletError):
    """An answer makes no sense."""


class NotEntitled(QuenletError):
    """The program has no entitlement."""


class BundleNotAllowed(QuenletError):
    """The program's entitlements name the bundles that it may change, and this is not one."""


class DonationsDisabled(QuenletError):
    """Donations are off, or the agent has just started and does not know yet."""


_CLASSES: dict[tuple[str, int], type[QuenletError]] = {
    (SERVICE, 1): NoAgent,
    (SERVICE, 2): ConnectionBroken,
    (SERVICE, 4): InvalidArguments,
    (SERVICE, 5): MalformedAnswer,
    (SERVICE, 11): TimedOut,
    (SERVICE, 12): BundleNotAllowed,
    (GENERAL, 4097): NotEntitled,
    (DONATION, 1): DonationsDisabled,
}


def error(domain: str, code: int, sentence: str = "") -> QuenletError:
    """Makes the error of a domain and a code, of the class that stands for both."""
    return _CLASSES.get((domain, code), QuenletError)(domain, code, sentence)


def no_agent(sentence: str) -> QuenletError:
    return error(SERVICE, 1, sentence)


def broken(sentence: str = "the agent ended before it answered") -> QuenletError:
    return error(SERVICE, 2, sentence)


def invalid(sentence: str) -> QuenletError:
    return error(SERVICE, 4, sentence)


def malformed(sentence: str) -> QuenletError:
    return error(SERVICE, 5, sentence)


def of_system(fault: OSError) -> QuenletError:
    return error(POSIX, fault.errno or 0, fault.strerror or "")


def timed_out() -> QuenletError:
    return error(SERVICE, 11, "no answer within the time limit")
