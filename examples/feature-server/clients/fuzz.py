"""Sends mutated requests to the feature server.

    fuzz.py [SECONDS] [SEED]      60 seconds and seed 1 unless given

Each must be answered within ten seconds by a valid HTTP status, other than 500, and a well-formed body; only for a method
that HTTP does not know may the connection be closed instead. The server must be alive afterwards, answer an ordinary
request rightly and end with 0.
"""

import collections
import http.client
import json
import random
import socket
import sys
import time
from urllib.parse import quote, quote_from_bytes
from xml.etree import ElementTree

from answers import ask
from service import Service

SECONDS_TO_ANSWER = 10
SHOWN = 300

WFS = [("service", "WFS"), ("version", "2.0.0"), ("request", "GetFeature"), ("typeNames", "places")]
URN, URL = "urn:ogc:def:crs:EPSG::", "http://www.opengis.net/def/crs/EPSG/0/"
SEEDS = [
    ("/", []), ("/collections", []), ("/conformance", []), ("/api", []), ("/collections/places", []),
    ("/collections/places/items", [("f", "json"), ("limit", "3"), ("crs", URL + "25832"), ("bbox", "0,50,10,60"),
                                   ("bbox-crs", "http://www.opengis.net/def/crs/OGC/1.3/CRS84"), ("offset", "1")]),
    ("/collections/rivers/items", [("crs", "[EPSG:3035]"), ("limit", "2")]),
    ("/collections/places/items/1", [("crs", URL + "4326")]),
    ("/wfs", WFS[:2] + [("request", "GetCapabilities"), ("acceptVersions", "2.0.0,1.1.0")]),
    ("/wfs", WFS[:2] + [("request", "DescribeFeatureType"), ("typeNames", "places,rivers")]),
    ("/wfs", WFS + [("srsName", URN + "4326"), ("bbox", "50,-5,55,9," + URN + "4326"), ("count", "5")]),
    ("/wfs", WFS + [("srsName", "EPSG:3857"), ("outputFormat", "application/json"), ("startIndex", "2")]),
    ("/wfs", WFS + [("srsName", "urn:ogc:def:crs,crs:EPSG::25832,crs:EPSG::5783"), ("resultType", "hits")]),
    ("/wfs", [("service", "WFS"), ("version", "1.1.0"), ("request", "GetFeature"), ("typeName", "rivers"),
              ("srsName", "http://www.opengis.net/gml/srs/epsg.xml#4326"), ("maxFeatures", "4")]),
]
VALUES = [
    "", " ", "0", "-1", "1e999", "nan", "inf", "-inf", "1e308", "4294967296", "18446744073709551616", "9" * 400, "null",
    "0,0,0,0", "1,2,3", "1,2,3,4,5,6,7", "-180,-90,180,90", "90,180,-90,-180", "nan,nan,nan,nan",
    "1e300,1e300,1e301,1e301", "50,-5,55,9," + URN, "0,0,1,1,EPSG:4326*EPSG:5783", "EPSG:4326", "EPSG:999999", "EPSG:0",
    "EPSG:-1", "EPSG:4326*", "EPSG:4326*EPSG:5783*EPSG:5783", URN + "4326", URN, URN + "0",
    URN + "25832,crs:EPSG::5783", URL + "4326", URL, "[EPSG:]", "[EPSG:4326]", "[", "CRS:84", "epsg.xml#4326",
    "../../../../etc/passwd", "<x>&\"'</x>", "]]>", "%s%n%d", "\0", "\x01", "\x7f", "\ufffe", "\r\nX: y", "\u00e4\u6f22\U0001f5fa", "a" * 5000,
    "," * 3000, ":" * 3000, "urn:ogc:def:crs" + ",crs:EPSG::4326" * 300, "GetFeature", "WFS", "2.0.0", "1.1.0", "1.0.0",
    "places", "nothing", "places,places,places", "application/json", "text/xml", "hits",
]
PATHS = ["/%00", "/..%2f..%2fetc/passwd", "//", "/" + "a" * 3000, "/collections/%3Cx%3E/items", "/collections/%ff%fe"]
METHODS = ["GET"] * 40 + ["HEAD", "POST", "PUT", "OPTIONS", "BREW"]


class Mutator:
    def __init__(self, seed):
        self.random = random.Random(seed)

    def request(self):
        """A method and a target, as bytes."""
        path, parameters = self.random.choice(SEEDS)
        parameters = list(parameters)
        for _ in range(self.random.randint(0, 3)):
            parameters = self.change(parameters)
        query = "&".join(f"{quote(key)}={self.escape(value)}" for key, value in parameters)
        target = (self.change_path(path) + ("?" + query if query else "")).encode("latin-1", "replace")
        if self.random.random() < 0.15:
            target = self.change_bytes(target)
        return self.random.choice(METHODS).encode(), target

    def change(self, parameters):
        if not parameters:
            return [(self.random.choice(["f", "crs", "limit", "bbox", "srsName"]), self.random.choice(VALUES))]
        i = self.random.randrange(len(parameters))
        key, value = parameters[i]
        kind = self.random.randrange(7)
        if kind == 0:
            return parameters[:i] + parameters[i + 1:]
        if kind == 1:
            return parameters + [(key, self.random.choice(VALUES))]
        if kind == 2:
            return parameters[:i] + [(self.case(key), value)] + parameters[i + 1:]
        if kind == 3:
            return parameters[:i] + [(key, self.change_text(value))] + parameters[i + 1:]
        return parameters[:i] + [(key, self.random.choice(VALUES))] + parameters[i + 1:]

    def case(self, text):
        return self.random.choice([text.upper(), text.lower(), text.title(), text[::-1]])

    def change_text(self, text):
        place = self.random.randrange(len(text) + 1)
        piece = self.random.choice(["", "0", "-", ".", ",", ":", "*", "#", "/", " ", "e9", "\t", "\u00df", text])
        return text[:place] + piece + text[place + self.random.randint(0, 2):]

    def escape(self, text):
        """Mostly as it must be, else with the text's own reserved characters left."""
        return quote(text) if self.random.random() < 0.8 else quote(text, safe=":/,*#+;?@[]%\"<>")

    def change_path(self, path):
        if self.random.random() < 0.85:
            return path
        return self.random.choice([path + "/", path * 2, path.upper(), self.change_text(path), *PATHS])

    def change_bytes(self, target):
        changed = bytearray(target)
        for _ in range(self.random.randint(1, 3)):
            changed[self.random.randrange(len(changed))] = self.random.randrange(256)
        return bytes(changed)


def send(port, method, target):
    """Sends the bytes as they are. Returns status, type and body."""
    head = b"%s %s HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\nContent-Length: 0\r\n\r\n" % (method, target)
    with socket.create_connection(("127.0.0.1", port), SECONDS_TO_ANSWER) as connection:
        connection.sendall(head)
        answer = http.client.HTTPResponse(connection, method=method.decode())
        answer.begin()
        return answer.status, answer.headers.get("Content-Type", ""), answer.read()


def fault_of(method, status, content_type, body):
    """What is wrong with an answer, or None."""
    if not 200 <= status < 600 or status == 500:
        return f"status {status}"
    if not body:
        return None if method == b"HEAD" or status >= 300 or status == 204 else "no body"
    try:
        if "json" in content_type:
            json.loads(body, parse_constant=lambda text: (_ for _ in ()).throw(ValueError(text)))
        elif "xml" in content_type or "gml" in content_type:
            ElementTree.fromstring(body)
        elif not content_type.startswith("text/"):
            return "type " + (content_type or "missing")
        else:
            body.decode("utf-8")
    except (ValueError, ElementTree.ParseError) as error:
        return f"{content_type}: {error}"
    return None


def fuzz(service, seconds, seed):
    mutator = Mutator(seed)
    statuses, faults, slowest = collections.Counter(), [], 0.0
    end = time.monotonic() + seconds
    while time.monotonic() < end and len(faults) < 20:
        method, target = mutator.request()
        start = time.monotonic()
        try:
            status, content_type, body = send(service.port, method, target)
            fault = fault_of(method, status, content_type, body)
            statuses[status] += 1
        except (OSError, http.client.HTTPException) as error:
            # A server may close the connection of a method that HTTP does not know.
            closed = method == b"BREW" and isinstance(error, ConnectionError)
            fault = None if closed else f"no answer: {error!r}"
        slowest = max(slowest, time.monotonic() - start)
        if fault:
            faults.append(f"{fault}: {method.decode()} {quote_from_bytes(target, safe='/?&=:%,*#+[]')[:SHOWN]}")
        if service.process.poll() is not None:
            faults.append(f"the server ended with {service.process.returncode}: {service.output()[-500:]}")
            break
    return statuses, faults, slowest


def main(seconds, seed):
    with Service() as service:
        statuses, faults, slowest = fuzz(service, seconds, seed)
        if service.process.poll() is None:
            answer = ask(service.wfs, service="WFS", version="2.0.0", request="GetFeature", typeNames="places")
            if answer.status != 200 or not answer.features():
                faults.append("an ordinary request fails afterwards")
            if service.end() != 0:
                faults.append(f"the server ended with {service.process.returncode}")
    counts = ", ".join(f"{count} of {status}" for status, count in sorted(statuses.items()))
    print(f"seed {seed}: {sum(statuses.values())} answers ({counts}), slowest {slowest:.2f} s")
    print("\n".join(faults) or "no fault")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(float(sys.argv[1]) if len(sys.argv) > 1 else 60.0, int(sys.argv[2]) if len(sys.argv) > 2 else 1))
