"""Each operation, asked of the real agent."""

from __future__ import annotations

import json
from datetime import date, datetime, timezone
from typing import Any, cast

import pytest
from conftest import BUNDLE, Agent, Ask, card, donation, donations

from quenlet import Account, EmailAddress, Image, InvalidArguments, Name, PhoneNumber, PostalAddress

NAME = donation(Name(given_name="Zoë", family_name="Berg", nickname="", name_suffix="III"), "name")
MAIL = donation(EmailAddress("zoe@example.org", "home"), "mail", cluster_identifier="work")
PHONE = donation(PhoneNumber("+49 30 1234567", "mobile"), "phone", cluster_identifier="work")
HOME = donation(PostalAddress("1 Oak St\nFlat 2", city="Trier", country="DE", style=1), "home")
OLD = datetime(1969, 7, 20, 4, tzinfo=timezone.utc)
IMAGE = donation(Image(b"\x89PNG\0"), "image", donation_date=OLD)
ALL = [NAME, MAIL, PHONE, HOME, IMAGE]


def synchronous_card(me: Any) -> Any:
    return me.synchronous_card()


def test_gives_back_what_was_donated(agent: Agent, ask: Ask) -> None:
    _, held, shown, other = ask(lambda me: me.donate(ALL), donations, card, synchronous_card)
    assert held == ALL
    assert shown == other
    assert shown.name == Name(given_name="Zoë", family_name="Berg", name_suffix="III")
    [mail], [phone], [address] = shown.email_addresses, shown.phone_numbers, shown.postal_addresses
    assert (mail.content, mail.origin) == (MAIL.content, MAIL.origin)
    assert (phone.content, phone.origin) == (PHONE.content, PHONE.origin)
    assert address.content == PostalAddress("1 Oak St\nFlat 2", city="Trier", country="DE")
    assert shown.image == IMAGE.content
    assert json.loads(agent.tool("list", "--json"))[1]["value"] == "zoe@example.org"


CHANGES = {
    "remove": (lambda me: me.remove([f"{BUNDLE}:mail", f"{BUNDLE}:home"]), [NAME, PHONE, IMAGE]),
    "bundle": (lambda me: me.remove_bundle(BUNDLE), []),
    "reject": (lambda me: me.reject(f"{BUNDLE}:phone"), [NAME, MAIL, HOME, IMAGE]),
    "reject cluster": (lambda me: me.reject_cluster("work"), [NAME, HOME, IMAGE]),
    "remove rejections": (lambda me: me.remove_all_rejections(), ALL),
}


@pytest.mark.parametrize("row", CHANGES)
def test_changes_what_is_held(agent: Agent, ask: Ask, row: str) -> None:
    change, left = CHANGES[row]
    assert ask(lambda me: me.donate(ALL), change, donations) == [None, None, left]


def test_tells_of_accounts(agent: Agent, ask: Ask) -> None:
    properties: Any = {"FullUserName": "Anna Berg", "more": [1, 2.5, b"x", {"on": True}]}
    account = Account("work", "ovaro.account.IMAP", "anna@example.org", True, ["mail"], properties)
    add = [lambda me: me.change_account(None, account), donations]
    remove = [lambda me: me.change_account(account, None), donations]
    _, held, _, left = ask(*add, *remove)
    assert {each.origin.bundle_identifier for each in held} == {"ovaro.quenlet.accounts"}
    assert held[0].content == Name(given_name="Anna", family_name="Berg")
    assert held[1].content.address == "anna@example.org"
    assert left == []


WIDE = memoryview(b"12345678").cast("I")
BAD_CONTENTS = {
    "no number": (PhoneNumber("none"), 4),
    "surrogate": (EmailAddress("\ud800"), 4),
    "no value": (cast(Any, 8), 4),
    "32 MiB": (Image(bytes(2**25)), 6),
}
BAD_ARGUMENTS: dict[str, Any] = {
    "no zone": lambda me: me.donate([donation(Name(), "4", donation_date=datetime(2026, 1, 2))]),
    "wide memory": lambda me: me.donate([donation(Image(cast(Any, WIDE)), "5")]),
    "day": lambda me: me.donate([donation(Name(), "6", donation_date=date(2026, 1, 2))]),
    "no donation": lambda me: me.donate([8]),
    "number as key": lambda me: me.change_account(None, Account("7", properties=cast(Any, {7: 8}))),
    "one data class": lambda me: me.change_account(None, Account("8", data_classes="mail")),
    "no list": lambda me: me.remove("com"),
}


@pytest.mark.parametrize("row", [*BAD_CONTENTS, *BAD_ARGUMENTS])
def test_refuses_bad_arguments_and_goes_on(agent: Agent, ask: Ask, row: str) -> None:
    content, number = BAD_CONTENTS.get(row, (None, 4))
    operation = BAD_ARGUMENTS.get(row, lambda me: me.donate([MAIL, donation(content, "1")]))
    refused, held = ask(operation, donations)
    assert (refused.code, held) == (number, [])
    assert isinstance(refused, InvalidArguments) == (number == 4)
