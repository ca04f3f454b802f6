"""The programs in docs/python.md do what the page says."""

from __future__ import annotations

import json
import re
import subprocess
import sys
from pathlib import Path

import pytest
from conftest import BUNDLE, Agent, ask_blocking, donation, until

from quenlet import EmailAddress

PAGE = (Path(__file__).parents[2] / "docs/python.md").read_text()
FORM_FILLER, DONOR, EXTENSION = re.findall(r"```python\n(.*?)```", PAGE, re.DOTALL)

MANIFEST = f"""<plist version="1.0"><dict>
<key>extensionPoint</key><string>ovaro.quenlet</string><key>version</key><string>1.0</string>
<key>bundleIdentifier</key><string>{BUNDLE}</string>
<key>executable</key><string>mail-donor</string></dict></plist>"""


def test_form_filler_follows_the_card(agent: Agent) -> None:
    command = [sys.executable, "-c", FORM_FILLER]
    with subprocess.Popen(
        command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True
    ) as program:
        assert program.stdout and program.stderr
        assert [program.stdout.readline().strip() for _ in range(2)] == ["Name:", ""]
        ask_blocking(lambda me: me.donate([donation(EmailAddress("zoe@example.org", "home"), "1")]))
        lines = [program.stdout.readline().strip() for _ in range(2)]
        assert lines == ["Name:", "E-mail:  zoe@example.org home"]
        agent.end()
        assert "quenlet.errors.ConnectionBroken" in program.stderr.read()


def test_donor_prints_what_it_gave(agent: Agent) -> None:
    command = [sys.executable, "-c", DONOR]
    done = subprocess.run(command, capture_output=True, text=True, timeout=30)
    assert (done.stdout, done.stderr) == (f"anna@example.org from {BUNDLE}\n", "")


@pytest.fixture
def installed(home: Path) -> None:
    """The page's extension, where the agent of this home finds it."""
    directory = home / "etc/quenlet/extensions"
    directory.mkdir(mode=0o755, parents=True)
    (directory / "mail-donor.plist").write_text(MANIFEST)
    (directory / "mail-donor").write_text(EXTENSION)
    (directory / "mail-donor").chmod(0o755)


def test_extension_donates_and_renews(installed: None, agent: Agent) -> None:
    def held() -> list[str]:
        return [each["value"] for each in json.loads(agent.tool("list", "--json"))]

    source = agent.home / ".example-mail"
    source.write_text("anna@example.org\n")
    agent.tool("disable", "--yes")
    agent.tool("enable")
    until(lambda: held() == ["anna@example.org"])
    source.write_text("anna@example.net\n")
    ask_blocking(lambda me: me.donate([donation(EmailAddress("anna@example.net"), "2")]))
    until(lambda: held() == ["anna@example.net"])
