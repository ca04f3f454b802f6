"""A user with a home and an agent of their own, for scripts that look at built programs."""
import os
import subprocess
import tempfile
import time
from pathlib import Path


class Failure(Exception):
    """What is wrong, in a sentence."""


def expect(condition, sentence):
    if not condition:
        raise Failure(sentence)


class Home:
    """A user with a home and an agent, as long as the context lasts."""

    def __init__(self, programs):
        self.programs = programs

    def __enter__(self):
        # Not below TMPDIR: a socket's path holds about a hundred bytes only.
        self.directory = tempfile.TemporaryDirectory(prefix="quenlet-home.", dir="/tmp")
        self.place = Path(self.directory.name)
        (self.place / "run").mkdir(mode=0o700)
        (self.place / "home/Library/Contacts").mkdir(parents=True, mode=0o700)
        environment = {key: value for key, value in os.environ.items() if key != "XDG_CONFIG_HOME"}
        self.environment = environment | {
            "HOME": str(self.place / "home"), "XDG_RUNTIME_DIR": str(self.place / "run")}
        self.startAgent()
        return self

    def __exit__(self, *_):
        self.stopAgent()
        self.directory.cleanup()

    def startAgent(self):
        self.agent = subprocess.Popen([self.programs / "quenlet-agent"], env=self.environment,
                                      stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        for _ in range(100):
            if self.run("list", check=False).returncode == 0:
                return
            time.sleep(0.1)
        self.__exit__()
        raise Failure("the agent did not answer within 10 s")

    def stopAgent(self):
        self.agent.terminate()
        self.agent.wait()

    def run(self, *words, check=True):
        done = subprocess.run([self.programs / "quenlet", *words], env=self.environment,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
        expect(not check or done.returncode == 0, f"quenlet {words} failed: {done.stderr}")
        return done

    def keepOwnCard(self, card):
        (self.place / "home/Library/Contacts/me.vcf").write_bytes(card.read_bytes())
