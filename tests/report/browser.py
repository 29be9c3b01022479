"""Chromium without a window, driven by its DevTools protocol through a pipe: no port is opened."""

import base64
import json
import os
import shutil
import subprocess
import tempfile
import time


class Browser:
    """One page. Collects what its console reports, and every request that it makes."""

    PATIENCE = 60

    def __init__(self, program="chromium", width=1360, height=900):
        self.profile = tempfile.mkdtemp()
        # The browser reads from descriptor 3 and writes to 4.
        to_browser, self.output = os.pipe()
        self.input, from_browser = os.pipe()
        options = [program, "--headless", "--remote-debugging-pipe", "--no-first-run", "--hide-scrollbars",
                   "--disable-gpu", "--disable-dev-shm-usage", "--disable-background-networking",
                   f"--user-data-dir={self.profile}", f"--window-size={width},{height}"]
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
        self.serial = 0
        self.events = []
        self.session = None
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(f"{domain}.enable")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        try:
            self.session = None
            self.call("Browser.close")
            self.process.wait(10)
        except Exception:
            self.process.kill()
            self.process.wait()
        os.close(self.input)
        os.close(self.output)
        shutil.rmtree(self.profile, ignore_errors=True)

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
        while True:
            message = self._receive()
            if message.get("id") == self.serial:
                if "error" in message:
                    raise RuntimeError(f"{method}: {message['error']['message']}")
                return message["result"]
            if "method" in message:
                self.events.append(message)

    def open(self, path):
        self.call("Page.navigate", url="file://" + os.path.abspath(path))
        self.wait_for("document.readyState === 'complete'")

    def value(self, expression):
        """The value of a JavaScript expression; a promise's when it is settled."""
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True,
                           userGesture=True)
        if "exceptionDetails" in result:
            details = result["exceptionDetails"]
            raise RuntimeError(details.get("exception", {}).get("description", details["text"]))
        return result["result"].get("value")

    def wait_for(self, condition):
        end = time.monotonic() + self.PATIENCE
        while not self.value(condition):
            if time.monotonic() > end:
                raise RuntimeError(f"not so after {self.PATIENCE} s: {condition}")
            time.sleep(0.02)

    def press(self, key, code=None, text=""):
        for kind in ("keyDown", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=kind, key=key, code=code or key,
                      text=text if kind == "keyDown" else "",
                      windowsVirtualKeyCode={"ArrowLeft": 37, "ArrowRight": 39, "Home": 36, "End": 35, "Tab": 9,
                                             "Enter": 13, " ": 32}.get(key, 0))

    def click(self, selector):
        self.value(f"document.querySelector({json.dumps(selector)}).click()")

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

    def complaints(self):
        """Texts of the console's errors and warnings, of exceptions and of violations of the security policy."""
        texts = []
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
        addresses = [event["params"]["request"]["url"] for event in self.events
                     if event["method"] == "Network.requestWillBeSent"]
        return [address for address in addresses if not address.startswith(("file:", "data:", "about:"))]
