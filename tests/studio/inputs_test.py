#!/usr/bin/env python3
"""What the studio works on, and how it opens the browser: inputs_test.py PATH-OF-QORO-AD [TEST…]. No browser."""

import json
import os
import subprocess
import sys
import tempfile
import time
import unittest

from running_studio import RunningStudio, SKIPPED, has_studio
from tag_server import TagServer, inline

def wrapper(address):
    return f"""<VAST version="4.2"><Ad id="w"><Wrapper><AdSystem>x</AdSystem>
<Impression>http://t.example/wrapped</Impression><VASTAdTagURI>{address}</VASTAdTagURI></Wrapper></Ad></VAST>"""


AD = {"adType": 3, "strVideoUrl": "http://ad.example/first.mp4", "fVideoWidth": 320, "fVideoHeight": 180,
      "bIsAutoStart": True, "iCloseBtnCountdown": 2, "iBufferingSufferTime": 10}

SCENARIO = {"ad": AD, "steps": [{"open": 0}, {"at": 4, "tap": "btnClose"}, {"at": 9, "release": True}]}

RECORDING = {"recording": "Recording of one ad session.", "device": {"screen": [375, 812]}, "host": {}, "ad": AD,
             "steps": [{"at": 4, "tap": "btnClose"}],
             "replay": [{"in": "host", "t": 0.03, "what": {"do": "open", "of": 0}},
                        {"in": "touch", "t": 1, "what": {"point": [30, 70]}},
                        {"in": "host", "t": 9, "what": {"do": "release"}}]}


class InputTest(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.addCleanup(os.rmdir, self.folder)
        self.servers = TagServer()
        self.addCleanup(self.servers.close)

    def write(self, name, text):
        path = os.path.join(self.folder, name)
        with open(path, "w") as file:
            file.write(text if isinstance(text, str) else json.dumps(text))
        return path

    def start(self, name, text, *options):
        """The studio with a copy of the file."""
        path = self.write(name, text)
        try:
            return self.start_with(path, *options)
        finally:
            os.remove(path)

    def start_with(self, named, *options):
        studio = RunningStudio(sys.argv[1], named, options)
        self.addCleanup(studio.close)
        self.assertTrue(studio.address)
        return studio

    def first_close(self, studio):
        """When the close button can first be tapped, in seconds, rounded."""
        return round(studio.json("GET", "/session")["data"]["summary"]["closeButtonTappable"])

    def edit(self, studio, text):
        """Changes the studio's own copy of the file."""
        with open(studio.ad, "w") as file:
            file.write(text if isinstance(text, str) else json.dumps(text))

    def wait_for_close(self, studio, seconds):
        """Until the session has its close button at a time."""
        for _ in studio.news():
            if self.first_close(studio) == seconds:
                return
        self.fail(f"the studio has ended; no close at {seconds} s")

    def check_edit(self, studio):
        """It can be changed, and saved, as any ad."""
        added = studio.json("POST", "/edit", {"do": "add", "event": {"kind": "stall", "at": 1, "seconds": 1}})
        self.assertIn("stall", [event["kind"] for event in added["state"]["events"]])
        self.assertIn({"at": 1.0, "player": {"stall": 1.0}}, json.loads(studio.ask("GET", "/scenario.json")[2])["steps"])

    def test_the_folder_of_an_ad(self):
        studio = self.start_with("demo")
        self.assertEqual(self.first_close(studio), 5)
        self.check_edit(studio)
        path = os.path.join(studio.ad, "ad.json")
        with open(path) as file:
            ad = json.load(file)
        with open(path, "w") as file:
            json.dump({**ad, "iCloseBtnCountdown": 2}, file)
        self.wait_for_close(studio, 2)

    def test_the_file_of_a_tag(self):
        studio = self.start("tag.xml", inline(5))
        self.assertEqual(self.first_close(studio), 5)
        self.check_edit(studio)
        self.edit(studio, inline(3))
        self.wait_for_close(studio, 3)
        self.assertIn(b"no findings", studio.ask("GET", "/findings.txt")[2])
        self.assertIn(b"http://t.example/shown", studio.ask("GET", "/report.html")[2])
        self.edit(studio, "<VAST")
        complaint = studio.wait_for_news(lambda news: news["complaint"])["complaint"]
        self.assertIn("tag.xml", complaint)
        self.assertEqual(len(complaint.splitlines()), 1)
        self.assertEqual(self.first_close(studio), 3, "the last version is still shown")
        self.edit(studio, inline(4))
        studio.wait_for_news(lambda news: not news["complaint"])
        self.assertEqual(self.first_close(studio), 4)

    def test_the_address_of_a_tag_is_fetched_again(self):
        self.servers.documents["/tag.xml"] = inline(5)
        studio = self.start_with(self.servers.address + "/tag.xml")
        self.assertEqual(self.first_close(studio), 5)
        self.assertTrue(studio.json("GET", "/session")["tag"])
        self.check_edit(studio)
        self.servers.documents["/tag.xml"] = inline(3)
        studio.json("POST", "/fetch", {})
        self.wait_for_close(studio, 3)
        events = studio.json("GET", "/session")["state"]["events"]
        self.assertIn("stall", [event["kind"] for event in events], "the steps stay")

    def test_only_a_tag_is_fetched_again(self):
        studio = self.start("session.json", SCENARIO)
        status, _, text = studio.ask("POST", "/fetch", "{}")
        self.assertEqual(status, 409)
        self.assertIn("only a tag", json.loads(text)["complaint"])
        self.assertFalse(studio.json("GET", "/session")["tag"])

    def test_a_tag_that_changes_while_it_is_resolved(self):
        self.servers.documents.update({"/1": inline(5), "/held/2": inline(4), "/3": inline(3)})
        studio = self.start("tag.xml", wrapper(self.servers.address + "/1"))
        self.assertEqual(self.first_close(studio), 5)
        self.edit(studio, wrapper(self.servers.address + "/held/2"))
        self.servers.is_asked_for("/held/2")
        self.assertEqual(studio.ask("GET", "/session")[0], 200, "the page is answered meanwhile")
        self.edit(studio, wrapper(self.servers.address + "/3"))
        self.assertFalse(self.servers.is_asked_for("/3", 0.6), "one after the other: the last one is shown")
        self.servers.released.set()
        self.wait_for_close(studio, 3)

    def test_a_scenario(self):
        studio = self.start("session.json", SCENARIO)
        self.assertEqual(self.first_close(studio), 2)
        self.check_edit(studio)
        self.edit(studio, {**SCENARIO, "ad": {**AD, "iCloseBtnCountdown": 3}})
        self.wait_for_close(studio, 3)

    def test_a_recording(self):
        studio = self.start("recording.json", RECORDING)
        self.assertEqual(self.first_close(studio), 2)
        own = studio.json("GET", "/session")["state"]["events"]
        self.assertIn(("touch", [30, 70]), [(event.get("key"), event.get("value")) for event in own])
        self.check_edit(studio)
        self.assertNotIn("replay", json.loads(studio.ask("GET", "/scenario.json")[2]), "a scenario can be changed")

    def test_other_files_beside_a_scenario_or_a_tag_are_not_followed(self):
        notes = self.write("notes.txt", "1")
        try:
            studio = self.start("tag.xml", inline(5))
        finally:
            os.remove(notes)
        before = studio.json("GET", "/session")["news"]["version"]
        with open(os.path.join(os.path.dirname(studio.ad), "notes.txt"), "w") as file:
            file.write("2")
        time.sleep(0.6)
        self.assertEqual(studio.json("GET", "/session")["news"]["version"], before)

    def test_a_report_of_a_tag_that_leads_to_no_ad_says_so(self):
        address = self.servers.address + "/nothing.xml"
        run = subprocess.run([sys.argv[1], "report", address, "-o", "-"], capture_output=True, text=True, timeout=600,
                             check=True)
        self.assertTrue(run.stdout.startswith("<!DOCTYPE html>"))
        self.assertEqual(len(run.stderr.splitlines()), 1)
        self.assertRegex(run.stderr, f"^qoro-ad: {address}: .*404")

    def test_refuses_what_it_cannot_work_on(self):
        empty = self.write("empty.json", "")
        self.addCleanup(os.remove, empty)
        for named, expected in (("-", "standard input"), ("/nothing.json", "nothing.json"), (empty, "empty.json"),
                                (self.folder, "no ad.json")):
            run = subprocess.run([sys.argv[1], "studio", named], capture_output=True, text=True, timeout=600,
                                 stdin=subprocess.DEVNULL, check=False)
            self.assertEqual((run.returncode, run.stdout), (2, ""), named)
            self.assertIn(expected, run.stderr)
            self.assertEqual(len(run.stderr.splitlines()), 1)


class OpenTest(unittest.TestCase):
    """--open, with a desktop of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.desktop = {name: os.path.join(self.folder, "none")
                        for name in ("XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_DIRS")}

    def test_opens_the_page_in_the_default_browser(self):
        applications = os.path.join(self.folder, "share", "applications")
        os.makedirs(applications)
        asked = os.path.join(self.folder, "asked")
        os.mkfifo(asked)
        browser = os.path.join(self.folder, "browser")
        with open(browser, "w") as file:
            file.write(f'#!/bin/sh\necho "$@" >{asked}\n')
        os.chmod(browser, 0o755)
        with open(os.path.join(applications, "browser.desktop"), "w") as file:
            file.write(f"[Desktop Entry]\nType=Application\nName=Browser\nExec={browser} %u\n")
        with open(os.path.join(applications, "mimeapps.list"), "w") as file:
            file.write("[Default Applications]\nx-scheme-handler/http=browser.desktop\n")
        studio = RunningStudio(sys.argv[1], "creatives/minimal.json", ["--open"],
                               {**self.desktop, "XDG_DATA_HOME": os.path.join(self.folder, "share")})
        with open(asked) as file:
            self.assertEqual(file.read().strip(), studio.address)
        self.assertEqual(studio.close(), (0, "", ""))

    def test_goes_on_without_a_browser(self):
        studio = RunningStudio(sys.argv[1], "creatives/minimal.json", ["--open"], self.desktop)
        studio.json("GET", "/session")
        status, _, errors = studio.close()
        self.assertEqual(status, 0)
        self.assertRegex(errors, r"^qoro-ad: --open: no browser opens the address.*\n$")
        self.assertEqual(len(errors.splitlines()), 1)


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit("usage: inputs_test.py PATH-OF-QORO-AD [TEST…]")
    if not has_studio(sys.argv[1]):
        print("skipped: this build has no desktop")
        sys.exit(SKIPPED)
    unittest.main(argv=sys.argv[:1] + sys.argv[2:])
