"""Donations, cards and accounts in the form in which they travel.

What is read was written by others, in part by other donors: each value is checked for its type.
Unknown keys are passed over, so that records may gain some. The error of all readers is WireError.
"""

from __future__ import annotations

from collections.abc import Callable, Mapping
from datetime import datetime
from typing import Any, TypeVar

from .values import (
    Account,
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
)
from .wire import (
    BOOLEAN,
    DATA,
    DATE,
    DICTIONARY,
    INTEGER,
    LIST,
    REAL,
    STRING,
    Known,
    Record,
    Value,
    WireError,
    WireObject,
    date_at,
    seconds_since_epoch,
)

DONATION_CLASS = "DonationValue"
CARD_CLASS = "Contact"
ACCOUNT_CLASS = "Account"

_CONTENT_KEYS = ("nameComponents", "emailAddress", "phoneNumber", "postalAddress", "imageData")

# From the names of the fields to those of the keys.
_NAME_KEYS = {
    "given_name": "givenName",
    "family_name": "familyName",
    "middle_name": "middleName",
    "name_prefix": "namePrefix",
    "name_suffix": "nameSuffix",
    "nickname": "nickname",
}
_ADDRESS_KEYS = {
    "street": "street",
    "sub_locality": "subLocality",
    "city": "city",
    "sub_administrative_area": "subAdministrativeArea",
    "state": "state",
    "postal_code": "postalCode",
    "country": "country",
    "iso_country_code": "isoCountryCode",
}

_ORIGIN_KEYS = (
    "bundleIdentifier",
    "donationIdentifier",
    "donationDate",
    "expirationDate",
    "clusterIdentifier",
)
_FIELD_KEYS = (*_ORIGIN_KEYS, *_NAME_KEYS.values(), *_ADDRESS_KEYS.values())
_ENTRIES_KEYS = ("emailAddresses", "phoneNumbers", "postalAddresses")

CARD_KEYS = frozenset((*_ENTRIES_KEYS, "imageData", "value", "label", "valueOrigin", *_FIELD_KEYS))
DONATION = Known(
    frozenset({DONATION_CLASS}),
    frozenset((*_CONTENT_KEYS, "origin", "label", "style", *_FIELD_KEYS)),
)

T = TypeVar("T")


def donation_object(donation: Donation) -> WireObject:
    """Raises WireError for a donation without content, or whose dates have no time zone."""
    if not isinstance(donation, Donation) or not isinstance(donation.origin, Origin):
        raise WireError("a donation is a Donation with an Origin")
    record = _content_record(donation.content)
    record["origin"] = _origin_record(donation.origin)
    return WireObject(DONATION_CLASS, record)


def donation_from(value: Value) -> Donation:
    record = _content_of(value, DONATION_CLASS)
    if not _is_property_list(record):
        raise WireError("a donation that is not a property list")
    found = [key for key in _CONTENT_KEYS if key in record]
    if len(found) != 1:
        raise WireError("a donation with no content, or with several")
    return Donation(_content_from(record, found[0]), _origin_from(_dictionary(record, "origin")))


def card_from(value: Value) -> Card:
    record = _content_of(value, CARD_CLASS)
    image = _optional(record, "imageData", bytes)
    return Card(
        name=Name(**_texts(record, _NAME_KEYS)),
        email_addresses=_entries(record, "emailAddresses", _email_address),
        phone_numbers=_entries(record, "phoneNumbers", _phone_number),
        postal_addresses=_entries(record, "postalAddresses", _postal_address),
        image=None if image is None else Image(image),
    )


def account_object(account: Account) -> WireObject:
    if isinstance(account.data_classes, str):
        raise WireError("one data class where several belong")
    record: dict[str, Value] = {
        "identifier": account.identifier,
        "active": account.active,
        "dataClasses": list(account.data_classes),
        "properties": account.properties,
    }
    for key, text in (("type", account.type), ("username", account.username)):
        if text is not None:
            record[key] = text
    return WireObject(ACCOUNT_CLASS, record)


def _content_record(content: Content) -> dict[str, Value]:
    if isinstance(content, Name):
        return {"nameComponents": _present(content, _NAME_KEYS, None)}
    if isinstance(content, EmailAddress):
        return {"emailAddress": content.address, "label": content.label}
    if isinstance(content, PhoneNumber):
        return {"phoneNumber": content.number, "label": content.label}
    if isinstance(content, PostalAddress):
        address = _present(content, _ADDRESS_KEYS, "")
        return {"postalAddress": address, "label": content.label, "style": int(content.style)}
    if isinstance(content, Image):
        return {"imageData": content.data}
    raise WireError(f"a {type(content).__name__} cannot be donated")


def _present(content: Any, keys: Mapping[str, str], absent: str | None) -> dict[str, Value]:
    texts = ((key, getattr(content, field)) for field, key in keys.items())
    return {key: text for key, text in texts if text != absent}


def _origin_record(origin: Origin) -> dict[str, Value]:
    record: dict[str, Value] = {
        "bundleIdentifier": origin.bundle_identifier,
        "donationIdentifier": origin.donation_identifier,
        "donationDate": seconds_since_epoch(origin.donation_date),
        "expirationDate": seconds_since_epoch(origin.expiration_date),
    }
    if origin.cluster_identifier is not None:
        record["clusterIdentifier"] = origin.cluster_identifier
    return record


def _content_from(record: Mapping[str, Value], key: str) -> Content:
    if key == "nameComponents":
        components = _dictionary(record, key)
        known_are_texts = all(isinstance(each, str) for each in components.values())
        if not known_are_texts or not components.unknown_are(STRING):
            raise WireError("a component of a name that is not a text")
        return Name(**_texts(components, _NAME_KEYS))
    if key == "imageData":
        return Image(_required(record, key, bytes))
    label = _required(record, "label", str)
    if key == "emailAddress":
        return EmailAddress(_required(record, key, str), label)
    if key == "phoneNumber":
        return PhoneNumber(_required(record, key, str), label)
    style = _required(record, "style", int)
    return PostalAddress(
        **_texts(_dictionary(record, key), _ADDRESS_KEYS), label=label, style=style
    )


def _origin_from(record: Mapping[str, Value]) -> Origin:
    return Origin(
        bundle_identifier=_required(record, "bundleIdentifier", str),
        donation_identifier=_required(record, "donationIdentifier", str),
        expiration_date=_date(record, "expirationDate"),
        cluster_identifier=_optional(record, "clusterIdentifier", str),
        donation_date=_date(record, "donationDate"),
    )


def _date(record: Mapping[str, Value], key: str) -> datetime:
    value = record.get(key)
    if isinstance(value, datetime):
        return value
    if isinstance(value, bool) or not isinstance(value, (int, float)):
        raise WireError(f"no date {key}")
    return date_at(value)


def _entries(
    record: Mapping[str, Value], key: str, content: Callable[[Mapping[str, Value]], T]
) -> tuple[Entry[T], ...]:
    return tuple(_entry(each, content) for each in _optional(record, key, list) or ())


def _entry(value: Value, content: Callable[[Mapping[str, Value]], T]) -> Entry[T]:
    if not isinstance(value, dict):
        raise WireError("an entry that is not a dictionary")
    origin = _dictionary(value, "valueOrigin") if "valueOrigin" in value else None
    return Entry(content(value), _origin_from(origin) if origin is not None else None)


def _email_address(entry: Mapping[str, Value]) -> EmailAddress:
    return EmailAddress(_required(entry, "value", str), _required(entry, "label", str))


def _phone_number(entry: Mapping[str, Value]) -> PhoneNumber:
    return PhoneNumber(_required(entry, "value", str), _required(entry, "label", str))


def _postal_address(entry: Mapping[str, Value]) -> PostalAddress:
    texts = _texts(_dictionary(entry, "value"), _ADDRESS_KEYS)
    return PostalAddress(**texts, label=_required(entry, "label", str))


def _content_of(value: Value, class_name: str) -> Record:
    if not isinstance(value, WireObject) or value.class_name != class_name:
        raise WireError(f"not a {class_name}")
    if not isinstance(value.content, Record):
        raise WireError(f"a {class_name} that is not a dictionary")
    return value.content


def _dictionary(record: Mapping[str, Value], key: str) -> Record:
    return _required(record, key, Record)


def _required(record: Mapping[str, Value], key: str, kind: type[T]) -> T:
    value = record.get(key)
    # A bool is an int to Python, but not to the agent.
    if not isinstance(value, kind) or isinstance(value, bool):
        raise WireError(f"{key} is missing, or of the wrong type")
    return value


def _optional(record: Mapping[str, Value], key: str, kind: type[T]) -> T | None:
    return _required(record, key, kind) if key in record else None


def _texts(record: Mapping[str, Value], keys: Mapping[str, str]) -> dict[str, Any]:
    return {field: _required(record, key, str) for field, key in keys.items() if key in record}


def _is_property_list(value: Value) -> bool:
    if isinstance(value, Record):
        if not value.unknown_are(BOOLEAN, INTEGER, REAL, DATE, STRING, DATA, LIST, DICTIONARY):
            return False
        return all(map(_is_property_list, value.values()))
    if isinstance(value, list):
        return all(map(_is_property_list, value))
    return value is not None and not isinstance(value, WireObject)
