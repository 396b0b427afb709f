"""Requests per second for GetFeature of 10,000 points, of the feature server and of MapServer 8, as a Markdown table.

    throughput.py [SECONDS]

Both servers run with the same GeoPackage. wrk asks over loopback with one and with two connections, SECONDS each
(5 unless given), in three rounds that alternate between the servers; the table has the best round. The processor time
of a request is that of the server and, for MapServer, of its web server too. The share of the transformation is given
twice: as the growth of the processor time against the storage CRS, and as perf's samples in libproj, libm and this
library.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), os.pardir))
# pylint: disable=wrong-import-position
import points  # noqa: E402
import reference  # noqa: E402
from answers import ask  # noqa: E402
from mapserver import MapServer  # noqa: E402
from service import Service  # noqa: E402

STORAGE = 3034
TRANSFORMING = ("libproj", "libCoordinateTransformation", "libm.so")
PARAMETERS = ("?service=WFS&version=2.0.0&request=GetFeature&typeNames=points&count=10000&outputFormat={format}"
              "&srsName=urn:ogc:def:crs:EPSG::{code}")
FORMATS = (("GML", "application/gml%2Bxml;%20version=3.2", (STORAGE, 25832, 4326, 27700)),
           ("GeoJSON", "application/json", (STORAGE, 25832)))
ROUNDS = 3


def processor_seconds(pids):
    ticks = 0
    for pid in pids:
        with open(f"/proc/{pid}/stat", encoding="ascii") as stat:
            ticks += sum(map(int, stat.read().rsplit(")", 1)[1].split()[11:13]))
    return ticks / os.sysconf("SC_CLK_TCK")


def check(url, layer, code):
    """The answer that is measured must be right; in WFS both servers write GeoJSON with easting or longitude first. A
    datum shift may be left out outside its area. Returns the answer's size."""
    name = f"EPSG:{code}"
    answer = ask(url)
    exchanged = reference.is_north_first(name) and not answer.is_json()
    differences = []
    for ballpark in (False, True):
        expected = layer.in_crs(name, ballpark)
        differences.append(reference.largest_difference(reference.exchanged(expected) if exchanged else expected,
                                                        answer.features()))
    if min(differences) > reference.bound(name):
        raise RuntimeError(f"{url} is wrong by {min(differences)}")
    return len(answer.body)


def run(url, pids, connections, seconds):
    """Requests per second, and processor milliseconds of a request."""
    before = processor_seconds(pids)
    text = subprocess.run(["wrk", "-t1", f"-c{connections}", f"-d{seconds}s", "--timeout", "60s", url], check=True,
                          capture_output=True, text=True).stdout
    if "Non-2xx" in text or "Socket errors" in text:
        raise RuntimeError(text)
    requests = int(re.search(r"(\d+) requests in", text).group(1))
    rate = float(re.search(r"Requests/sec:\s+([\d.]+)", text).group(1))
    return rate, 1000 * (processor_seconds(pids) - before) / requests


def sampled_share(url, pids, seconds):
    """The share of perf's samples in the libraries that transform, or None."""
    if not shutil.which("perf"):
        return None
    with tempfile.TemporaryDirectory() as folder:
        data = os.path.join(folder, "perf.data")
        with subprocess.Popen(["perf", "record", "-q", "-e", "cpu-clock", "-o", data, "-p", ",".join(map(str, pids))],
                              stderr=subprocess.DEVNULL) as recorder:
            run(url, pids, 1, seconds)
            recorder.terminate()
        report = subprocess.run(["perf", "report", "-q", "-i", data, "--sort", "dso"], capture_output=True, text=True,
                                check=False).stdout
    shares = re.findall(r"([\d.]+)%\s+(\S+)", report)
    return sum(float(share) for share, name in shares if name.startswith(TRANSFORMING)) if shares else None


class Row:
    """Figures of one server for one request."""

    def __init__(self, name, url, pids, layer, code):
        self.name, self.url, self.pids = name, url, pids
        self.size = check(url, layer, code)
        self.rates = [0.0, 0.0]
        self.milliseconds = float("inf")
        self.share = None

    def run_round(self, seconds):
        for i in (0, 1):
            rate, milliseconds = run(self.url, self.pids, i + 1, seconds)
            self.rates[i] = max(self.rates[i], rate)
            self.milliseconds = min(self.milliseconds, milliseconds)

    def text(self, base):
        growth = 100 * max(0.0, self.milliseconds - base) / self.milliseconds
        share = "not measured" if self.share is None else f"{self.share:.0f} %"
        return (f"{self.size // 1024} | {self.rates[0]:.1f} | {self.rates[1]:.1f} | {self.milliseconds:.1f} | "
                f"{growth:.0f} % | {share} |")


def measure(servers, output_format, code, layer, seconds):
    rows = [Row(name, url + PARAMETERS.format(format=output_format, code=code), pids, layer, code)
            for name, url, pids in servers]
    for _ in range(ROUNDS):
        for row in rows:
            row.run_round(seconds)
    for row in rows:
        row.share = sampled_share(row.url, row.pids, seconds)
    return rows


def measure_all(servers, layer, seconds):
    print("| format | EPSG | server | answer, KiB | requests/s, one client | two clients | processor ms a request | "
          "growth | samples |\n|---|---|---|---|---|---|---|---|---|")
    for label, output_format, codes in FORMATS:
        bases = {}
        for code in codes:
            for row in measure(servers, output_format, code, layer, seconds):
                base = bases.setdefault(row.name, row.milliseconds)
                print(f"| {label} | {code} | {row.name} | {row.text(base)}", flush=True)


def main(seconds):
    with tempfile.TemporaryDirectory() as folder:
        geopackage = os.path.join(folder, "points.gpkg")
        points.make(geopackage)
        with Service(geopackage) as service, MapServer(geopackage, layers=["points"]) as mapserver:
            servers = [("feature server", service.wfs, [service.process.pid]),
                       ("MapServer 8", mapserver.wfs, [*mapserver.pids, mapserver.lighttpd.pid])]
            measure_all(servers, reference.Layer(geopackage, "points"), seconds)


if __name__ == "__main__":
    main(int(sys.argv[1]) if len(sys.argv) > 1 else 5)
