"""Talks to quenlet-agent, which keeps the values that describe the device's owner.

`Client` is for programs with an asyncio event loop, `quenlet.blocking.Client` for those without;
`quenlet.extension.run` is the main loop of donor extensions.
"""

from . import blocking, extension
from .client import Client
from .errors import (
    BundleNotAllowed,
    ConnectionBroken,
    DonationsDisabled,
    InvalidArguments,
    MalformedAnswer,
    NoAgent,
    NotEntitled,
    QuenletError,
    TimedOut,
)
from .values import (
    Account,
    AddressStyle,
    Card,
    Content,
    Donation,
    EmailAddress,
    Entry,
    Image,
    Name,
    Origin,
    PhoneNumber,
    PostalAddress,
    in_days,
    now,
)

__all__ = [
    "Account",
    "AddressStyle",
    "BundleNotAllowed",
    "Card",
    "Client",
    "ConnectionBroken",
    "Content",
    "Donation",
    "DonationsDisabled",
    "EmailAddress",
    "Entry",
    "Image",
    "InvalidArguments",
    "MalformedAnswer",
    "Name",
    "NoAgent",
    "NotEntitled",
    "Origin",
    "PhoneNumber",
    "PostalAddress",
    "QuenletError",
    "TimedOut",
    "blocking",
    "extension",
    "in_days",
    "now",
]
