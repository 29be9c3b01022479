"""Starts players, watches them from outside and ends them, for the benchmarks."""
import json
import os
import pathlib
import signal
import subprocess
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
# The picture of a portrait ad's band, the page below it, and the picture of a video of 16:9 in a landscape ad.
BAND, BELOW, SCREEN = (0, 44, 375, 211), (0, 255, 375, 300), (73, 0, 666, 375)
# An ad of the benchmarks' clip, and the page of one that has a page.
AD = {"strVideoUrl": "bars.mp4", "fVideoWidth": 1280, "fVideoHeight": 720, "portraitVideoPos": "TOP",
      "portraitModeType": 2, "landscapeModeType": 2, "bIsAutoStart": True, "iCloseBtnCountdown": 60,
      "iBufferingSufferTime": -1, "strBackgroundColor": "4278190080"}
PAGE = "<html><head></head><body style='background:#246;color:white'>still</body></html>"
# A page that frame_reader sees like a frame: the bar code of 0.
CODED_PAGE = ("<html><head></head><body style='margin:0;background:#fff'>"
              "<div style='height:100vh;width:50%;background:#000'></div></body></html>")


def tree(root):
    """The process and all its descendants."""
    children = {}
    for entry in os.listdir("/proc"):
        if entry.isdigit():
            try:
                stat = pathlib.Path("/proc", entry, "stat").read_text()
            except OSError:
                continue
            children.setdefault(int(stat.rsplit(")", 1)[1].split()[1]), []).append(int(entry))
    found, todo = [], [root]
    while todo:
        pid = todo.pop()
        found.append(pid)
        todo += children.get(pid, [])
    return found


def cpu_seconds(pids):
    total = 0
    for pid in pids:
        try:
            total += time.clock_gettime((~pid << 3) | 2)  # what clock_getcpuclockid() returns
        except OSError:
            pass
    return total


def memory_megabytes(pids, field):
    """A field of smaps_rollup, added up: "Pss", or "Anonymous", which other programs do not influence."""
    total = 0
    for pid in pids:
        try:
            for line in pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines():
                if line.startswith(field + ":"):
                    total += int(line.split()[1])
        except OSError:
            pass
    return total / 1024


def pss_megabytes(pids):
    return memory_megabytes(pids, "Pss")


def sandbox():
    """The options with which the program plays pages on this machine."""
    return subprocess.run([HERE.parent / "tools/web_sandbox_option.sh"], capture_output=True, text=True).stdout.split()


def qoro(program, folder, name, ad, *options):
    """The command that plays an ad of this folder."""
    path = folder / f"{name}.json"
    path.write_text(json.dumps(ad))
    return [program, "play", *sandbox(), "--mute-output", *options, str(path)]


def mpv(clip, geometry, *options):
    return ["mpv", "--no-config", "--no-border", "--no-keepaspect-window", "--no-osc", "--osd-level=0", "--ao=null",
            "--vo=x11", "--hwdec=no", f"--geometry={geometry}", *options, clip]


def gst_play(clip, width, height):
    sink = f"videoscale ! video/x-raw,width={width},height={height} ! videoconvert ! ximagesink"
    return ["gst-play-1.0", "-q", "--no-interactive", "--videosink=" + sink, "--audiosink=fakesink sync=true", clip]


class Player:
    """A running program, with its output in a file."""

    def __init__(self, command):
        self.name = " ".join(map(str, command))
        self.log = tempfile.TemporaryFile()
        self.began = time.clock_gettime(time.CLOCK_MONOTONIC)
        self.process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=self.log, stderr=self.log,
                                        start_new_session=True)

    def tree(self):
        return tree(self.process.pid)

    def end(self):
        try:
            os.killpg(self.process.pid, signal.SIGTERM)
            self.process.wait(5)
        except ProcessLookupError:
            self.process.wait()
        except subprocess.TimeoutExpired:
            os.killpg(self.process.pid, signal.SIGKILL)
            self.process.wait()

    def fail(self, why):
        self.end()
        self.log.seek(0)
        raise SystemExit(f"{why} of {self.name}: {self.log.read().decode(errors='replace')[-400:]}")


class Eyes:
    """frame_reader, which watches an area of the screen from now on."""

    def __init__(self, reader, area, seconds, rate=30):
        self.process = subprocess.Popen([reader, *map(str, area), str(seconds), str(rate)], stdout=subprocess.PIPE,
                                        text=True)

    def seen_of(self, player):
        """What was seen of a player; ends the measurement if that is nothing."""
        seen = json.loads(self.process.communicate()[0])
        if seen["first"] is None:
            player.fail("no frame seen")
        return seen


def first_frame(reader, command, area):
    """Seconds from a player's start to its first frame on the screen, and the player, which still runs."""
    eyes = Eyes(reader, area, 0.1)
    time.sleep(0.3)  # for the reader's own start
    player = Player(command)
    return eyes.seen_of(player)["first"] - player.began, player
