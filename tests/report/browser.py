"""Browsers without a window: Chromium by its DevTools protocol through a pipe, and Firefox by WebDriver BiDi."""

import base64
import json
import os
import re
import shutil
import subprocess
import tempfile
import time

try:
    import websocket
except ImportError:
    websocket = None

# Status of a test that this machine cannot run.
SKIPPED = 77

# Installed by tools/setup.sh browser.
AXE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "build", "browser", "node_modules", "axe-core",
                   "axe.min.js")

# Where a browser reports a violation of the page's security policy differs; the page's own event does not.
WATCH = "addEventListener('securitypolicyviolation', event => " \
        "(globalThis.violations ??= []).push(`${event.violatedDirective}: ${event.blockedURI}`))"


class PageLeft(RuntimeError):
    """The page was left before it could answer."""


class Browser:
    """One page. Collects what its console reports, and every request that it makes."""

    PATIENCE = 60
    # Name of the program.
    PROGRAM = ""

    @classmethod
    def missing(cls):
        """What this machine lacks to run the browser; empty if nothing."""
        return "" if shutil.which(cls.PROGRAM) else f"{cls.PROGRAM} is not installed"

    def __init__(self):
        self.profile = tempfile.mkdtemp()
        self.serial = 0
        self.events = []

    def __enter__(self):
        return self

    def __exit__(self, *_):
        try:
            self._end()
            self.process.wait(10)
        except Exception:
            self.process.kill()
            self.process.wait()
        shutil.rmtree(self.profile, ignore_errors=True)

    def _answer(self, serial):
        """Receives until a call is answered; keeps the events that arrive before."""
        while True:
            message = self._receive()
            if message.get("id") == serial:
                return message
            if "method" in message:
                self.events.append(message)

    def wait_for(self, condition):
        end = time.monotonic() + self.PATIENCE
        while not self._holds(condition):
            if time.monotonic() > end:
                raise RuntimeError(f"not so after {self.PATIENCE} s: {condition}")
            time.sleep(0.02)

    def _holds(self, condition):
        try:
            return self.value(condition)
        except PageLeft:
            return False

    def open(self, path):
        """Shows a file."""
        self.visit("file://" + os.path.abspath(path))

    def middle(self, selector):
        """Where an element's middle is in the window, in whole pixels."""
        x, y = self.value(f"(box => [box.x + box.width / 2, box.y + box.height / 2])"
                          f"(document.querySelector({json.dumps(selector)}).getBoundingClientRect())")
        return round(x), round(y)

    def scroll_to(self, selector):
        """Returns where the element's middle is then."""
        self.value(f"document.querySelector({json.dumps(selector)})"
                   ".scrollIntoView({block: 'center', behavior: 'instant'})")
        return self.middle(selector)

    def click(self, selector):
        """As a viewer of the page: what lies over the element receives the click."""
        self.click_at(*self.scroll_to(selector))

    def point_at(self, selector):
        """Moves the mouse over an element."""
        self._move_to(*self.scroll_to(selector))

    def nameless(self):
        """The controls that have no name for a screen reader."""
        return self.value("[...document.querySelectorAll('button, a, input, select, textarea, [tabindex]')].filter("
                          "each => !each.innerText && !each.ariaLabel && !each.labels?.length && "
                          "!each.hasAttribute('aria-labelledby')).map(each => each.outerHTML)")

    def axe(self):
        """What axe-core finds against the page: the rule, how bad it is, how often, and the first place."""
        with open(AXE, encoding="utf-8") as file:
            self.value(file.read() + "; 0")
        return json.loads(self.value(
            "axe.run({resultTypes: ['violations']}).then(result => JSON.stringify(result.violations.map(each => "
            "[each.id, each.impact, each.nodes.length, each.nodes[0].html, each.nodes[0].failureSummary])))"))

    def violations(self):
        """Of the page's security policy."""
        return self.value("globalThis.violations ?? []")

    def _foreign(self, addresses):
        """Without the page's own file and its own data."""
        return [address for address in addresses if not address.startswith(("file:", "data:", "about:"))]


class Chromium(Browser):
    PROGRAM = "chromium"
    KEY_CODES = {"ArrowLeft": 37, "ArrowUp": 38, "ArrowRight": 39, "ArrowDown": 40, "Home": 36, "End": 35, "Tab": 9,
                 "Enter": 13, "PageUp": 33, "PageDown": 34, "Escape": 27, "Delete": 46}

    def __init__(self):
        super().__init__()
        # The browser reads from descriptor 3 and writes to 4.
        to_browser, self.output = os.pipe()
        self.input, from_browser = os.pipe()
        options = [self.PROGRAM, "--headless", "--remote-debugging-pipe", "--no-first-run", "--hide-scrollbars",
                   "--disable-gpu", "--disable-dev-shm-usage", "--disable-background-networking",
                   f"--user-data-dir={self.profile}", "--window-size=1360,900"]
        if os.geteuid() == 0:
            # Chromium has no sandbox for root; the page is our own file.
            options.append("--no-sandbox")

        def place_pipes():
            os.dup2(to_browser, 13)
            os.dup2(from_browser, 14)
            os.dup2(13, 3)
            os.dup2(14, 4)

        self.process = subprocess.Popen(options + ["about:blank"], preexec_fn=place_pipes, close_fds=False,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self.unread = b""
        self.session = None
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(f"{domain}.enable")
        self.call("Page.addScriptToEvaluateOnNewDocument", source=WATCH)

    def _end(self):
        self.session = None
        self.call("Browser.close")
        os.close(self.input)
        os.close(self.output)

    def _receive(self):
        while b"\0" not in self.unread:
            data = os.read(self.input, 1 << 16)
            if not data:
                raise RuntimeError("the browser has ended")
            self.unread += data
        message, self.unread = self.unread.split(b"\0", 1)
        return json.loads(message)

    def call(self, method, **parameters):
        """Calls a method of the protocol and returns its result."""
        self.serial += 1
        request = {"id": self.serial, "method": method, "params": parameters}
        if self.session:
            request["sessionId"] = self.session
        text = json.dumps(request).encode() + b"\0"
        while text:
            text = text[os.write(self.output, text):]
        answer = self._answer(self.serial)
        if "error" in answer:
            text = f"{method}: {answer['error']['message']}"
            raise PageLeft(text) if "navigated" in text or "context" in text else RuntimeError(text)
        return answer["result"]

    def visit(self, address):
        self.call("Page.navigate", url=address)
        self.wait_for("document.readyState === 'complete'")

    def value(self, expression):
        """The value of a JavaScript expression; a promise's when it is settled."""
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True,
                           userGesture=True)
        if "exceptionDetails" in result:
            details = result["exceptionDetails"]
            raise RuntimeError(details.get("exception", {}).get("description", details["text"]))
        return result["result"].get("value")

    def press(self, key, shift=False, ctrl=False):
        text = {"Enter": "\r", " ": " "}.get(key, "")
        for kind in ("keyDown", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=kind, key=key, code="Space" if key == " " else key,
                      text=text if kind == "keyDown" else "", modifiers=8 * shift + 2 * ctrl,
                      windowsVirtualKeyCode=self.KEY_CODES.get(key) or ord(key.upper()))

    def _move_to(self, x, y):
        self.call("Input.dispatchMouseEvent", type="mouseMoved", x=x, y=y)

    def _mouse(self, kind, x, y):
        self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, button="left",
                  buttons=int(kind != "mouseReleased"), clickCount=1)

    def click_at(self, x, y):
        self.drag([(x, y)])

    def drag(self, places):
        """Presses the button at the first place, and releases it at the last."""
        self._move_to(*places[0])
        self._mouse("mousePressed", *places[0])
        for place in places[1:]:
            self._mouse("mouseMoved", *place)
        self._mouse("mouseReleased", *places[-1])

    def emulate(self, media="", **features):
        """For example media="print", or prefers_color_scheme="dark"."""
        self.call("Emulation.setEmulatedMedia", media=media,
                  features=[{"name": name.replace("_", "-"), "value": value} for name, value in features.items()])

    def resize(self, width, height, scale=1):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=scale,
                  mobile=False)

    def screenshot(self, path, top=0, height=None):
        """The page from a line on, whether or not the window shows it."""
        size = self.call("Page.getLayoutMetrics")["cssContentSize"]
        clip = {"x": 0, "y": top, "width": size["width"],
                "height": min(height or size["height"], size["height"] - top), "scale": 1}
        picture = self.call("Page.captureScreenshot", format="png", clip=clip, captureBeyondViewport=True)
        with open(path, "wb") as file:
            file.write(base64.b64decode(picture["data"]))

    def print(self, path):
        """As a PDF file."""
        with open(path, "wb") as file:
            file.write(base64.b64decode(self.call("Page.printToPDF", printBackground=True)["data"]))

    def complaints(self):
        """Texts of the console's errors and warnings, of exceptions and of violations of the security policy."""
        texts = self.violations()
        for event in self.events:
            parameters = event["params"]
            if event["method"] == "Runtime.exceptionThrown":
                texts.append(json.dumps(parameters["exceptionDetails"])[:500])
            elif event["method"] == "Runtime.consoleAPICalled" and parameters["type"] in ("error", "warning", "assert"):
                texts.append(json.dumps(parameters["args"])[:500])
            elif event["method"] == "Log.entryAdded" and parameters["entry"]["level"] in ("error", "warning"):
                texts.append(parameters["entry"]["text"])
        return texts

    def requests(self):
        """Addresses that the page requested, without its own file and its own data."""
        return self._foreign(event["params"]["request"]["url"] for event in self.events
                             if event["method"] == "Network.requestWillBeSent")


class Firefox(Browser):
    """Listens on the loopback interface only, at a port that the system chooses."""

    PROGRAM = "firefox-esr"
    # Code points of WebDriver (section 17.4.2) for keys that write nothing.
    KEYS = {"ArrowLeft": 0xE012, "ArrowUp": 0xE013, "ArrowRight": 0xE014, "ArrowDown": 0xE015, "Home": 0xE011,
            "End": 0xE010, "Tab": 0xE004, "Enter": 0xE007, "PageUp": 0xE00E, "PageDown": 0xE00F, "Escape": 0xE00C,
            "Delete": 0xE017}
    SHIFT = 0xE008
    CONTROL = 0xE009

    @classmethod
    def missing(cls):
        return super().missing() or ("" if websocket else "python3-websocket is not installed")

    def __init__(self):
        super().__init__()
        log = os.path.join(self.profile, "log")
        with open(os.path.join(self.profile, "user.js"), "w") as preferences:
            # No start page, whose requests would be mixed with those of the report.
            preferences.write('user_pref("browser.startup.page", 0);\nuser_pref("ui.prefersReducedMotion", 0);\n')
        with open(log, "w") as output:
            # Colours, motion and paper are set in the browser's own context: BiDi has no commands for them.
            self.process = subprocess.Popen(
                [self.PROGRAM, "--headless", "--no-remote", "--profile", self.profile, "--remote-debugging-port=0",
                 "--remote-allow-system-access"], stdout=output, stderr=output)
        end = time.monotonic() + self.PATIENCE
        while not (address := re.search(r"listening on (ws://\S+)", open(log).read())):
            if self.process.poll() is not None or time.monotonic() > end:
                raise RuntimeError("Firefox does not listen: " + open(log).read()[-500:])
            time.sleep(0.05)
        self.socket = websocket.create_connection(address.group(1) + "/session", timeout=2 * self.PATIENCE,
                                                  suppress_origin=True)
        self.call("session.new", capabilities={})
        self.page = self.call("browsingContext.getTree")["contexts"][0]["context"]
        self.window = self.call("browsingContext.getTree", **{"moz:scope": "chrome"})["contexts"][0]["context"]
        self.call("session.subscribe", events=["log.entryAdded", "network.beforeRequestSent"], contexts=[self.page])
        self.call("script.addPreloadScript", functionDeclaration=f"() => {WATCH}")
        # The address line has the keyboard focus at first.
        self._evaluate(self.window, "gBrowser.selectedBrowser.focus()")

    def _end(self):
        self.call("browser.close")
        self.socket.close()

    def _receive(self):
        text = self.socket.recv()
        if not text:
            raise RuntimeError("the browser has ended")
        return json.loads(text)

    def call(self, method, **parameters):
        """Calls a method of the protocol and returns its result."""
        self.serial += 1
        self.socket.send(json.dumps({"id": self.serial, "method": method, "params": parameters}))
        answer = self._answer(self.serial)
        if answer["type"] == "error":
            raise RuntimeError(f"{method}: {answer['message']}")
        return answer["result"]

    def visit(self, address):
        self.call("browsingContext.navigate", context=self.page, url=address, wait="complete")

    def _evaluate(self, context, expression):
        result = self.call("script.evaluate", expression=expression, target={"context": context}, awaitPromise=True,
                           userActivation=True, resultOwnership="none")
        if result["type"] == "exception":
            raise RuntimeError(result["exceptionDetails"]["text"])
        return self._plain(result["result"])

    @classmethod
    def _plain(cls, value):
        """A remote value of BiDi; None for what is no data."""
        kind, content = value["type"], value.get("value")
        if kind == "array":
            return [cls._plain(each) for each in content]
        if kind == "object" and content is not None:
            return {key: cls._plain(each) for key, each in content}
        if kind == "number":
            return float(content) if isinstance(content, str) else content
        return content if kind in ("string", "boolean") else None

    def value(self, expression):
        """The value of a JavaScript expression; a promise's when it is settled."""
        return self._evaluate(self.page, expression)

    def press(self, key, shift=False, ctrl=False):
        held = [chr(each) for each, is_held in ((self.SHIFT, shift), (self.CONTROL, ctrl)) if is_held]
        keys = [*held, chr(self.KEYS.get(key, ord(key[0])))]
        self._perform("key", [{"type": "keyDown", "value": each} for each in keys] +
                      [{"type": "keyUp", "value": each} for each in reversed(keys)])

    def _perform(self, kind, actions):
        self.call("input.performActions", context=self.page, actions=[{"type": kind, "id": kind, "actions": actions}])

    def _move_to(self, x, y):
        self._perform("pointer", [{"type": "pointerMove", "x": x, "y": y}])

    def click_at(self, x, y):
        self.drag([(x, y)])

    def drag(self, places):
        """Presses the button at the first place, and releases it at the last."""
        start, *others = [{"type": "pointerMove", "x": x, "y": y} for x, y in places]
        self._perform("pointer", [start, {"type": "pointerDown", "button": 0}, *others,
                                  {"type": "pointerUp", "button": 0}])

    def emulate(self, media="", prefers_color_scheme="light", prefers_reduced_motion="no-preference"):
        """For example media="print", or prefers_color_scheme="dark"."""
        reduced = int(prefers_reduced_motion == "reduce")
        self._evaluate(self.window, f"""
            Services.prefs.setIntPref("ui.prefersReducedMotion", {reduced});
            gBrowser.selectedBrowser.browsingContext.prefersColorSchemeOverride = {json.dumps(prefers_color_scheme)};
            gBrowser.selectedBrowser.browsingContext.mediumOverride = {json.dumps(media)};""")

    def resize(self, width, height, scale=1):
        self.call("browsingContext.setViewport", context=self.page, viewport={"width": width, "height": height},
                  devicePixelRatio=scale)

    def screenshot(self, path, top=0, height=None):
        """The page from a line on, whether or not the window shows it."""
        width, whole = self.value("[document.documentElement.clientWidth, document.documentElement.scrollHeight]")
        clip = {"type": "box", "x": 0, "y": top, "width": width, "height": min(height or whole, whole - top)}
        picture = self.call("browsingContext.captureScreenshot", context=self.page, origin="document", clip=clip)
        with open(path, "wb") as file:
            file.write(base64.b64decode(picture["data"]))

    def print(self, path):
        """As a PDF file."""
        with open(path, "wb") as file:
            file.write(base64.b64decode(self.call("browsingContext.print", context=self.page, background=True)["data"]))

    def complaints(self):
        """Texts of the console's errors and warnings, of exceptions and of violations of the security policy."""
        return self.violations() + [event["params"]["text"] for event in self.events
                                    if event["method"] == "log.entryAdded"
                                    and event["params"]["level"] in ("error", "warn")]

    def requests(self):
        """Addresses that the page requested, without its own file and its own data."""
        return self._foreign(event["params"]["request"]["url"] for event in self.events
                             if event["method"] == "network.beforeRequestSent")


BROWSERS = {"chromium": Chromium, "firefox": Firefox}
