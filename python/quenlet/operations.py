"""The agent's ten operations, as requests."""

from __future__ import annotations

from collections.abc import Iterable

from .errors import invalid
from .protocol import ERROR, ERROR_CLASS, Operation, error_from
from .records import (
    CARD_CLASS,
    CARD_KEYS,
    DONATION,
    account_object,
    card_from,
    donation_from,
    donation_object,
)
from .values import Account, Card, Donation
from .wire import Known, Reader, Value, WireError, WireObject

_EITHER_CLASS = "Either"
_CARD = Known(ERROR.classes | {CARD_CLASS, _EITHER_CLASS}, ERROR.keys | CARD_KEYS)
_LIST = Known(ERROR.classes | DONATION.classes, ERROR.keys | DONATION.keys)


def card() -> Operation[Card]:
    return Operation("fetchDonatedMeCard:", (), _read_card, _CARD)


def synchronous_card() -> Operation[Card]:
    return Operation("synchronousDonatedMeCard:", (), _read_either, _CARD)


def donations() -> Operation[list[Donation]]:
    return Operation("meCardDonations:", (), _read_donations, _LIST)


def donate(values: Iterable[Donation]) -> Operation[None]:
    try:
        objects: list[Value] = [donation_object(each) for each in values]
    except WireError as fault:
        raise invalid(str(fault)) from None
    return Operation("donateMeCardValues:completionHandler:", (objects,), _read_completion)


def remove(identifiers: Iterable[str]) -> Operation[None]:
    name = "removeDonatedMeCardValuesForIdentifiers:completionHandler:"
    if isinstance(identifiers, str):
        raise invalid("one identifier where several belong")
    return Operation(name, (list(identifiers),), _read_removal)


def remove_bundle(bundle_identifier: str) -> Operation[None]:
    name = "removeDonatedMeCardValuesWithBundleIdentifier:completionHandler:"
    return Operation(name, (bundle_identifier,), _read_removal)


def reject(donation_identifier: str) -> Operation[None]:
    name = "rejectValueWithDonationIdentifier:completionHandler:"
    return Operation(name, (donation_identifier,), _read_completion)


def reject_cluster(cluster_identifier: str) -> Operation[None]:
    name = "rejectValuesWithClusterIdentifier:completionHandler:"
    return Operation(name, (cluster_identifier,), _read_completion)


def remove_all_rejections() -> Operation[None]:
    return Operation("removeAllRejectionsWithCompletionHandler:", (), _read_completion)


def change_account(old: Account | None, new: Account | None) -> Operation[None]:
    try:
        accounts = [account_object(each) if each else None for each in (old, new)]
    except WireError as fault:
        raise invalid(str(fault)) from None
    return Operation("changeFromAccount:toAccount:completionHandler:", accounts, _read_completion)


def _read_completion(reply: Reader) -> None:
    fault = reply.value()
    if fault is not None:
        raise error_from(fault)


def _read_removal(reply: Reader) -> None:
    removed = reply.value()
    _read_completion(reply)
    if removed is not True:
        raise WireError("neither a removal nor an error")


def _read_card(reply: Reader) -> Card:
    value = reply.value()
    _read_completion(reply)
    return card_from(value)


def _read_either(reply: Reader) -> Card:
    either = reply.value()
    if not isinstance(either, WireObject) or either.class_name != _EITHER_CLASS:
        raise WireError("neither a card nor an error")
    content = either.content
    if isinstance(content, WireObject) and content.class_name == ERROR_CLASS:
        raise error_from(content)
    return card_from(content)


def _read_donations(reply: Reader) -> list[Donation]:
    if reply.next_is_null():
        reply.value()
        _read_completion(reply)
        raise WireError("neither donations nor an error")
    found = [donation_from(each) for each in reply.items()]
    _read_completion(reply)
    return found
