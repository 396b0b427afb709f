#!/usr/bin/env python3
"""Sends requests to the feature server and checks the answers. Expected coordinates are those of cs2cs.

usage: requests.py FEATURE_SERVER [UNITTEST ARGUMENT...]
"""

import atexit
import contextlib
import json
import os
import re
import shutil
import signal
import socket
import sqlite3
import struct
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import urllib.error
import urllib.parse
import urllib.request
import xml.etree.ElementTree as ET

PROGRAM = ""
HERE = os.path.dirname(os.path.abspath(__file__))
DATA = os.path.join(HERE, "..", "data", "europe.gpkg")
FRAGMENT = os.path.join(HERE, "..", "crs.xml")
URL = "http://www.opengis.net/def/crs/"
GML = {"1.1.0": "{http://www.opengis.net/gml}", "2.0.0": "{http://www.opengis.net/gml/3.2}"}
FS = "{http://example.org/feature-server}"
TOLERANCE_IN_METRES = 0.0015  # half of the last decimal place, and a millimetre
TOLERANCE_IN_DEGREES = 2e-8


class Server:
    def __init__(self, *arguments):
        self.process = subprocess.Popen([PROGRAM, "--port", "0", *arguments], stdout=subprocess.PIPE, text=True)
        atexit.register(self.process.kill)  # a test that fails may leave it running
        self.base = self.process.stdout.readline().strip().rstrip("/")

    def stop(self, how=signal.SIGTERM):
        self.process.send_signal(how)
        try:
            code = self.process.wait(20)
        except subprocess.TimeoutExpired:
            self.process.kill()
            raise
        self.process.stdout.close()
        return code

    def get(self, path, **parameters):
        """Returns the status, the headers and the text."""
        query = {name.replace("_", "-") if name == "bbox_crs" else name: value for name, value in parameters.items()}
        url = self.base + path + ("?" + urllib.parse.urlencode(query) if query else "")
        try:
            with urllib.request.urlopen(url, timeout=30) as answer:
                return answer.status, answer.headers, answer.read().decode()
        except urllib.error.HTTPError as failure:
            with failure:
                return failure.code, failure.headers, failure.read().decode()

    def wfs(self, version="2.0.0", request="GetFeature", **parameters):
        return self.get("/wfs", service="WFS", version=version, request=request, **parameters)

    def json(self, path, **parameters):
        status, headers, text = self.get(path, **parameters)
        if status != 200:
            raise AssertionError(f"{path} {parameters}: {status} {text}")
        return json.loads(text)


def stored_points():
    """Easting and northing of each place, by id, read from the file itself."""
    points = {}
    with sqlite3.connect(f"file:{DATA}?mode=ro&immutable=1", uri=True) as file:
        for fid, blob in file.execute("SELECT fid, geom FROM places"):
            envelope = {0: 0, 1: 32}[blob[3] >> 1 & 7]
            points[fid] = struct.unpack_from("<dd", blob, 8 + envelope + 5)
    file.close()
    return points


STORED = stored_points()


def cs2cs(target, points):
    """Transforms {id: (easting, northing)} of EPSG:3034 to `target`, in the axis order of the registry."""
    lines = "".join(f"{north!r} {east!r}\n" for east, north in points.values())
    output = subprocess.run(["cs2cs", "-f", "%.9f", "EPSG:3034", target], input=lines, text=True, check=True,
                            stdout=subprocess.PIPE).stdout
    return {fid: tuple(float(word) for word in line.split()[:2]) for fid, line in zip(points, output.splitlines())}


def gml_points(version, text):
    """Coordinates of the points by the id of their feature, and the names of their CRS."""
    points, names = {}, set()
    for feature in ET.fromstring(text).iter(FS + "places"):
        point = feature.find(f".//{GML[version]}Point")
        names.add(point.get("srsName"))
        position = point.find(GML[version] + "pos").text
        points[int(feature.get(GML[version] + "id").split(".")[1])] = tuple(map(float, position.split()))
    return points, names


def json_points(document):
    return {int(str(feature["id"]).split(".")[-1]): tuple(feature["geometry"]["coordinates"])
            for feature in document["features"]}


class Requests(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.server = Server()

    @classmethod
    def tearDownClass(cls):
        assert cls.server.stop() == 0

    def assert_points(self, found, expected, tolerance, context):
        self.assertEqual(sorted(found), sorted(expected), context)
        for fid, point in expected.items():
            for ordinate, wanted in zip(found[fid], point):
                self.assertLess(abs(ordinate - wanted), tolerance, (context, fid, found[fid], point))

    def assert_report(self, answer, status, code, locator, *texts):
        self.assertEqual(answer[0], status, answer[2])
        report = ET.fromstring(answer[2])
        exception = report[0]
        self.assertTrue(report.tag.endswith("}ExceptionReport"), report.tag)
        self.assertEqual((exception.get("exceptionCode"), exception.get("locator")), (code, locator), answer[2])
        for text in texts:
            self.assertIn(text, exception[0].text)


class Documents(Requests):
    def test_capabilities_name_the_crs_with_titles(self):
        for version, element, schema in (("2.0.0", "OtherCRS", "http://www.opengis.net/wfs/2.0"),
                                         ("1.1.0", "OtherSRS", "http://www.opengis.net/wfs")):
            status, headers, text = self.server.wfs(version, "GetCapabilities")
            document = ET.fromstring(text)
            names = [crs.text for crs in document.iter(f"{{{schema}}}{element}")]
            self.assertEqual((status, document.get("version")), (200, version))
            self.assertIn("xml", headers["Content-Type"])
            self.assertIn("urn:ogc:def:crs:EPSG::25832", names)
            self.assertIn("urn:ogc:def:crs:OGC:1.3:CRS84", names)
            self.assertIn("urn:ogc:def:crs,crs:EPSG::25832,crs:EPSG::5783", names)
            self.assertIn("ETRS89 / UTM zone 32N", text)
            defaults = document.iter(f"{{{schema}}}{element.replace('Other', 'Default')}")
            self.assertEqual({crs.text for crs in defaults}, {"urn:ogc:def:crs:EPSG::3034"})

    def test_versions_are_negotiated(self):
        for parameters, version in (({}, "2.0.0"), ({"acceptVersions": "1.1.0,2.0.0"}, "1.1.0"),
                                    ({"AcceptVersions": "3.0.0,2.0.0"}, "2.0.0"), ({"VERSION": "1.1.0"}, "1.1.0")):
            text = self.server.get("/wfs", SERVICE="wfs", REQUEST="getcapabilities", **parameters)[2]
            self.assertEqual(ET.fromstring(text).get("version"), version, parameters)

    def test_boxes_contain_the_places(self):
        expected = cs2cs("EPSG:4326", STORED)
        for collection in self.server.json("/collections")["collections"]:
            west, south, east, north = collection["extent"]["spatial"]["bbox"][0]
            if collection["id"] == "places":
                for latitude, longitude in expected.values():
                    self.assertTrue(west <= longitude <= east and south <= latitude <= north)

    def test_schema_describes_the_types(self):
        for version, point in (("2.0.0", "gml:PointPropertyType"), ("1.1.0", "gml:PointPropertyType")):
            status, _, text = self.server.wfs(version, "DescribeFeatureType", typeNames="fs:places")
            types = {element.get("name"): element.get("type") for element in ET.fromstring(text).iter()}
            self.assertEqual((status, types["geom"], types["name"]), (200, point, "xsd:string"))
            self.assertNotIn("rivers", types)
            every = self.server.wfs(version, "DescribeFeatureType")[2]
            self.assertIn('name="rivers"', every)
            self.assertIn('name="area_km2" type="xsd:double"', every)

    def test_api_documents_link_to_each_other(self):
        for path in ("/", "/conformance", "/api", "/crs", "/collections", "/collections/rivers"):
            document = self.server.json(path)
            for link in document.get("links", []):
                if "json" in link["type"]:
                    status, headers, _ = self.server.get(link["href"][len(self.server.base):])
                    self.assertEqual((status, headers["Content-Type"]), (200, link["type"]), link)

    def test_crs_are_described(self):
        listed = {crs["uri"]: crs for crs in self.server.json("/crs")["crs"]}
        utm = listed[URL + "EPSG/0/25832"]
        self.assertEqual((utm["title"], utm["unit"], utm["axisOrder"], utm["bbox"]),
                         ("ETRS89 / UTM zone 32N", "metre", "easting, northing", [6, 38.76, 12.01, 84.33]))
        self.assertEqual(listed[URL + "EPSG/0/3034"]["axisOrder"], "northing, easting")
        self.assertEqual(next(iter(listed)), URL + "OGC/1.3/CRS84")
        self.assertEqual(list(listed), self.server.json("/collections/places")["crs"])


class Coordinates(Requests):
    # Name, CRS for cs2cs, and whether easting or longitude comes first in WFS.
    SPELLINGS = [("EPSG:4326", "EPSG:4326", True), ("4326", "EPSG:4326", True),
                 ("urn:ogc:def:crs:EPSG::4326", "EPSG:4326", False),
                 ("urn:x-ogc:def:crs:EPSG:6.12:4326", "EPSG:4326", False),
                 (URL + "EPSG/0/4326", "EPSG:4326", False),
                 ("http://www.opengis.net/gml/srs/epsg.xml#4326", "EPSG:4326", True),
                 ("CRS:84", "EPSG:4326", True), ("urn:ogc:def:crs:OGC:1.3:CRS84", "EPSG:4326", True),
                 ("urn:ogc:def:crs:EPSG::25832", "EPSG:25832", True),
                 ("EPSG:3857", "EPSG:3857", True),
                 ("EPSG:3035", "EPSG:3035", True), ("urn:ogc:def:crs:EPSG::3035", "EPSG:3035", False),
                 ("EPSG:3034", "EPSG:3034", True), ("urn:ogc:def:crs:EPSG::3034", "EPSG:3034", False),
                 ("EPSG:2154", "EPSG:2154", True),
                 ("EPSG:25832*EPSG:5783", "EPSG:25832", True),
                 ("urn:ogc:def:crs,crs:EPSG::25832,crs:EPSG::5783", "EPSG:25832", True)]
    NORTH_FIRST = {"EPSG:4326", "EPSG:3035", "EPSG:3034"}
    RENAMED = {"4326": "EPSG:4326", "urn:x-ogc:def:crs:EPSG:6.12:4326": "urn:ogc:def:crs:EPSG:6.12:4326",
               "urn:ogc:def:crs,crs:EPSG::25832,crs:EPSG::5783": "urn:ogc:def:crs:EPSG::25832"}

    def expected(self, crs, east_first):
        points = cs2cs(crs, STORED)
        swap = (crs in self.NORTH_FIRST) == east_first
        return {fid: (y, x) if swap else (x, y) for fid, (x, y) in points.items()}

    def tolerance(self, crs):
        return TOLERANCE_IN_DEGREES if crs == "EPSG:4326" else TOLERANCE_IN_METRES

    def test_gml_has_the_order_and_the_name_of_the_spelling(self):
        for name, crs, east_first in self.SPELLINGS:
            for version in ("1.1.0", "2.0.0"):
                status, headers, text = self.server.wfs(version, typeNames="fs:places", srsName=name)
                self.assertEqual(status, 200, text)
                self.assertIn("3.2" if version == "2.0.0" else "3.1.1", headers["Content-Type"])
                points, names = gml_points(version, text)
                self.assertEqual(names, {self.RENAMED.get(name, name)})
                self.assert_points(points, self.expected(crs, east_first), self.tolerance(crs), (name, version))

    def test_geojson_of_wfs_has_the_easting_first(self):
        for name, crs in (("urn:ogc:def:crs:EPSG::4326", "EPSG:4326"), ("EPSG:3035", "EPSG:3035")):
            status, headers, text = self.server.wfs(typeNames="places", srsName=name, outputFormat="application/json")
            document = json.loads(text)
            self.assertEqual((status, headers["Content-Type"]), (200, "application/json"))
            self.assertEqual(document["crs"]["properties"]["name"], name)
            self.assert_points(json_points(document), self.expected(crs, True), self.tolerance(crs), name)

    def test_the_api_has_the_order_of_the_registry_and_names_it(self):
        for name, crs, content in (("", "CRS84", URL + "OGC/1.3/CRS84"),
                                   (URL + "OGC/1.3/CRS84", "CRS84", URL + "OGC/1.3/CRS84"),
                                   (URL + "EPSG/0/4326", "EPSG:4326", URL + "EPSG/0/4326"),
                                   ("[EPSG:4326]", "EPSG:4326", URL + "EPSG/0/4326"),
                                   (URL + "EPSG/0/25832", "EPSG:25832", URL + "EPSG/0/25832"),
                                   (URL + "EPSG/0/3035", "EPSG:3035", URL + "EPSG/0/3035")):
            parameters = {"crs": name} if name else {}
            status, headers, text = self.server.get("/collections/places/items", limit=1000, **parameters)
            self.assertEqual((status, headers["Content-Type"]), (200, "application/geo+json"), text)
            self.assertEqual(headers["Content-Crs"], f"<{content}>")
            expected = self.expected("EPSG:4326", True) if crs == "CRS84" else self.expected(crs, False)
            if crs == "EPSG:25832":
                expected = self.expected(crs, True)
            self.assert_points(json_points(json.loads(text)), expected,
                               self.tolerance("EPSG:4326" if crs == "CRS84" else crs), name)

    def test_the_british_grid_is_right_in_britain(self):
        text = self.server.wfs(typeNames="places", srsName="EPSG:27700")[2]
        london = {fid: STORED[fid] for fid, point in cs2cs("EPSG:4326", STORED).items()
                  if 50 < point[0] < 59 and -6 < point[1] < 1}
        self.assertTrue(london)
        found = {fid: point for fid, point in gml_points("2.0.0", text)[0].items() if fid in london}
        self.assert_points(found, cs2cs("EPSG:27700", london), 2.0, "27700: the shift has an accuracy of 2 m")

    def test_decimal_places_are_those_of_the_entry(self):
        for name, places in (("EPSG:4326", 8), ("EPSG:3034", 3), ("EPSG:25832", 3), ("CRS:84", 8), ("OGC:CRS84", 8)):
            text = self.server.wfs(typeNames="places", srsName=name)[2]
            ordinates = re.findall(r"<gml:pos>(\S+) (\S+)</gml:pos>", text)
            self.assertEqual(max(len(number.split(".")[1]) for pair in ordinates for number in pair), places, name)

    def test_lines_and_polygons_are_written_in_both_notations(self):
        for layer, part, depth in (("rivers", "LineString", 2), ("countries", "Polygon", 3)):
            text = self.server.wfs(typeNames=layer, srsName="CRS:84")[2]
            lists = [list(map(float, node.text.split())) for node in ET.fromstring(text).iter(GML["2.0.0"] + "posList")]
            document = json.loads(self.server.wfs(typeNames=layer, srsName="CRS:84", outputFormat="json")[2])
            flat = [feature["geometry"]["coordinates"] for feature in document["features"]]
            for _ in range(depth - 1):
                flat = [line for lines in flat for line in lines]
            self.assertEqual(lists, [[ordinate for point in line for ordinate in point] for line in flat])
            ids = re.findall(r'gml:id="([^"]*)"', text)
            self.assertEqual(len(ids), len(set(ids)))
            self.assertEqual(text.count(f"<gml:{part} "), text.count(f"</gml:{part}>"))

    def test_missing_values_are_left_out_or_null(self):
        document = self.server.json("/collections/places/items", limit=1000)
        missing = [feature["id"] for feature in document["features"] if feature["properties"]["country"] is None]
        self.assertTrue(missing)
        root = ET.fromstring(self.server.wfs(typeNames="places")[2])
        found = [int(place.get(GML["2.0.0"] + "id").split(".")[1]) for place in root.iter(FS + "places")
                 if place.find(FS + "country") is None]
        self.assertEqual(found, missing)


class Boxes(Requests):
    def found(self, **parameters):
        return sorted(json_points(self.server.json("/collections/places/items", limit=1000, **parameters)))

    def inside(self, crs, box):
        return sorted(fid for fid, (x, y) in cs2cs(crs, STORED).items() if box[0] <= x <= box[2] and box[1] <= y <= box[3])

    def test_a_box_finds_what_lies_in_it_in_its_own_crs(self):
        for crs, box in (("EPSG:4326", (45.5, 5.5, 55.5, 15.5)), ("EPSG:25832", (300000, 5000000, 900000, 6000000)),
                         ("EPSG:3857", (500000, 5500000, 2000000, 7000000)), ("EPSG:3034", (1800000, 3500000, 2900000, 4700000)),
                         ("EPSG:2154", (100000, 6000000, 1100000, 7200000)), ("EPSG:3035", (2500000, 4000000, 3500000, 5000000))):
            expected = self.inside(crs, box)
            self.assertTrue(0 < len(expected) < len(STORED), crs)
            text = ",".join(map(str, box))
            self.assertEqual(self.found(bbox=text, bbox_crs=URL + "EPSG/0/" + crs[5:]), expected, crs)
            urn = "urn:ogc:def:crs:EPSG::" + crs[5:]
            for version in ("1.1.0", "2.0.0"):
                answer = self.server.wfs(version, typeNames="places", bbox=f"{text},{urn}")[2]
                self.assertEqual(sorted(gml_points(version, answer)[0]), expected, (crs, version))

    def test_the_name_decides_the_order_of_a_box(self):
        expected = self.inside("EPSG:4326", (45.5, 5.5, 55.5, 15.5))
        for version, box in (("1.1.0", "5.5,45.5,15.5,55.5,EPSG:4326"), ("1.1.0", "5.5,45.5,15.5,55.5"),
                             ("1.1.0", "45.5,5.5,55.5,15.5,urn:ogc:def:crs:EPSG::4326"),
                             ("2.0.0", "5.5,45.5,15.5,55.5,EPSG:4326"), ("2.0.0", "45.5,5.5,55.5,15.5,4326"),
                             ("2.0.0", "45.5,5.5,55.5,15.5,urn:ogc:def:crs:EPSG::4326"),
                             ("2.0.0", f"45.5,5.5,55.5,15.5,{URL}EPSG/0/4326"),
                             ("2.0.0", "5.5,45.5,15.5,55.5,CRS:84"), ("2.0.0", "5.5,45.5,0,15.5,55.5,9,CRS:84")):
            text = self.server.wfs(version, typeNames="places", bbox=box)[2]
            self.assertEqual(sorted(gml_points(version, text)[0]), expected, (version, box))
        self.assertEqual(self.found(bbox="5.5,45.5,15.5,55.5"), expected)

    def test_a_box_without_a_crs_is_in_that_of_the_layer_in_wfs_20(self):
        text = self.server.wfs(typeNames="places", bbox="1800000,3500000,2900000,4700000")[2]
        self.assertEqual(sorted(gml_points("2.0.0", text)[0]), self.inside("EPSG:3034", (1800000, 3500000, 2900000, 4700000)))

    def test_large_boxes_find_everything(self):
        for box in ("-180,-90,180,90", "-30,20,60,80", "-180,0,180,90", "-100,-80,170,89"):
            self.assertEqual(self.found(bbox=box), sorted(STORED), box)

    def test_a_box_across_the_antimeridian_is_one_box(self):
        self.assertEqual(self.found(bbox="170,-90,-170,90"), [])
        west = [fid for fid, (_, longitude) in cs2cs("EPSG:4326", STORED).items() if longitude <= 0]
        self.assertTrue(west)
        self.assertEqual(self.found(bbox="170,-90,0,90"), sorted(west))

    def test_a_filter_may_be_a_box(self):
        expected = self.inside("EPSG:3034", (1800000, 3500000, 2900000, 4700000))
        envelope = ("<gml:Envelope><gml:lowerCorner>1800000 3500000</gml:lowerCorner>"
                    "<gml:upperCorner>2900000 4700000</gml:upperCorner></gml:Envelope>")
        for version, namespace in (("2.0.0", "http://www.opengis.net/fes/2.0"), ("1.1.0", "http://www.opengis.net/ogc")):
            text = f'<Filter xmlns="{namespace}" xmlns:gml="x"><BBOX><ValueReference>geom</ValueReference>{envelope}</BBOX></Filter>'
            answer = self.server.wfs(version, typeNames="places", filter=text)[2]
            self.assertEqual(sorted(gml_points(version, answer)[0]), expected)
        corners = "<gml:lowerCorner>300000 5000000</gml:lowerCorner><gml:upperCorner>900000 6000000</gml:upperCorner>"
        answer = self.server.wfs(typeNames="places", srsName="urn:ogc:def:crs:EPSG::25832",
                                 filter=f'<Filter xmlns:gml="x"><BBOX><gml:Envelope>{corners}</gml:Envelope></BBOX></Filter>')[2]
        self.assertEqual(sorted(gml_points("2.0.0", answer)[0]), self.inside("EPSG:25832", (300000, 5000000, 900000, 6000000)))
        for other in ("<Filter><PropertyIsEqualTo/></Filter>", f"<Filter><Not><BBOX>{envelope}</BBOX></Not></Filter>", "<"):
            self.assert_report(self.server.wfs(typeNames="places", filter=other), 501, "OptionNotSupported", "filter")

    def test_bad_boxes_are_refused(self):
        for box in ("1,2,3", "a,b,c,d", "1,2,3,4x", "nan,1,2,3", "1e999,1,2,3", "1,2,3,4,5,6,7,8"):
            answer = self.server.wfs(typeNames="places", bbox=box)
            self.assertEqual(answer[0], 400, (box, answer[2]))
        self.assert_report(self.server.wfs(typeNames="places", bbox="5,45,15,40,CRS:84"), 400, "InvalidParameterValue",
                           "bbox", "qvUnexpectedException", "out of bounds")
        self.assert_report(self.server.wfs(typeNames="places", bbox="91,8,95,10,urn:ogc:def:crs:EPSG::4326"), 400, "InvalidParameterValue",
                           "bbox", "qvUnexpectedException", "out of bounds")
        self.assert_report(self.server.wfs(typeNames="places", bbox="1,2,3,4,EPSG:3395"), 400, "InvalidParameterValue",
                           "bbox", "qvCrsUnavailable")
        self.assertEqual(self.server.get("/collections/places/items", bbox="1,2,3,4,EPSG:4326")[0], 400)


class Refusals(Requests):
    def test_names_of_crs_are_refused_with_the_code_of_the_service(self):
        for name, code in (("epsg:4326", "qvCrsUnavailable"), ("EPSG:31467", "qvCrsUnavailable"),
                           ("EPSG:99999", "qvConfigurationError"), ("urn:ogc:def:crs:EPSG::abc", "qvConversionError"),
                           ("EPSG:25832*5783", "no second prefix"), ("x<&\"", "qvCrsUnavailable")):
            text = "invalid string position" if code.startswith("no ") else code
            for version in ("1.1.0", "2.0.0"):
                self.assert_report(self.server.wfs(version, typeNames="places", srsName=name), 400,
                                   "InvalidParameterValue", "srsName", text)
            for parameter in ("crs", "bbox-crs"):
                status, headers, report = self.server.get("/collections/places/items", **{parameter: name})
                self.assertEqual((status, headers["Content-Type"]), (400, "application/json"))
                self.assertEqual(json.loads(report)["parameter"], parameter)
                self.assertIn(text, json.loads(report)["description"])

    def test_bad_requests_have_their_own_codes(self):
        for parameters, status, code, locator in (
                ({"request": ""}, 400, "MissingParameterValue", "request"),
                ({"request": "Transaction"}, 501, "OperationNotSupported", "request"),
                ({"version": "3.0.0"}, 400, "InvalidParameterValue", "version"),
                ({"version": ""}, 400, "MissingParameterValue", "version"),
                ({"service": "WMS"}, 400, "InvalidParameterValue", "service"),
                ({"typeNames": ""}, 400, "MissingParameterValue", "typeNames"),
                ({"typeNames": "roads"}, 400, "InvalidParameterValue", "typeNames"),
                ({"outputFormat": "KML"}, 400, "InvalidParameterValue", "outputFormat"),
                ({"count": "-1"}, 400, "InvalidParameterValue", "count"),
                ({"count": "ten"}, 400, "InvalidParameterValue", "count"),
                ({"startIndex": "1.5"}, 400, "InvalidParameterValue", "startIndex"),
                ({"sortBy": "name"}, 501, "OptionNotSupported", "sortBy")):
            query = {"service": "WFS", "version": "2.0.0", "request": "GetFeature", "typeNames": "places", **parameters}
            self.assert_report(self.server.get("/wfs", **query), status, code, locator)

    def test_the_api_refuses_what_it_does_not_know(self):
        for path, status in (("/nothing", 404), ("/collections/roads", 404), ("/collections/places/items/0", 404),
                             ("/collections/places/items/x", 404), ("/collections/places/items/1/2", 404),
                             ("/collections/places/other", 404), ("/collections/places/items?limit=0", 400),
                             ("/collections/places/items?limit=x", 400), ("/collections/places/items?offset=-1", 400),
                             ("/collections/places/items?unknown=1", 400)):
            answered, headers, text = self.server.get(path)
            self.assertEqual((answered, headers["Content-Type"]), (status, "application/json"), (path, text))
            self.assertTrue(json.loads(text)["code"])

    def raw(self, data):
        with socket.create_connection(self.server.base[7:].split(":"), timeout=30) as connection:
            connection.sendall(data)
            return connection.recv(12).decode(errors="replace")

    def test_requests_have_a_largest_size(self):
        self.assertEqual(self.raw(b"GET /" + b"a" * 20000 + b" HTTP/1.1\r\n\r\n"), "HTTP/1.1 414")
        self.assertEqual(self.raw(b"POST /wfs HTTP/1.1\r\nContent-Length: 100000\r\n\r\n" + b"a" * 100000), "HTTP/1.1 413")
        self.assertEqual(self.raw(b"POST /wfs HTTP/1.1\r\nContent-Length: 1\r\n\r\na"), "HTTP/1.1 405")
        self.assertEqual(self.raw(b"GET /" + b"a/" * 4000 + b" HTTP/1.1\r\n\r\n"), "HTTP/1.1 404")
        self.assertEqual(self.raw(b"nonsense\r\n\r\n"), "HTTP/1.1 400")
        self.assertEqual(self.server.get("/conformance")[0], 200)

    def test_a_strange_host_is_refused(self):
        self.assertEqual(self.raw(b'GET / HTTP/1.1\r\nHost: x"y<\r\n\r\n'), "HTTP/1.1 400")

    def test_files_beside_the_page_are_out_of_reach(self):
        for path in ("/static/../crs.xml", "/static/%2e%2e/crs.xml", "/static/..%2fcrs.xml"):
            self.assertNotIn("200", self.raw(f"GET {path} HTTP/1.1\r\n\r\n".encode()))


class Paging(Requests):
    def test_pages_of_the_api_follow_each_other(self):
        path, found, pages = "/collections/places/items?limit=7&crs=" + URL + "EPSG/0/3857", [], 0
        while path:
            document = self.server.json(path)
            found += [feature["id"] for feature in document["features"]]
            self.assertEqual(document["numberMatched"], len(STORED))
            links = {link["rel"]: link["href"] for link in document["links"]}
            path = links.get("next", "")[len(self.server.base):]
            pages += 1
        self.assertEqual((found, pages), (sorted(STORED), -(-len(STORED) // 7)))

    def test_the_default_limit_is_ten(self):
        self.assertEqual(self.server.json("/collections/places/items")["numberReturned"], 10)
        self.assertEqual(self.server.json("/collections/places/items", limit=99999999999999999999)["numberReturned"], len(STORED))

    def test_wfs_counts_and_skips(self):
        for version, count in (("2.0.0", "count"), ("1.1.0", "maxFeatures")):
            text = self.server.wfs(version, typeNames="places", startIndex=3, **{count: 4})[2]
            self.assertEqual(sorted(gml_points(version, text)[0]), sorted(STORED)[3:7])
        root = ET.fromstring(self.server.wfs(typeNames="places", count=4)[2])
        self.assertEqual((root.get("numberMatched"), root.get("numberReturned")), (str(len(STORED)), "4"))

    def test_hits_are_counted(self):
        for box in ({}, {"bbox": "5.5,45.5,15.5,55.5,EPSG:4326"}, {"bbox": "1800000,3500000,2900000,4700000"}):
            expected = len(gml_points("2.0.0", self.server.wfs(typeNames="places", **box)[2])[0])
            root = ET.fromstring(self.server.wfs(typeNames="places", resultType="hits", **box)[2])
            self.assertEqual((root.get("numberMatched"), root.get("numberReturned"), len(root)), (str(expected), "0", 0))
        root = ET.fromstring(self.server.wfs("1.1.0", typeNames="places", resultType="hits")[2])
        self.assertEqual(root.get("numberOfFeatures"), str(len(STORED)))

    def test_one_feature_is_found_by_its_id(self):
        for fid in (1, 17, len(STORED)):
            feature = self.server.json(f"/collections/places/items/{fid}", crs=URL + "EPSG/0/25832")
            self.assertEqual(feature["id"], fid)
            (link,) = feature["links"]
            self.assertEqual((link["rel"], self.server.json(link["href"][len(self.server.base):])), ("self", feature))
            expected = cs2cs("EPSG:25832", {fid: STORED[fid]})[fid]
            self.assertLess(abs(feature["geometry"]["coordinates"][0] - expected[0]), TOLERANCE_IN_METRES)

    def test_the_server_bounds_the_count(self):
        server = Server("--max-features", "5")
        self.assertEqual(len(server.json("/collections/places/items", limit=50)["features"]), 5)
        self.assertEqual(len(gml_points("2.0.0", server.wfs(typeNames="places")[2])[0]), 5)
        self.assertIn("<ows:DefaultValue>5</ows:DefaultValue>", server.wfs(request="GetCapabilities")[2])
        self.assertEqual(server.stop(), 0)


class Life(unittest.TestCase):
    def setUp(self):
        self.folder = tempfile.mkdtemp()
        self.fragment = os.path.join(self.folder, "crs.xml")
        shutil.copy(FRAGMENT, self.fragment)

    def tearDown(self):
        shutil.rmtree(self.folder)

    def offer(self, *entries):
        with open(FRAGMENT, encoding="utf-8") as file:
            text = file.read().replace("</CrsConfiguration>", "".join(entries) + "</CrsConfiguration>")
        with open(self.fragment, "w", encoding="utf-8") as file:
            file.write(text)

    def test_it_listens_at_the_loopback_address(self):
        server = Server()
        self.assertTrue(server.base.startswith("http://127.0.0.1:"), server.base)
        self.assertEqual(server.stop(signal.SIGINT), 0)

    def test_the_crs_are_read_again_while_requests_run(self):
        server = Server("--crs", self.fragment, "--threads", "4")
        ended, failures, counted = threading.Event(), [], [0]

        def ask():
            while not ended.is_set():
                status, _, text = server.wfs(typeNames="places", srsName="EPSG:25832", bbox="5,45,15,55,CRS:84")
                counted[0] += 1
                if status != 200 or text.count("<gml:Point ") != 7:
                    failures.append((status, text))

        threads = [threading.Thread(target=ask) for _ in range(4)]
        for thread in threads:
            thread.start()
        name = {"typeNames": "places", "srsName": "EPSG:31467"}
        for round_number in range(10):
            offered = round_number % 2 == 0
            self.offer(*(["<CRS numberOfDecimalPlaces='1'>31467</CRS>"] if offered else []))
            server.process.send_signal(signal.SIGHUP)
            self.assertEqual(server.process.stdout.readline(), "read the CRS again\n")
            self.assertEqual(server.wfs(**name)[0], 200 if offered else 400)
        ended.set()
        for thread in threads:
            thread.join()
        self.assertEqual(failures, [])
        self.assertGreater(counted[0], 20)
        self.assertEqual(server.stop(), 0)

    def test_a_bad_fragment_leaves_the_crs_as_they_are(self):
        server = Server("--crs", self.fragment)
        for text in ("<CrsConfiguration>", "<CrsConfiguration><CRS>4326</CRS></CrsConfiguration>",
                     "<CrsConfiguration><CRS>CRS:84</CRS></CrsConfiguration>",
                     f'<CrsConfiguration><CRS mapToEpsgCode="4326" axisOrder="EN">{URL}OGC/1.3/CRS84</CRS></CrsConfiguration>',
                     "<CrsConfiguration><CRS>99999</CRS></CrsConfiguration>"):
            with open(self.fragment, "w", encoding="utf-8") as file:
                file.write(text)
            server.process.send_signal(signal.SIGHUP)
            self.assertTrue(server.process.stdout.readline().startswith("kept the CRS: "), text)
            self.assertEqual(server.wfs(typeNames="places", srsName="EPSG:25832")[0], 200)
        os.remove(self.fragment)
        server.process.send_signal(signal.SIGHUP)
        self.assertTrue(server.process.stdout.readline().startswith("kept the CRS: "))
        self.assertEqual(server.stop(), 0)

    def test_it_does_not_start_without_its_files(self):
        for arguments in (["--data", "/no/such.gpkg"], ["--crs", "/no/such.xml"], ["--proj-dir", "/no/such"],
                          ["--port", "70000"]):
            ended = subprocess.run([PROGRAM, "--port", "0", *arguments], capture_output=True, text=True, timeout=20)
            self.assertNotEqual(ended.returncode, 0)
            self.assertTrue(ended.stderr, arguments)

    @contextlib.contextmanager
    def changed_data(self):
        """The path of a copy of the data, and a connection that may change its geometries."""
        data = os.path.join(self.folder, "changed.gpkg")
        shutil.copy(DATA, data)
        with contextlib.closing(sqlite3.connect(data)) as file:
            for (name,) in file.execute("SELECT name FROM sqlite_master WHERE type = 'trigger'").fetchall():
                file.execute(f'DROP TRIGGER "{name}"')
            yield data, file
            file.commit()

    def test_an_arc_has_no_form_in_geojson(self):
        with self.changed_data() as (data, file):
            x, y = STORED[1]
            arc = struct.pack("<BII6d", 1, 8, 3, x, y, x + 1000, y + 1000, x + 2000, y)
            file.execute("UPDATE places SET geom = ? WHERE fid = 1", (b"GP\x00\x01" + struct.pack("<i", 3034) + arc,))
        server = Server("--data", data)
        first = server.json("/collections/places/items")["features"][0]
        self.assertEqual((first["id"], first["geometry"]), (1, None))
        status, _, text = server.wfs(typeNames="places")
        self.assertEqual((status, text.count("<gml:ArcString")), (200, 1))
        self.assertEqual(server.stop(), 0)

    def test_a_box_across_the_antimeridian_reads_a_layer_in_degrees(self):
        with self.changed_data() as (data, file):
            for table in ("gpkg_contents", "gpkg_geometry_columns"):
                file.execute(f"UPDATE {table} SET srs_id = 4326 WHERE table_name = 'places'")
            file.execute("UPDATE gpkg_contents SET min_x = -180, min_y = 50, max_x = 180, max_y = 50")
            for fid in STORED:
                x = {1: 175, 2: -175, 3: -1e-12}.get(fid, 10)
                file.execute("UPDATE places SET geom = ? WHERE fid = ?",
                             (b"GP\x00\x01" + struct.pack("<iBIdd", 4326, 1, 1, x, 50), fid))
                file.execute("UPDATE rtree_places_geom SET minx = ?, maxx = ?, miny = 50, maxy = 50 WHERE id = ?",
                             (x, x, fid))
        server = Server("--data", data)
        for box, expected in (("170,40,-170,60", [1, 2]), ("170,40,180,60", [1]),
                              ("170,40,20,60", sorted(STORED))):
            found = json_points(server.json("/collections/places/items", limit=1000, bbox=box))
            self.assertEqual(sorted(found), expected, box)
        self.assertEqual(str(found[3]), "(0.0, 50.0)")  # not -0.0
        self.assertEqual(server.stop(), 0)

    def test_heights_are_carried_along(self):
        with self.changed_data() as (data, file):
            file.execute("UPDATE gpkg_geometry_columns SET z = 1 WHERE table_name = 'places'")
            for fid, (x, y) in STORED.items():
                blob = b"GP\x00\x01" + struct.pack("<i", 3034) + struct.pack("<BIddd", 1, 1001, x, y, fid * 1.5)
                file.execute("UPDATE places SET geom = ? WHERE fid = ?", (blob, fid))
        server = Server("--data", data)
        expected = cs2cs("EPSG:25832", STORED)
        for name, dimension in (("urn:ogc:def:crs,crs:EPSG::25832,crs:EPSG::5783", 3), ("EPSG:25832", 2)):
            text = server.wfs(typeNames="places", srsName=name)[2]
            points, names = gml_points("2.0.0", text)
            self.assertEqual(names, {name})
            self.assertEqual('srsDimension="3"' in text, dimension == 3)
            for fid, point in points.items():
                self.assertEqual(len(point), dimension)
                self.assertLess(abs(point[0] - expected[fid][0]), TOLERANCE_IN_METRES)
                if dimension == 3:
                    self.assertLess(abs(point[2] - fid * 1.5), TOLERANCE_IN_METRES)
        self.assertEqual(server.stop(), 0)


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    PROGRAM = os.path.abspath(sys.argv.pop(1))
    unittest.main()
