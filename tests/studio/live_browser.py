"""The browser of the report's tests, for a page with a server: it opens addresses, and points with a mouse."""

import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "report"))

from browser import Chromium  # noqa: E402 - the path must be known first


class LiveBrowser(Chromium):
    def visit(self, address):
        self.call("Page.navigate", url=address)
        self.wait_for("document.readyState === 'complete' && typeof live === 'object' && live.revision > 0")

    def centre(self, selector):
        """Where the middle of an element is in the window, which scrolls to it."""
        return self.value(f"""(() => {{
            const element = document.querySelector({selector!r});
            element.scrollIntoView({{block: "center", behavior: "instant"}});
            const box = element.getBoundingClientRect();
            return [box.x + box.width / 2, box.y + box.height / 2];
        }})()""")

    def mouse(self, kind, x, y, button="left"):
        self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, button=button,
                  buttons=0 if kind == "mouseReleased" else 1, clickCount=1)

    def click_at(self, x, y):
        self.call("Input.dispatchMouseEvent", type="mouseMoved", x=x, y=y)
        self.mouse("mousePressed", x, y)
        self.mouse("mouseReleased", x, y)

    def drag(self, start, end, drop=True):
        self.call("Input.dispatchMouseEvent", type="mouseMoved", x=start[0], y=start[1])
        self.mouse("mousePressed", *start)
        for part in (0.3, 0.7, 1):
            self.mouse("mouseMoved", start[0] + (end[0] - start[0]) * part, start[1] + (end[1] - start[1]) * part)
        if drop:
            self.mouse("mouseReleased", *end)
