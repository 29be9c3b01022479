"""The program under test: qoro-ad studio with a copy of an ad, and a plain HTTP client."""

import http.client
import json
import os
import shutil
import subprocess
import tempfile

SOURCES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
# Status of a test that this machine cannot run.
SKIPPED = 77
DISPLAYS = ("DISPLAY", "WAYLAND_DISPLAY")


def has_studio(program):
    """Whether this build has the command."""
    return subprocess.run([program, "studio", "--help"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                          check=False).returncode == 0


class RunningStudio:
    def __init__(self, program, named="demo/ad.json", options=(), environment=None, with_display=False, **changes):
        """Works on a copy of the folder.
        named: a file or a folder, of the examples unless its path is absolute; or an address.
        environment: variables besides those of this process.
        with_display: whether it may open windows.
        Further arguments are changes of the ad's properties."""
        self.folder = tempfile.mkdtemp()
        self.ad = named
        if "://" not in named:
            source = os.path.join(SOURCES, "examples", named)
            is_folder = os.path.isdir(source)
            copy = os.path.join(self.folder, "ad")
            shutil.copytree(source if is_folder else os.path.dirname(source), copy)
            self.ad = copy if is_folder else os.path.join(copy, os.path.basename(source))
        if changes:
            self.change(**changes)
        variables = {key: value for key, value in os.environ.items() if with_display or key not in DISPLAYS}
        # A sanitizer keeps freed memory: little, so that what the server keeps is seen.
        variables["ASAN_OPTIONS"] = ":".join([variables.get("ASAN_OPTIONS", ""), "quarantine_size_mb=16"])
        self.process = subprocess.Popen([program, "studio", self.ad, *options], stdout=subprocess.PIPE,
                                        stderr=subprocess.PIPE, text=True, env={**variables, **(environment or {})})
        self.address = self.process.stdout.readline().strip()
        self.host, _, self.token = self.address.removeprefix("http://").partition("/?token=")

    def change(self, **changes):
        with open(self.ad) as file:
            ad = json.load(file)
        with open(self.ad, "w") as file:
            json.dump({**ad, **changes}, file)

    def close(self):
        """Returns the exit status, what it has printed since the address, and its errors."""
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

    def news(self):
        """What the program sends to its pages: dictionaries, the present state first."""
        connection = http.client.HTTPConnection(self.host, timeout=600)
        try:
            connection.request("GET", "/news", headers={"X-Token": self.token})
            answer = connection.getresponse()
            while line := answer.readline():
                if line.startswith(b"data: "):
                    yield json.loads(line.removeprefix(b"data: "))
        finally:
            connection.close()

    def wait_for_news(self, condition):
        """Until the program sends news that meet a condition."""
        return next(each for each in self.news() if condition(each))

    def memory(self):
        """Bytes of the process that are in memory."""
        with open(f"/proc/{self.process.pid}/statm") as file:
            return int(file.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")
