"""The program under test: qoro-ad studio with a copy of an example, and a plain HTTP client."""

import http.client
import json
import os
import shutil
import subprocess
import tempfile

SOURCES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
SKIPPED = 77


class RunningStudio:
    def __init__(self, program, example="demo/ad.json", **changes):
        """Changes are made in the ad's properties."""
        self.folder = tempfile.mkdtemp()
        shutil.copytree(os.path.join(SOURCES, "examples", os.path.dirname(example)), os.path.join(self.folder, "ad"))
        self.ad = os.path.join(self.folder, "ad", os.path.basename(example))
        if changes:
            self.change(**changes)
        environment = {key: value for key, value in os.environ.items() if key not in ("DISPLAY", "WAYLAND_DISPLAY")}
        # A sanitizer keeps freed memory: little, so that what the server keeps is seen.
        environment["ASAN_OPTIONS"] = ":".join([environment.get("ASAN_OPTIONS", ""), "quarantine_size_mb=16"])
        self.process = subprocess.Popen([program, "studio", self.ad],
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, env=environment)
        self.address = self.process.stdout.readline().strip()
        self.host, _, self.token = self.address.removeprefix("http://").partition("/?token=")

    def change(self, **changes):
        with open(self.ad) as file:
            ad = json.load(file)
        with open(self.ad, "w") as file:
            json.dump({**ad, **changes}, file)

    def close(self):
        self.process.terminate()
        rest, errors = self.process.communicate(timeout=600)
        shutil.rmtree(self.folder)
        return self.process.returncode, rest, errors

    def ask(self, method, path, body=None, **headers):
        """As the page asks; a header of None is left out. Returns the status, the headers and the body."""
        given = {"X-Token": self.token}
        if body is not None:
            given["Content-Type"] = "application/json"
        given.update({name.replace("_", "-"): value for name, value in headers.items()})
        connection = http.client.HTTPConnection(self.host, timeout=600)
        try:
            connection.request(method, path, body, {name: value for name, value in given.items() if value is not None})
            answer = connection.getresponse()
            return answer.status, dict(answer.getheaders()), answer.read()
        finally:
            connection.close()

    def json(self, method, path, body=None):
        status, _, text = self.ask(method, path, None if body is None else json.dumps(body))
        assert status == 200, (status, text)
        return json.loads(text)

    def memory(self):
        """Bytes of the process that are in memory."""
        with open(f"/proc/{self.process.pid}/statm") as file:
            return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")
