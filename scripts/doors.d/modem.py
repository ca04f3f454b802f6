#!/usr/bin/env python3
"""A modem that ModemManager can drive, at an abstract socket in place of a serial port.

  modem.py PORT CARD

CARD is a file with the SIM card as JSON, read anew for each command: "iccid", "imsi", "numbers", and
"isLocked". What is not in the table is answered with ERROR, as modems do.
"""

import json
import socket
import sys
import threading


def swapped(digits):
    """As a card stores them: two digits in a byte, the lower half first."""
    digits += "F" * (len(digits) % 2)
    return "".join(digits[place + 1] + digits[place] for place in range(0, len(digits), 2))


def answers(card):
    """The lines of an answer, by command."""
    table = {command: [] for command in ("AT", "ATE0", "ATV1", "ATX4", "AT&C1", "AT+CMEE=1")}
    table |= {
        "AT+CGMI": ["Example"],
        "AT+CGMM": ["Simulated"],
        "AT+CGMR": ["1"],
        "AT+CGSN": ["490154203237518"],
        "AT+GCAP": ["+GCAP: +CGSM"],
        "ATI": ["Example"],
        "AT+CPIN?": ["+CPIN: " + ("SIM PIN" if card["isLocked"] else "READY")],
        # The file of the card's own number, which a PIN does not protect.
        "AT+CRSM=176,12258,0,0,10": [f'+CRSM: 144,0,"{swapped(card["iccid"])}"'],
    }
    if not card["isLocked"]:
        table["AT+CIMI"] = [card["imsi"]]
        table["AT+CNUM"] = [f'+CNUM: "","{number}",145' for number in card["numbers"]]
    return table


def serve(connection, card_file):
    for line in connection.makefile("r", encoding="ascii", newline="\r"):
        with open(card_file, encoding="utf-8") as file:
            lines = answers(json.load(file)).get(line.strip())
        lines = ["ERROR"] if lines is None else [*lines, "OK"]
        connection.sendall("".join(f"\r\n{each}\r\n" for each in lines).encode("ascii"))


def main():
    port, card_file = sys.argv[1:]
    with socket.socket(socket.AF_UNIX) as listener:
        # ModemManager takes the word before the name as a part of it.
        listener.bind(f"\0abstract:{port}")
        listener.listen()
        while True:
            connection, _ = listener.accept()
            threading.Thread(target=serve, args=(connection, card_file), daemon=True).start()


if __name__ == "__main__":
    main()
