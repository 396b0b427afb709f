"""The feature server answers from PostGIS as it does from the GeoPackage that was loaded into it.

    postgis.py [unittest options]

The database is a cluster of its own in a temporary folder, with a socket there and no port. PostgreSQL does not run as
root: for root its programs run as the user postgres or nobody.
"""

import glob
import json
import os
import pwd
import re
import shutil
import subprocess
import tempfile
import unittest
from functools import partial
from xml.etree import ElementTree

from osgeo import ogr

import answers
import points
import reference
from service import GEOPACKAGE, Service

LAYERS = ("countries", "places", "rivers")
WFS = {"2.0.0": ("typeNames", "count"), "1.1.0": ("typeName", "maxFeatures")}
ALL = 1000
NAMES = ("", "urn:ogc:def:crs:EPSG::4326", "EPSG:4326", "urn:ogc:def:crs:EPSG::3035", "EPSG:25832", "EPSG:3857")
URL = "http://www.opengis.net/def/crs/"
BUFFERS = "1MB"  # little, so that a quarter of it is less than the table of points

# What GDAL calls the CRS of a box, the box with easting or longitude first, and the box of a request.
BOXES = [
    (reference.CRS84, (5, 45, 15, 55), "5,45,15,55,urn:ogc:def:crs:OGC:1.3:CRS84"),
    ("EPSG:4326", (5, 45, 15, 55), "45,5,55,15,urn:ogc:def:crs:EPSG::4326"),
    ("EPSG:25832", (300000, 5000000, 900000, 6000000), "300000,5000000,900000,6000000,urn:ogc:def:crs:EPSG::25832"),
    ("EPSG:3034", (3500000, 1800000, 4700000, 2900000), "1800000,3500000,2900000,4700000,urn:ogc:def:crs:EPSG::3034"),
]


class Database:
    """A cluster with the layers of a GeoPackage; `end` removes it."""

    def __init__(self, geopackage):
        self.programs = folder_of_programs()
        self.user = user_of_server()
        self.folder = tempfile.mkdtemp(prefix="postgis-")
        shutil.chown(self.folder, self.user)
        self.connection = f"PG:host={self.folder} user=gis dbname=gis options='-c synchronize_seqscans=off'"
        try:
            self._run("initdb", "--username=gis", "--auth=trust", "--encoding=UTF8", "--locale=C", "--no-sync")
            self.start()
            self._run("createdb", "--host=" + self.folder, "--username=gis", "gis")
            self._run("psql", "--host=" + self.folder, "--username=gis", "--command=CREATE EXTENSION postgis", "gis")
            subprocess.run(["ogr2ogr", "-f", "PostgreSQL", self.connection, geopackage], check=True)
        except BaseException:
            self.end()
            raise

    def _run(self, program, *arguments):
        environment = {"PATH": os.environ["PATH"], "LC_ALL": "C", "PGDATA": os.path.join(self.folder, "data")}
        owner = pwd.getpwnam(self.user)
        identity = {"user": owner.pw_uid, "group": owner.pw_gid, "extra_groups": []} if os.geteuid() == 0 else {}
        # The server keeps its standard output open, so that a pipe would not end with pg_ctl.
        with tempfile.TemporaryFile() as output:
            ended = subprocess.run([os.path.join(self.programs, program), *arguments], env=environment, cwd=self.folder,
                                   stdin=subprocess.DEVNULL, stdout=output, stderr=output, check=False, **identity)
            output.seek(0)
            if ended.returncode != 0:
                raise RuntimeError(f"{program} ended with {ended.returncode}: {output.read().decode()}")

    def values(self, query):
        """The first column of the rows of a query."""
        source = ogr.Open(self.connection)
        rows = source.ExecuteSQL(query)
        found = [row.GetField(0) for row in rows]
        source.ReleaseResultSet(rows)
        return found

    def start(self):
        self._run("pg_ctl", "--wait", "--log=" + os.path.join(self.folder, "log"),
                  f"--options=-c listen_addresses='' -c unix_socket_directories='{self.folder}' -c fsync=off "
                  f"-c shared_buffers={BUFFERS}", "start")

    def stop(self):
        self._run("pg_ctl", "--mode=fast", "--wait", "stop")

    def end(self):
        if os.path.exists(os.path.join(self.folder, "data", "postmaster.pid")):
            self.stop()
        shutil.rmtree(self.folder)


def folder_of_programs():
    """The programs of a server are not in PATH. Of several versions this is the one of pg_config, or else the last."""
    folders = sorted(glob.glob("/usr/lib/postgresql/*/bin"), key=lambda path: int(path.split("/")[4]), reverse=True)
    if shutil.which("pg_config"):  # Debian's fails if no version has one of its own
        known = subprocess.run(["pg_config", "--bindir"], capture_output=True, text=True, check=False)
        folders = known.stdout.split() + folders
    for folder in folders:
        if os.path.exists(os.path.join(folder, "initdb")):
            return folder
    raise RuntimeError("PostgreSQL is missing: install postgresql and postgresql-postgis")


def user_of_server():
    users = {entry.pw_name for entry in pwd.getpwall()}
    if os.geteuid() != 0:
        return pwd.getpwuid(os.geteuid()).pw_name
    return "postgres" if "postgres" in users else "nobody"


def features_by_number(answer):
    """Each feature of an answer as text, by the number in its id."""
    if answer.is_json():
        document = json.loads(answer.body)
        features = [(str(feature["id"]), json.dumps(feature)) for feature in document.get("features", [document])]
    else:
        root = ElementTree.fromstring(answer.body)
        members = [feature for member in root if answers.local(member) in answers.MEMBERS for feature in member]
        features = [(id_of(feature), ElementTree.tostring(feature)) for feature in members]
    found = {int(name.split(".")[-1]): text for name, text in features}
    if len(found) != len(features):
        raise AssertionError("A feature is in the answer twice")
    return found


def id_of(feature):
    return next(value for name, value in feature.attrib.items() if name.endswith("}id"))


def matched(answer):
    root = ElementTree.fromstring(answer.body)
    return int(root.get("numberMatched") or root.get("numberOfFeatures"))


class PostGis(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.database = Database(GEOPACKAGE)
        cls.addClassCleanup(cls.database.end)
        cls.file = Service()
        cls.addClassCleanup(cls.file.__exit__)
        cls.service = Service(cls.database.connection)
        cls.addClassCleanup(cls.service.__exit__)
        cls.layers = {name: reference.Layer(GEOPACKAGE, name) for name in LAYERS}

    def both(self, path, **parameters):
        """The answers from the GeoPackage and from PostGIS, which must both be good."""
        found = [answers.ask(service.root + path, **parameters) for service in (self.file, self.service)]
        for answer in found:
            self.assertEqual((200, found[0].type), (answer.status, answer.type), answer.body)
        return found

    def both_wfs(self, version, request, layer="", **parameters):
        if layer:
            parameters[WFS[version][0]] = layer
        return self.both("/wfs", service="WFS", version=version, request=request, **parameters)

    def requests_of(self, layer):
        """Requests for all features of a layer, each of which may have more parameters."""
        for version in WFS:
            for name in NAMES:
                crs = {"srsName": name} if name else {}
                for parameters in (crs, {**crs, "outputFormat": "application/json"}):
                    yield partial(self.both_wfs, version, "GetFeature", layer, **parameters)

    def document(self, service, answer):
        """A document without what depends on the service. The tables have no titles, so the layers have their names.
        PostGIS writes an extent with 15 digits, so that the last decimal places of a box differ."""
        text = answer.body.decode().replace(service.root, "")
        source = ogr.Open(GEOPACKAGE)
        for name in LAYERS:
            text = text.replace(source.GetLayerByName(name).GetMetadataItem("IDENTIFIER"), name)
        return re.sub(r"-?[0-9]+[.][0-9]{9,}", lambda number: f"{float(number[0]):.8f}", text)

    def assert_same_documents(self, pair):
        file, database = pair
        self.assertEqual(self.document(self.file, file), self.document(self.service, database))


class Documents(PostGis):
    def test_of_wfs_are_the_same(self):
        for version in WFS:
            self.assert_same_documents(self.both_wfs(version, "GetCapabilities"))
            for layer in ("",) + LAYERS:
                self.assert_same_documents(self.both_wfs(version, "DescribeFeatureType", layer))

    def test_of_the_api_are_the_same(self):
        for path in ("/", "/conformance", "/api", "/crs", "/collections", *("/collections/" + name for name in LAYERS)):
            self.assert_same_documents(self.both(path))


class Features(PostGis):
    def test_of_wfs_are_the_same_in_every_crs(self):
        for layer in LAYERS:
            for ask in self.requests_of(layer):
                file, database = map(features_by_number, ask())
                self.assertEqual(len(self.layers[layer].features), len(file))
                self.assertEqual(file, database)

    def test_of_the_api_are_the_same_in_every_crs(self):
        for layer in LAYERS:
            for name in ("OGC/1.3/CRS84", "EPSG/0/4326", "EPSG/0/25832", "EPSG/0/3034"):
                file, database = map(features_by_number, self.both(f"/collections/{layer}/items", limit=ALL,
                                                                   crs=URL + name))
                self.assertEqual(len(self.layers[layer].features), len(file))
                self.assertEqual(file, database)

    def test_are_found_by_their_id(self):
        for layer in LAYERS:
            for number in (1, 17, len(self.layers[layer].features)):
                file, database = map(features_by_number, self.both(f"/collections/{layer}/items/{number}"))
                self.assertEqual([number], list(file))
                self.assertEqual(re.sub("127.0.0.1:[0-9]+", "", file[number]),
                                 re.sub("127.0.0.1:[0-9]+", "", database[number]))
            answer = answers.ask(f"{self.service.root}/collections/{layer}/items/1000")
            self.assertEqual((404, "NotFound"), (answer.status, answer.exception()))

    def test_keep_their_letters(self):
        names = [json.loads(text)["properties"]["name"] for text in features_by_number(
            self.both("/collections/places/items", limit=ALL)[1]).values()]
        self.assertIn("Chișinău", names)


class Boxes(PostGis):
    def touching(self, layer, definition, box):
        """Numbers of the features whose own box overlaps a box."""
        west, south, east, north = box
        boxes = [tuple(zip(*feature)) for feature in self.layers[layer].in_crs(definition)]
        return {i + 1 for i, (x, y) in enumerate(boxes)
                if min(x) <= east and max(x) >= west and min(y) <= north and max(y) >= south}

    def test_find_the_same(self):
        """PostGIS compares boxes, the GeoPackage the features themselves: PostGIS finds what has a box that overlaps,
        and may find more than the GeoPackage."""
        for layer in LAYERS:
            for definition, box, text in BOXES:
                touching = self.touching(layer, definition, box)
                self.assertTrue(0 < len(touching) < len(self.layers[layer].features))
                for ask in self.requests_of(layer):
                    file, database = map(features_by_number, ask(bbox=text))
                    with self.subTest(layer=layer, bbox=text):
                        self.assertLessEqual(set(file), set(database))
                        self.assertLessEqual(set(database), touching)
                        self.assertEqual(file, {number: database[number] for number in file})
                        if layer == "places":
                            self.assertEqual(touching, set(file))

    def test_have_as_many_hits_as_features(self):
        for version in WFS:
            for layer in LAYERS:
                for parameters in ({}, *({"bbox": text} for _, _, text in BOXES)):
                    _, found = self.both_wfs(version, "GetFeature", layer, **parameters)
                    _, hits = self.both_wfs(version, "GetFeature", layer, resultType="hits", **parameters)
                    self.assertEqual(len(features_by_number(found)), matched(hits))
                    self.assertEqual({}, features_by_number(hits))

    def test_that_hold_nothing_find_nothing(self):
        for version in WFS:
            _, found = self.both_wfs(version, "GetFeature", "places", bbox="0,0,1,1,urn:ogc:def:crs:OGC:1.3:CRS84")
            self.assertEqual({}, features_by_number(found))


class Pages(PostGis):
    def test_of_wfs_hold_each_feature_once(self):
        for version in WFS:
            for parameters in ({}, {"bbox": BOXES[0][2]}, {"bbox": BOXES[3][2]}):
                _, whole = self.both_wfs(version, "GetFeature", "places", **parameters)
                expected = features_by_number(whole)
                found = [number for start in range(0, len(expected) + 1, 4) for number in features_by_number(
                    self.both_wfs(version, "GetFeature", "places", startIndex=start, **{WFS[version][1]: 4},
                                  **parameters)[1])]
                self.assertEqual(list(expected), found)

    def test_of_the_api_lead_to_each_feature_once(self):
        for parameters in ({}, {"bbox": "5,45,15,55"}):
            expected = features_by_number(self.both("/collections/rivers/items", limit=ALL, **parameters)[1])
            answer = self.both("/collections/rivers/items", limit=7, **parameters)[1]
            found = list(features_by_number(answer))
            while following := [link["href"] for link in json.loads(answer.body)["links"] if link["rel"] == "next"]:
                answer = answers.ask(following[0])
                found += features_by_number(answer)
            self.assertEqual(list(expected), found)


class LargeTable(unittest.TestCase):
    """The database may begin to read a table of more than a quarter of its buffers where another reader is."""

    @classmethod
    def setUpClass(cls):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "points.gpkg")
            points.make(path)
            cls.database = Database(path)
        cls.addClassCleanup(cls.database.end)
        cls.service = Service(cls.database.connection)
        cls.addClassCleanup(cls.service.__exit__)

    def test_has_each_feature_on_one_page(self):
        found = [number for start in range(0, points.COUNT, ALL) for number in features_by_number(
            answers.ask(f"{self.service.root}/collections/points/items", limit=ALL, offset=start))]
        self.assertEqual((points.COUNT, points.COUNT), (len(found), len(set(found))))


class Connections(PostGis):
    def test_leave_no_transaction_open(self):
        """An open transaction would keep the database from removing old rows."""
        for parameters in ({}, {"count": 3}, {"resultType": "hits"}, {"bbox": BOXES[0][2], "count": 1}):
            self.both_wfs("2.0.0", "GetFeature", "countries", **parameters)
        states = self.database.values("SELECT state FROM pg_stat_activity WHERE datname = 'gis' "
                                      "AND pid <> pg_backend_pid()")
        self.assertEqual({"idle"}, set(states))


class Failures(PostGis):
    def test_of_connections_end_with_new_ones(self):
        """A request may fail, but none may be answered without the features that there are."""
        url = f"{self.service.root}/collections/places/items"
        for _ in range(40):
            answers.ask(url, limit=5)
        self.database.stop()
        self.database.start()
        for path in ["?limit=5", "/17", "?bbox=5,45,15,55&limit=5"] * 60:
            hits = self.service.wfs + "?service=WFS&version=2.0.0&request=GetFeature&typeNames=places&resultType=hits"
            answer = answers.ask(hits)
            self.assertTrue(answer.status == 500 or b'numberMatched="52"' in answer.body, answer)
            answer = answers.ask(url + path)
            self.assertIn(answer.status, (200, 500))
            if answer.status == 200:
                self.assertEqual(1 if "/17" in path else 5, len(features_by_number(answer)))
        self.assertEqual(200, answer.status)

    def test_do_not_show_the_connection_to_clients(self):
        with Service(self.database.connection + " password=secret") as service:
            self.database.stop()
            try:
                answer = answers.ask(service.root + "/collections/places/items")
            finally:
                self.database.start()
        self.assertEqual(500, answer.status)
        for secret in ("secret", self.database.folder):
            self.assertNotIn(secret, answer.body.decode())


if __name__ == "__main__":
    unittest.main()
