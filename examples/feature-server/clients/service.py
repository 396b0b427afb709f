"""The feature server under test: started on a free port of loopback, watched and ended."""

import os
import signal
import socket
import subprocess
import tempfile
import time
import urllib.request

FOLDER = os.path.dirname(os.path.abspath(__file__))
SOURCE = os.path.normpath(os.path.join(FOLDER, os.pardir))
ROOT = os.path.normpath(os.path.join(SOURCE, os.pardir, os.pardir))
EXECUTABLE = os.environ.get(
    "FEATURE_SERVER", os.path.join(ROOT, "build/release/examples/feature-server/feature-server"))
FRAGMENT = os.path.join(FOLDER, "crs.xml")
SHIPPED_FRAGMENT = os.path.join(SOURCE, "crs.xml")
GEOPACKAGE = os.environ.get("FEATURE_SERVER_DATA", os.path.join(SOURCE, "data/europe.gpkg"))


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def answers_soon(process, url):
    """Waits for fifteen seconds, or until the process has ended."""
    end = time.monotonic() + 15
    while process.poll() is None and time.monotonic() < end:
        try:
            with urllib.request.urlopen(url, timeout=10) as answer:
                answer.read()
                return True
        except OSError:
            time.sleep(0.05)
    return False


class Service:
    """A running feature server; `with` ends it."""

    def __init__(self, geopackage=GEOPACKAGE, port=0, fragment=FRAGMENT):
        self.port = port or free_port()
        self.root = f"http://127.0.0.1:{self.port}"
        self.wfs = self.root + "/wfs"
        self.ogcapi = self.root
        self.log = tempfile.TemporaryFile()
        # pylint: disable=consider-using-with
        self.process = subprocess.Popen(
            [EXECUTABLE, "--port", str(self.port), "--data", geopackage, "--crs", fragment],
            stdout=self.log, stderr=subprocess.STDOUT)
        self._wait()

    def _wait(self):
        if not answers_soon(self.process, self.root + "/collections"):
            text = self.output()
            self.process.kill()
            raise RuntimeError("the feature server does not answer: " + text)

    def output(self):
        self.log.seek(0)
        return self.log.read().decode("utf-8", "replace")

    def reload(self):
        self.process.send_signal(signal.SIGHUP)

    def resident_kilobytes(self):
        with open(f"/proc/{self.process.pid}/status", encoding="ascii") as status:
            return next(int(line.split()[1]) for line in status if line.startswith("VmRSS:"))

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.process.pid}/fd"))

    def seconds_of_processor(self):
        with open(f"/proc/{self.process.pid}/stat", encoding="ascii") as stat:
            fields = stat.read().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def end(self):
        """Ends the server as an administrator would and returns its exit code."""
        self.process.terminate()
        try:
            return self.process.wait(20)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.end()
        self.log.close()
