#!/usr/bin/env python3
"""Measures the time from the start of `qoro-ad play` to the first frame on the screen: of a VAST tag, of the same tag
behind two wrappers, and of the equal ad in this program's own format, which `qoro-ad import` makes of the tag.

usage: bench/vast/first_frame.py QORO_AD FRAME_READER [--runs 8] [--delay 0]

Run it through tools/with_display.sh. A server on this machine has the tags and the video; it answers a tag after
--delay seconds. frame_reader reads the frame from the X server's picture. The runs alternate. Prints medians, and each
tag's ratio to the ad without the time that the server took for the tag.
"""
import argparse
import http.server
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import threading
import time

HERE = pathlib.Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent))
import programs  # noqa: E402

INLINE = """<VAST version="4.2"><Ad id="1"><InLine>
  <AdSystem>bench</AdSystem><AdTitle>Bars</AdTitle><Advertiser>Bench</Advertiser>
  <Impression><![CDATA[{site}/tracker?impression]]></Impression>
  <Creatives><Creative><Linear skipoffset="00:00:05"><Duration>00:00:14</Duration>
    <TrackingEvents><Tracking event="start"><![CDATA[{site}/tracker?start]]></Tracking></TrackingEvents>
    <VideoClicks><ClickThrough><![CDATA[{site}/page]]></ClickThrough></VideoClicks>
    <MediaFiles><MediaFile delivery="progressive" type="video/mp4" width="1280" height="720">
      <![CDATA[{site}/bars.mp4]]></MediaFile></MediaFiles>
  </Linear></Creative></Creatives></InLine></Ad></VAST>
"""
WRAPPER = """<VAST version="4.2"><Ad id="{name}"><Wrapper>
  <AdSystem>bench</AdSystem><VASTAdTagURI><![CDATA[{site}/{onward}]]></VASTAdTagURI>
  <Impression><![CDATA[{site}/tracker?{name}]]></Impression>
</Wrapper></Ad></VAST>
"""


class Server(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def __init__(self, clip, delay):
        super().__init__(("127.0.0.1", 0), Handler)
        self.site = f"http://127.0.0.1:{self.server_port}"
        self.clip = clip
        self.delay = delay
        # Seconds between the arrival of the requests for tags and the end of their answers.
        self.taken = 0
        self.tags = {"/inline.xml": INLINE.format(site=self.site),
                     "/second.xml": WRAPPER.format(site=self.site, name="second", onward="inline.xml"),
                     "/chain.xml": WRAPPER.format(site=self.site, name="chain", onward="second.xml")}


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    # As servers do: otherwise a body waits up to 40 ms for the acknowledgement of its header (RFC 9293, 3.7.4).
    disable_nagle_algorithm = True

    def do_GET(self):
        began = time.monotonic()
        server = self.server
        if self.path == "/bars.mp4":
            self.answer_part(server.clip)
        elif self.path in server.tags:
            time.sleep(server.delay)
            self.answer(200, "text/xml", server.tags[self.path].encode())
            server.taken += time.monotonic() - began
        else:
            self.answer(200, "text/plain", b"ok")

    def answer(self, status, kind, body, *headers):
        self.send_response(status)
        for name, value in [("Content-Type", kind), ("Content-Length", len(body)), *headers]:
            self.send_header(name, str(value))
        self.end_headers()
        try:
            self.wfile.write(body)
        except (BrokenPipeError, ConnectionResetError):
            pass  # the player has ended

    def answer_part(self, body):
        first, _, last = self.headers.get("Range", "bytes=0-").removeprefix("bytes=").partition("-")
        first, last = int(first), min(int(last or len(body)), len(body) - 1)
        self.answer(206, "video/mp4", body[first:last + 1], ("Content-Range", f"bytes {first}-{last}/{len(body)}"),
                    ("Accept-Ranges", "bytes"))

    def log_message(self, *_):
        pass


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("qoro_ad")
    parser.add_argument("frame_reader")
    parser.add_argument("--runs", type=int, default=8)
    parser.add_argument("--delay", type=float, default=0)
    options = parser.parse_args()

    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        subprocess.run([HERE.parent / "make_clip.sh", folder / "bars.mp4"], check=True)
        server = Server((folder / "bars.mp4").read_bytes(), options.delay)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        subprocess.run([options.qoro_ad, "import", "--out", folder / "ad", f"{server.site}/inline.xml"], check=True,
                       stdout=subprocess.DEVNULL)
        sandbox = programs.sandbox()
        what = {"ad": folder / "ad/ad.json", "inline tag": f"{server.site}/inline.xml",
                "two wrappers": f"{server.site}/chain.xml"}
        times = {label: [] for label in what}
        servers = {label: [] for label in what}
        for run in range(options.runs + 1):
            # Each begins a round in turn, so that what runs before it makes no difference.
            labels = list(what)[run % len(what):] + list(what)[:run % len(what)]
            for label in labels:
                server.taken = 0
                took, player = programs.first_frame(
                    options.frame_reader, [options.qoro_ad, "play", *sandbox, "--mute-output", "--allow-private-network",
                                           str(what[label])], programs.BAND)
                player.end()
                if run > 0:  # the first one warms the caches
                    times[label].append(took * 1000)
                    servers[label].append(server.taken * 1000)
        server.shutdown()

    ad = statistics.median(times["ad"])
    print(f"{'':14}{'first frame, ms':>16}{'least':>8}{'most':>8}{'server, ms':>12}{'ratio without it':>18}")
    for label, values in times.items():
        median, taken = statistics.median(values), statistics.median(servers[label])
        print(f"{label:14}{median:16.0f}{min(values):8.0f}{max(values):8.0f}{taken:12.1f}{(median - taken) / ad:18.2f}")
    print("load: " + " ".join(f"{load:.1f}" for load in os.getloadavg()))


if __name__ == "__main__":
    main()
