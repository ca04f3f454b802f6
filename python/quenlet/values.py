"""The values that describe the device's owner, and where they come from. All are immutable.

Values do not show themselves in tracebacks and logs: `repr` of what holds personal text leaves the
text out. Print the fields that you want.
"""

from __future__ import annotations

import enum
from collections.abc import Mapping, Sequence
from dataclasses import dataclass, field
from datetime import datetime, timedelta, timezone
from typing import Generic, TypeVar, Union


def in_days(days: float) -> datetime:
    """The time in so many days, for expiration dates; negative for the past."""
    return now() + timedelta(days=days)


def now() -> datetime:
    return datetime.now(timezone.utc)


@dataclass(frozen=True)
class Name:
    """A person's name. An absent component is None, which is not an empty one."""

    given_name: str | None = field(default=None, repr=False)
    family_name: str | None = field(default=None, repr=False)
    middle_name: str | None = field(default=None, repr=False)
    name_prefix: str | None = field(default=None, repr=False)
    name_suffix: str | None = field(default=None, repr=False)
    nickname: str | None = field(default=None, repr=False)


@dataclass(frozen=True)
class EmailAddress:
    address: str = field(repr=False)
    label: str = field(default="", repr=False)


@dataclass(frozen=True)
class PhoneNumber:
    """A number as it was donated, however it is written."""

    number: str = field(repr=False)
    label: str = field(default="", repr=False)


class AddressStyle(enum.IntEnum):
    MAILING = 0
    ABBREVIATED = 1


@dataclass(frozen=True)
class PostalAddress:
    """An address; the lines of its street are separated by line feeds. An absent field is empty."""

    street: str = field(default="", repr=False)
    sub_locality: str = field(default="", repr=False)
    city: str = field(default="", repr=False)
    sub_administrative_area: str = field(default="", repr=False)
    state: str = field(default="", repr=False)
    postal_code: str = field(default="", repr=False)
    country: str = field(default="", repr=False)
    iso_country_code: str = field(default="", repr=False)
    label: str = field(default="", repr=False)
    style: int = AddressStyle.MAILING


@dataclass(frozen=True)
class Image:
    """A picture of the owner, in whatever format its bytes are."""

    data: bytes = field(repr=False)


T = TypeVar("T")

Content = Union[Name, EmailAddress, PhoneNumber, PostalAddress, Image]


@dataclass(frozen=True)
class Origin:
    """Who donated a value, when, and until when it holds.

    A donation replaces the one with the same donation identifier. Dates have a time zone; those
    beyond the years 1 to 9999 are read as the nearest that a datetime can hold.
    """

    bundle_identifier: str
    donation_identifier: str
    expiration_date: datetime
    cluster_identifier: str | None = None
    donation_date: datetime = field(default_factory=now)


@dataclass(frozen=True)
class Donation:
    content: Content
    origin: Origin


@dataclass(frozen=True)
class Entry(Generic[T]):
    """A value on the card, and the donation that it comes from."""

    content: T
    origin: Origin | None = None


@dataclass(frozen=True)
class Card:
    """The donated me card: what all donors together say of the owner. It may be empty."""

    name: Name = Name()
    email_addresses: tuple[Entry[EmailAddress], ...] = ()
    phone_numbers: tuple[Entry[PhoneNumber], ...] = ()
    postal_addresses: tuple[Entry[PostalAddress], ...] = ()
    image: Image | None = None


PropertyList = Union[
    bool, int, float, datetime, str, bytes, Sequence["PropertyList"], Mapping[str, "PropertyList"]
]


@dataclass(frozen=True)
class Account:
    """An account of the owner's, from which the agent takes a name and an address."""

    identifier: str = field(repr=False)
    type: str | None = None
    username: str | None = field(default=None, repr=False)
    active: bool = False
    data_classes: Sequence[str] = ()
    properties: Mapping[str, PropertyList] = field(default_factory=dict, repr=False)
