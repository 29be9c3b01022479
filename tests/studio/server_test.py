#!/usr/bin/env python3
"""What the server of the studio answers, and what it refuses: server_test.py PATH-OF-QORO-AD."""

import json
import re
import socket
import sys
import time
import unittest

from running_studio import RunningStudio, SKIPPED, has_studio


class ServerTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.studio = RunningStudio(sys.argv[1], "creatives/minimal.json")
        cls.addClassCleanup(cls.studio.close)

    def status(self, method, path, body=None, **headers):
        return self.studio.ask(method, path, body, **headers)[0]

    def raw(self, text, more=b""):
        """Sends bytes and returns what comes back until the connection ends or the patience does."""
        host, port = self.studio.host.split(":")
        received = b""
        with socket.create_connection((host, int(port)), timeout=60) as connection:
            try:
                connection.sendall(text.encode() + more)
                while piece := connection.recv(1 << 16):
                    received += piece
            except ConnectionError:
                pass
        return received

    def test_address_is_of_this_machine_with_a_free_port_and_a_long_token(self):
        self.assertRegex(self.studio.address, r"^http://127\.0\.0\.1:\d+/\?token=[0-9a-f]{32}$")

    def test_tokens_differ(self):
        other = RunningStudio(sys.argv[1], "creatives/minimal.json")
        other.close()
        self.assertNotEqual(other.token, self.studio.token)

    def test_answers_with_the_token_in_the_address_or_the_header(self):
        self.assertEqual(self.status("GET", "/?token=" + self.studio.token, X_Token=None), 200)
        self.assertEqual(self.status("GET", "/session"), 200)

    def test_refuses_a_missing_or_wrong_token_at_every_address(self):
        wrong = "0" * len(self.studio.token)
        for path in ("/", "/session", "/edit", "/rest", "/play", "/news", "/scenario.json", "/report.html", "/nothing"):
            for method in ("GET", "POST", "OPTIONS"):
                self.assertEqual(self.status(method, path, X_Token=None), 403, path)
                self.assertEqual(self.status(method, f"{path}?token={wrong}", X_Token=None), 403, path)
                self.assertEqual(self.status(method, path, X_Token=wrong), 403, path)
        self.assertEqual(self.status("GET", "/session", X_Token=self.studio.token[:-1]), 403)

    def test_refuses_another_name_of_the_server(self):
        port = self.studio.host.split(":")[1]
        for name in ("evil.example", f"evil.example:{port}", f"localhost:{port}", "127.0.0.1", "127.0.0.1:1", ""):
            self.assertEqual(self.status("GET", "/session", Host=name), 403, name)
        answer = self.raw(f"GET /session?token={self.studio.token} HTTP/1.0\r\n\r\n")
        self.assertRegex(answer, rb"^HTTP/1\.\d 403 ")

    def test_refuses_other_origins(self):
        for origin in ("http://evil.example", "null", "https://" + self.studio.host, "http://127.0.0.1:1"):
            self.assertEqual(self.status("GET", "/session", Origin=origin), 403, origin)
            self.assertEqual(self.status("POST", "/edit", "{}", Origin=origin), 403, origin)
        self.assertEqual(self.status("GET", "/session", Origin="http://" + self.studio.host), 200)

    def test_refuses_what_pages_of_other_sites_request(self):
        for site in ("cross-site", "same-site"):
            self.assertEqual(self.status("GET", "/?token=" + self.studio.token, Sec_Fetch_Site=site), 403, site)
        for site in ("same-origin", "none"):
            self.assertEqual(self.status("GET", "/?token=" + self.studio.token, Sec_Fetch_Site=site), 200, site)

    def test_knows_its_addresses_and_their_methods(self):
        self.assertEqual(self.status("GET", "/nothing"), 404)
        self.assertEqual(self.status("GET", "/../../etc/passwd"), 404)
        self.assertEqual(self.status("GET", "/clip.mp4"), 404, "the ad's folder is not served")
        for method in ("PUT", "DELETE", "HEAD", "OPTIONS", "PATCH", "TRACE"):
            status, headers, _ = self.studio.ask(method, "/session")
            self.assertEqual(status, 405, method)
            self.assertEqual(headers["Allow"], "GET")
        self.assertEqual(self.status("POST", "/session", "{}"), 405)
        self.assertEqual(self.status("GET", "/edit"), 405)
        self.assertEqual(self.status("GET", "/play"), 405)

    def test_takes_small_json_only(self):
        for kind in ("text/plain", "application/x-www-form-urlencoded", "multipart/form-data", None):
            self.assertEqual(self.status("POST", "/edit", '{"do": "reset"}', Content_Type=kind), 415, kind)
        self.assertEqual(self.status("POST", "/edit", "x" * 65537), 413)
        for body in ("", "{", "null", "[]", '{"do": 1}', '{"do": "add"}', "[" * 60000, '"' + "x" * 65000):
            status, _, text = self.studio.ask("POST", "/edit", body)
            self.assertEqual(status, 409, body[:40])
            self.assertEqual(len(json.loads(text)["complaint"].splitlines()), 1)
        chunked = self.raw(f"POST /edit HTTP/1.1\r\nHost: {self.studio.host}\r\nX-Token: {self.studio.token}\r\n"
                           "Content-Type: application/json\r\nTransfer-Encoding: chunked\r\n\r\n2\r\n{}\r\n0\r\n\r\n")
        self.assertIn(b" 411 ", chunked.splitlines()[0])

    def test_a_huge_body_takes_no_memory(self):
        before = self.studio.memory()
        size = 300 << 20
        answer = self.raw(f"POST /edit HTTP/1.1\r\nHost: {self.studio.host}\r\nX-Token: {self.studio.token}\r\n"
                          f"Content-Type: application/json\r\nContent-Length: {size}\r\n\r\n", b"x" * size)
        if answer:
            self.assertIn(b" 413 ", answer.splitlines()[0])
        self.assertLess(self.studio.memory() - before, 100 << 20)
        self.assertEqual(self.status("GET", "/session"), 200)

    def test_nothing_is_stored_embedded_or_read_by_others(self):
        for path in ("/", "/session", "/scenario.json"):
            _, headers, _ = self.studio.ask("GET", path)
            self.assertEqual(headers["Cache-Control"], "no-store")
            self.assertEqual(headers["Referrer-Policy"], "no-referrer")
            self.assertEqual(headers["X-Content-Type-Options"], "nosniff")
            self.assertEqual(headers["Cross-Origin-Resource-Policy"], "same-origin")
            self.assertIn("frame-ancestors 'none'", headers["Content-Security-Policy"])
            self.assertFalse([name for name in headers if name.lower().startswith("access-control-")])

    def test_the_page_loads_nothing_and_connects_to_its_server_only(self):
        page = self.studio.ask("GET", "/")[2].decode()
        policy = re.search(r'http-equiv="Content-Security-Policy" content="([^"]*)"', page)[1]
        self.assertIn("default-src 'none'", policy)
        self.assertIn("connect-src 'self'", policy)
        self.assertNotIn("unsafe", policy)
        self.assertNotIn("http:", policy)
        self.assertNotIn(self.studio.token, page, "the token is in the address only")

    def test_only_so_many_streams_are_open(self):
        streams = []
        try:
            for _ in range(8):
                stream = socket.create_connection(tuple(self.studio.host.split(":")), timeout=60)
                streams.append(stream)
                stream.sendall(f"GET /news?token={self.studio.token} HTTP/1.1\r\nHost: {self.studio.host}\r\n\r\n".encode())
                self.assertIn(b" 200 ", stream.recv(1 << 16).splitlines()[0])
            self.assertEqual(self.status("GET", "/news"), 503)
        finally:
            for stream in streams:
                stream.close()


class WorkTest(unittest.TestCase):
    def setUp(self):
        self.studio = RunningStudio(sys.argv[1], "creatives/minimal.json")
        self.addCleanup(self.studio.close)

    def test_exports_the_session_the_report_and_the_findings(self):
        self.studio.json("POST", "/edit", {"do": "add", "event": {"kind": "stall", "at": 3, "seconds": 2}})
        exported = self.studio.ask("GET", "/scenario.json")
        self.assertIn('filename="scenario.json"', exported[1]["Content-Disposition"])
        self.assertIn({"at": 3.0, "player": {"stall": 2.0}}, json.loads(exported[2])["steps"])
        status, headers, page = self.studio.ask("GET", "/report.html")
        self.assertEqual(status, 200)
        self.assertIn("report.html", headers["Content-Disposition"])
        self.assertTrue(page.startswith(b"<!DOCTYPE html>"))
        self.assertNotIn(b"connect-src", page, "a report has no server")
        self.assertIn(b"stall", page)
        findings = json.loads(self.studio.ask("GET", "/findings.json")[2])
        self.assertEqual(len(json.dumps(findings)) > 2, True)
        self.assertTrue(self.studio.ask("GET", "/findings.txt")[2].decode().strip())

    def test_play_needs_a_display(self):
        status, _, text = self.studio.ask("POST", "/play", "{}")
        self.assertEqual(status, 409)
        self.assertIn("display", json.loads(text)["complaint"])

    def test_ends_with_success_by_a_signal(self):
        studio = RunningStudio(sys.argv[1], "creatives/minimal.json")
        studio.json("GET", "/session")
        status, rest, errors = studio.close()
        self.assertEqual((status, rest, errors), (0, "", ""))

    def test_follows_the_ads_file_and_says_what_is_wrong_with_it(self):
        path = self.studio.ad
        self.studio.json("POST", "/edit", {"do": "add", "event": {"kind": "stall", "at": 3}})

        def wait_for(condition):
            end = time.monotonic() + 600
            while not condition(self.studio.json("GET", "/session")):
                self.assertLess(time.monotonic(), end)
                time.sleep(0.05)

        with open(path) as file:
            good = file.read()
        with open(path, "w") as file:
            file.write("{\n")
        wait_for(lambda session: session["news"]["complaint"])
        broken = self.studio.json("GET", "/session")
        self.assertIn("minimal.json", broken["news"]["complaint"])
        self.assertNotIn("\n", broken["news"]["complaint"])
        self.assertTrue(broken["data"]["lines"], "the last version is still shown")
        with open(path, "w") as file:
            file.write(good.replace('"iCloseBtnCountdown": 5', '"iCloseBtnCountdown": 2'))
        wait_for(lambda session: not session["news"]["complaint"])
        mended = self.studio.json("GET", "/session")
        self.assertLess(mended["data"]["summary"]["closeButtonTappable"], 5)
        self.assertIn("stall", [event["kind"] for event in mended["state"]["events"]])


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit("usage: server_test.py PATH-OF-QORO-AD [TEST…]")
    if not has_studio(sys.argv[1]):
        print("skipped: this build has no desktop")
        sys.exit(SKIPPED)
    unittest.main(argv=sys.argv[:1] + sys.argv[2:])
