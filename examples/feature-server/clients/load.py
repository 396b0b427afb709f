"""Full load on the feature server, with reloads of its configuration and a restart while requests run.

    load.py [SECONDS] [CLIENTS]      60 seconds and two clients unless given

Every answer is compared with the first one of its kind, and the first ones with the reference. The server is restarted
after a quarter of the time; from then on it must keep its memory and descriptors. SIGHUP is sent each second. The
program fails on a wrong or missing answer, on growth, and on an exit code other than 0.
"""

import re
import sys
import threading
import time

import reference
from answers import Answer, ask
from service import GEOPACKAGE, Service, free_port

URN = "urn:ogc:def:crs:EPSG::"
RELOADS_EACH = 1.0
GROWTH_KILOBYTES = 16384  # a short run ends before each thread has used its memory
CODES = (4326, 25832, 3857, 3035, 2154, 27700, 3034)
CHANGING = re.compile(rb'timeStamp="[^"]*"|"timeStamp":\s*"[^"]*"')


def requests():
    """Parameters of a request, the CRS of its answer, and the layer whose features it returns."""
    for version, names in (("2.0.0", "typeNames"), ("1.1.0", "typeName")):
        for code in CODES:
            yield "/wfs", {"service": "WFS", "version": version, "request": "GetFeature", names: "places",
                           "srsName": f"{URN}{code}"}, f"EPSG:{code}", "places"
    yield "/wfs", {"service": "WFS", "version": "2.0.0", "request": "GetFeature", "typeNames": "countries",
                   "srsName": URN + "3035"}, "EPSG:3035", "countries"
    for code in CODES:
        url = f"http://www.opengis.net/def/crs/EPSG/0/{code}"
        yield "/collections/places/items", {"f": "json", "limit": 1000, "crs": url}, f"EPSG:{code}", "places"
    yield "/wfs", {"service": "WFS", "version": "2.0.0", "request": "GetFeature", "typeNames": "places",
                   "srsName": "EPSG:999999"}, None, None
    yield "/wfs", {"service": "WFS", "version": "2.0.0", "request": "GetCapabilities"}, None, None


def stable(answer):
    return answer.status, CHANGING.sub(b"", answer.body)


def first_answers(root):
    layers = {name: reference.Layer(GEOPACKAGE, name) for name in ("places", "countries")}
    result = []
    for path, parameters, definition, layer in requests():
        answer = ask(root + path, **parameters)
        if definition:
            expected = layers[layer].in_crs(definition)
            if reference.is_north_first(definition):
                expected = reference.exchanged(expected)
            difference = reference.largest_difference(expected, answer.features())
            if difference > reference.bound(definition):
                raise RuntimeError(f"{path} {parameters} is wrong by {difference}")
        result.append((path, parameters, stable(answer)))
    return result


class Clients:
    """Threads that ask without a pause. A refused or broken connection is a fault unless a restart is under way."""

    def __init__(self, root, expected, count):
        self.root = root
        self.expected = expected
        self.running = threading.Event()
        self.ending = threading.Event()
        self.restarting = threading.Event()
        self.lock = threading.Lock()
        self.answers = 0
        self.lost = 0
        self.slowest = 0.0
        self.faults = []
        self.threads = [threading.Thread(target=self.loop, args=(i,)) for i in range(count)]
        self.running.set()
        for thread in self.threads:
            thread.start()

    def loop(self, start):
        i = start * 7
        while not self.ending.is_set():
            self.running.wait()
            path, parameters, expected = self.expected[i % len(self.expected)]
            i += 1
            disturbed = self.restarting.is_set()
            try:
                self.count(ask(self.root + path, **parameters), expected, f"{path} {parameters}")
            except OSError as error:
                self.lose(error, disturbed or self.restarting.is_set())

    def count(self, answer: Answer, expected, text):
        with self.lock:
            self.answers += 1
            self.slowest = max(self.slowest, answer.seconds)
            if stable(answer) != expected:
                self.faults.append(f"{text}: {answer.status}, another answer than the first")

    def lose(self, error, allowed):
        with self.lock:
            if allowed:
                self.lost += 1
            else:
                self.faults.append(f"no answer: {error}")
        time.sleep(0.05)

    def end(self):
        self.ending.set()
        self.running.set()
        for thread in self.threads:
            thread.join()


def idle_descriptors(service):
    """Connections that clients have closed may take the server's time of keeping them alive to go."""
    counts = []
    for _ in range(40):
        counts.append(service.descriptors())
        time.sleep(0.25)
    return min(counts)


def keep_under_load(service, clients, seconds):
    """Reloads all the time; returns samples of memory in KiB and of descriptors."""
    samples = []
    end = time.monotonic() + seconds
    while time.monotonic() < end and not clients.faults:
        service.reload()
        time.sleep(RELOADS_EACH)
        samples.append((service.resident_kilobytes(), service.descriptors()))
    return samples


def restart(service, clients):
    clients.restarting.set()
    code = service.end()
    service.log.close()
    if code != 0:
        clients.faults.append(f"the server ended with {code}")
    service = Service(port=service.port)
    time.sleep(0.2)
    clients.restarting.clear()
    return service


def main(seconds, count):
    service = Service(port=free_port())
    clients = None
    try:
        clients = Clients(service.root, first_answers(service.root), count)
        keep_under_load(service, clients, seconds / 4)
        service = restart(service, clients)
        keep_under_load(service, clients, seconds / 4)
        clients.running.clear()
        before = idle_descriptors(service)
        clients.running.set()
        samples = keep_under_load(service, clients, seconds / 2)
        clients.end()
        after = idle_descriptors(service)
    finally:
        if clients:
            clients.end()
        service.__exit__()
    return report(clients, samples, before, after, service.process.returncode)


def report(clients, samples, before, after, code):
    third = max(1, len(samples) // 3)
    early = max(memory for memory, _ in samples[:third])
    late = max(memory for memory, _ in samples[-third:])
    print(f"{clients.answers} answers, {clients.lost} lost at the restart, slowest {clients.slowest:.2f} s, "
          f"{len(samples)} reloads sampled\nmemory {early} KiB, then {late} KiB; at most "
          f"{max(number for _, number in samples)} descriptors, idle {before}, then {after}")
    faults = clients.faults[:20]
    if late > early + GROWTH_KILOBYTES:
        faults.append("the memory grows")
    if after > before:
        faults.append("the descriptors grow")
    if code != 0:
        faults.append(f"the server ended with {code}")
    print("\n".join(faults) or "no fault")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(float(sys.argv[1]) if len(sys.argv) > 1 else 60.0, int(sys.argv[2]) if len(sys.argv) > 2 else 2))
