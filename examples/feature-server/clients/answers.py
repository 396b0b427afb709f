"""Plain requests, and what their answers hold: the coordinates as they are in the document, and its failures."""

import json
import time
import urllib.error
import urllib.parse
import urllib.request
from xml.etree import ElementTree

MEMBERS = {"member", "featureMember", "featureMembers"}
NO_PROXY = urllib.request.build_opener(urllib.request.ProxyHandler({}))


class Answer:
    def __init__(self, status, headers, body, seconds):
        self.status = status
        self.headers = headers
        self.type = headers.get("Content-Type", "")
        self.body = body
        self.seconds = seconds

    def is_json(self):
        return "json" in self.type

    def features(self):
        """The points of each feature, in the document's order of features and of axes."""
        return features_of_json(self.body) if self.is_json() else features_of_gml(self.body)

    def exception(self):
        """The code of an OWS or OGC API exception, or None. Raises ParseError or ValueError for a malformed body."""
        if self.is_json():
            return json.loads(self.body).get("code") if self.status >= 400 else None
        for element in ElementTree.fromstring(self.body).iter():
            if local(element) in ("Exception", "ServiceException"):
                return element.get("exceptionCode") or element.get("code") or "without a code"
        return None

    def srs_names(self):
        """The srsName attributes outside bounds, or the header Content-Crs."""
        if self.is_json():
            return {self.headers.get("Content-Crs", "").strip("<>")}
        root = ElementTree.fromstring(self.body)
        skip_bounds(root)
        return {element.get("srsName") for element in root.iter() if element.get("srsName")}


def ask(url, timeout=60, **parameters):
    if parameters:
        url += ("&" if "?" in url else "?") + urllib.parse.urlencode(parameters)
    start = time.monotonic()
    try:
        with NO_PROXY.open(url, timeout=timeout) as answer:
            return Answer(answer.status, answer.headers, answer.read(), time.monotonic() - start)
    except urllib.error.HTTPError as error:
        with error:
            return Answer(error.code, error.headers, error.read(), time.monotonic() - start)


def local(element):
    return element.tag.rsplit("}", 1)[-1]


def skip_bounds(element):
    for child in list(element):
        if local(child) == "boundedBy":
            element.remove(child)
        else:
            skip_bounds(child)


def features_of_gml(text):
    root = ElementTree.fromstring(text)
    skip_bounds(root)
    members = [feature for member in root if local(member) in MEMBERS for feature in member]
    return [points_of_gml(feature, 2) for feature in members]


def points_of_gml(element, dimension):
    dimension = int(element.get("srsDimension", dimension))
    if local(element) in ("pos", "posList"):
        numbers = [float(number) for number in element.text.split()]
        return list(zip(numbers[0::dimension], numbers[1::dimension]))
    return [point for child in element for point in points_of_gml(child, dimension)]


def features_of_json(text):
    document = json.loads(text)
    features = document["features"] if document["type"] == "FeatureCollection" else [document]
    return [points_of_json(feature["geometry"]["coordinates"]) for feature in features]


def points_of_json(coordinates):
    if isinstance(coordinates[0], (int, float)):
        return [tuple(coordinates[:2])]
    return [point for part in coordinates for point in points_of_json(part)]
