"""Chromium without a window, told what to do over a pipe (its DevTools protocol)."""
import base64
import itertools
import json
import os
import select
import subprocess
import time

from homes import Failure, expect

SECONDS_FOR_ANSWER = 30


class Chromium:
    """One browser with a profile of its own, which reaches no host but this one."""

    def __init__(self, profile, environment, *options):
        self.profile = profile
        self.environment = environment
        self.options = options
        self.numbers = itertools.count(1)
        self.pending = b""
        self.answers = {}

    def __enter__(self):
        fromUs, self.toBrowser = os.pipe()
        self.fromBrowser, toUs = os.pipe()
        command = [
            "chromium", "--headless=new", "--disable-gpu", "--no-first-run", "--disable-sync",
            "--disable-background-networking", "--disable-component-update",
            "--disable-dev-shm-usage", "--window-size=1000,900", f"--user-data-dir={self.profile}",
            "--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE 127.0.0.1, EXCLUDE localhost",
            "--remote-debugging-pipe", "--enable-unsafe-extension-debugging",
            *self.options, "about:blank"]
        if os.geteuid() == 0:
            command.insert(1, "--no-sandbox")
        # The browser reads commands from descriptor 3 and answers on 4.
        shell = ["bash", "-c", f'exec "$@" 3<&{fromUs} 4>&{toUs}', "chromium"]
        self.process = subprocess.Popen([*shell, *command], env=self.environment,
                                        pass_fds=(fromUs, toUs), stdin=subprocess.DEVNULL,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                        start_new_session=True)
        os.close(fromUs)
        os.close(toUs)
        return self

    def __exit__(self, *_):
        try:
            self.call("Browser.close")
            self.process.wait(timeout=20)
        except (Failure, subprocess.TimeoutExpired):
            os.killpg(self.process.pid, 9)
            self.process.wait()
        finally:
            os.close(self.toBrowser)
            os.close(self.fromBrowser)

    def call(self, method, session=None, **parameters):
        number = next(self.numbers)
        message = {"id": number, "method": method, "params": parameters}
        if session:
            message["sessionId"] = session
        os.write(self.toBrowser, json.dumps(message).encode() + b"\0")
        end = time.monotonic() + SECONDS_FOR_ANSWER
        while number not in self.answers:
            self.read(end - time.monotonic(), method)
        answer = self.answers.pop(number)
        expect("error" not in answer, f"{method}: {answer.get('error')}")
        return answer["result"]

    def read(self, seconds, method):
        ready, _, _ = select.select([self.fromBrowser], [], [], max(seconds, 0))
        expect(ready, f"{method}: no answer within {SECONDS_FOR_ANSWER} s")
        piece = os.read(self.fromBrowser, 1 << 20)
        expect(piece, f"{method}: the browser has ended")
        *messages, self.pending = (self.pending + piece).split(b"\0")
        for message in map(json.loads, messages):
            if "id" in message:
                self.answers[message["id"]] = message

    def targets(self, kind):
        # Without a filter, tabs are left out.
        return self.call("Target.getTargets", filter=[{"type": kind}])["targetInfos"]

    def waitForTarget(self, kind, isMeant, seconds=SECONDS_FOR_ANSWER):
        """The identifier of the first target for which `isMeant` holds, once there is one."""
        end = time.monotonic() + seconds
        while True:
            for target in self.targets(kind):
                if isMeant(target):
                    return target["targetId"]
            expect(time.monotonic() < end, f"no {kind} of that kind appears")
            time.sleep(0.05)

    def page(self, target):
        return Page(self, target)

    def openPage(self, address):
        page = self.page(self.call("Target.createTarget", url="about:blank")["targetId"])
        page.go(address)
        return page


class Page:
    """A page of the browser's, which may be the popup of an extension."""

    def __init__(self, browser, target):
        self.browser = browser
        self.target = target
        self.session = browser.call("Target.attachToTarget", targetId=target,
                                    flatten=True)["sessionId"]

    def call(self, method, **parameters):
        return self.browser.call(method, self.session, **parameters)

    def go(self, address):
        self.call("Page.navigate", url=address)
        self.waitFor(f"document.readyState == 'complete' && location.href == {json.dumps(address)}")

    def evaluate(self, expression):
        """The value of an expression, awaited if it is a promise."""
        done = self.call("Runtime.evaluate", expression=expression, awaitPromise=True,
                         returnByValue=True, userGesture=True)
        details = done.get("exceptionDetails", {})
        expect(not details, f"{expression[:80]}: {details.get('exception', details)}")
        return done["result"].get("value")

    def waitFor(self, condition, seconds=SECONDS_FOR_ANSWER):
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            try:
                if self.evaluate(condition):
                    return
            except Failure as failure:
                # The page was about to become another one.
                if "context" not in str(failure) and "navigated" not in str(failure):
                    raise
            time.sleep(0.05)
        raise Failure(f"it did not come to pass within {seconds} s: {condition}")

    def click(self, selector):
        measure = f"""(() => {{
            const element = document.querySelector({json.dumps(selector)});
            element.scrollIntoView();
            const {{left, top, width, height}} = element.getBoundingClientRect();
            return {{x: left + width / 2, y: top + height / 2}};
        }})()"""
        box = None
        # A popup grows with what it shows.
        while box != (box := self.evaluate(measure)):
            time.sleep(0.05)
        for kind in ("mousePressed", "mouseReleased"):
            self.call("Input.dispatchMouseEvent", type=kind, button="left", clickCount=1, **box)

    def screenshot(self, width, height):
        clip = {"x": 0, "y": 0, "width": width, "height": height, "scale": 1}
        return base64.b64decode(self.call("Page.captureScreenshot", format="png", clip=clip,
                                          captureBeyondViewport=True)["data"])

    def close(self):
        self.browser.call("Target.closeTarget", targetId=self.target)
        end = time.monotonic() + SECONDS_FOR_ANSWER
        while any(target["targetId"] == self.target for target in self.browser.targets("page")):
            expect(time.monotonic() < end, "a page stays open")
            time.sleep(0.01)
