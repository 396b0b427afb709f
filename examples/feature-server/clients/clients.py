"""Real clients read the feature server's layers; what they hand on is compared with what GDAL computes itself.

    clients.py [unittest options]

Each reading prints one row: client, version, name of the CRS, order that the client hands on, layer, points, largest
difference from the reference.

What each client hands on follows from its documentation:

- GDAL's WFS driver presents coordinates in traditional order ("INVERT_AXIS_ORDER_IF_LAT_LONG" is YES). It takes a
  document's coordinates to be in the registry's order under a URN or http URL, and in traditional order under
  "EPSG:n" and "epsg.xml#n" ("CONSIDER_EPSG_AS_URN" is AUTO), in every version of WFS.
- GDAL's OAPIF driver asks for no CRS until version 3.6, and is given CRS84. Parameters of the connection's URL, such as
  "crs", are sent with each request; it then presents coordinates in the document's order, since it takes them to be
  CRS84. Later versions have the open option "CRS", ask for the storage CRS without it, and present coordinates in
  traditional order. They take the URL of EPSG:4326 for CRS84, and do not know the URL of a compound CRS.
- OWSLib hands on the document: the order is the server's. It exchanges the axes of a box for URNs itself.
- The server's order is the registry's under URN and http URL. Under "EPSG:n" and "epsg.xml#n" easting or longitude comes
  first in WFS. CRS84 has longitude first.
"""

import json
import logging
import subprocess
import unittest
from collections import namedtuple
from urllib.parse import quote

from osgeo import gdal
from owslib.ogcapi.features import Features
from owslib.util import openURL
from owslib.wfs import WebFeatureService

import answers
import reference
from service import GEOPACKAGE, SHIPPED_FRAGMENT, Service

gdal.UseExceptions()
logging.getLogger("owslib").setLevel(logging.ERROR)

TRADITIONAL, REGISTRY = "traditional", "registry"
LIMIT = 10000
BOX = (-5.0, 50.0, 9.0, 55.0)  # west, south, east and north in degrees

GDAL_NAMES_CRS = "name='CRS'" in gdal.GetDriverByName("OAPIF").GetMetadataItem("DMD_OPENOPTIONLIST")

Case = namedtuple("Case", "definition urn short url gml")


def epsg(code):
    return Case(f"EPSG:{code}", f"urn:ogc:def:crs:EPSG::{code}", f"EPSG:{code}",
                f"http://www.opengis.net/def/crs/EPSG/0/{code}", f"http://www.opengis.net/gml/srs/epsg.xml#{code}")


SIMPLE = [epsg(code) for code in (4326, 25832, 3857, 3035, 2154, 27700)]
COMPOUND = Case("EPSG:25832", "urn:ogc:def:crs,crs:EPSG::25832,crs:EPSG::5783", "EPSG:25832*EPSG:5783",
                "http://www.opengis.net/def/crs,crs/EPSG/0/25832,crs/EPSG/0/5783", None)
LONGITUDE_FIRST = Case(reference.CRS84, "urn:ogc:def:crs:OGC:1.3:CRS84", "CRS:84",
                       "http://www.opengis.net/def/crs/OGC/1.3/CRS84", None)


def gdal_wfs(service, layer, version, name):
    """Reads a layer through GDAL's WFS driver; returns its CRS and its features."""
    url = f"WFS:{service.wfs}?VERSION={version}&SRSNAME={quote(name, safe=':/,*')}"
    source = gdal.OpenEx(url, gdal.OF_VECTOR)
    found = layer_of(source, layer)
    return found.GetSpatialRef(), [reference.points_of(feature.GetGeometryRef()) for feature in found]


def gdal_oapif_source(service, url=None):
    """Opens the collections through GDAL's OAPIF driver, in another CRS than its default one if a URL is given."""
    root = f"OAPIF:{service.ogcapi}"
    if url and GDAL_NAMES_CRS:
        return gdal.OpenEx(root, gdal.OF_VECTOR, open_options=["CRS=" + url])
    return gdal.OpenEx(root + (f"?crs={quote(url)}" if url else ""), gdal.OF_VECTOR)


def gdal_oapif(service, layer, url=None):
    source = gdal_oapif_source(service, url)
    found = layer_of(source, layer)
    return [reference.points_of(feature.GetGeometryRef()) for feature in found]


def ogr2ogr(service, layer, version, name):
    """Reads a layer by the program ogr2ogr into GeoJSON."""
    source = f"WFS:{service.wfs}?VERSION={version}&SRSNAME={quote(name, safe=':/,*')}"
    typename = type_name(service, layer, version)
    text = subprocess.run(
        ["ogr2ogr", "-f", "GeoJSON", "-lco", "RFC7946=NO", "-lco", "COORDINATE_PRECISION=12", "/vsistdout/", source,
         typename], check=True, capture_output=True).stdout
    return answers.features_of_json(text)


def owslib_wfs110(service, layer, name):
    client = WebFeatureService(service.wfs, version="1.1.0")
    return answers.features_of_gml(client.getfeature(typename=[typename_of(client, layer)], srsname=name).read())


def owslib_wfs200(service, layer, name):
    """OWSLib 0.27 has no parameter for the CRS in WFS 2.0: it is appended to the URL that OWSLib writes."""
    client = WebFeatureService(service.wfs, version="2.0.0")
    url = client.getGETGetFeatureRequest([typename_of(client, layer)])
    return answers.features_of_gml(openURL(url + "&srsName=" + quote(name), None, "Get").read())


def owslib_ogcapi(service, layer, url=None):
    parameters = {"crs": url} if url else {}
    document = Features(service.ogcapi).collection_items(layer, limit=LIMIT, **parameters)
    return answers.features_of_json(json.dumps(document))


def layer_of(source, name):
    layers = (source.GetLayer(i) for i in range(source.GetLayerCount()))
    return next(layer for layer in layers if local_name(layer.GetName()) == name)


def local_name(name):
    return name.rsplit(":", 1)[-1]


def typename_of(client, layer):
    return next(name for name in client.contents if local_name(name) == layer)


def type_name(service, layer, version):
    return typename_of(WebFeatureService(service.wfs, version=version), layer)


class ClientTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.service = Service()
        cls.layers = {name: reference.Layer(GEOPACKAGE, name) for name in ("countries", "places", "rivers")}

    @classmethod
    def tearDownClass(cls):
        cls.service.__exit__()

    def check(self, client, name, definition, order, found, layer="places"):
        """Compares features in an order with the reference and prints the row."""
        expected = self.layers[layer].in_crs(definition)
        if order == REGISTRY and reference.is_north_first(definition):
            expected = reference.exchanged(expected)
        with self.subTest(client=client, name=name, layer=layer):
            difference = reference.largest_difference(expected, found)
            metres = difference / reference.bound(definition, 1.0)
            points = sum(len(feature) for feature in found)
            print(f"| {client} | `{name}` | {order} | {layer} | {points} | {metres * 1000:.3f} mm |", flush=True)
            self.assertLessEqual(difference, reference.bound(definition))


class Reference(ClientTest):
    def test_is_what_gdal_does_by_default_where_the_shift_is_valid(self):
        """Without ballpark operations GDAL shifts the datum of EPSG:27700 everywhere, by default only in its area."""
        area = (-9.0, 49.75, 2.01, 61.01)  # the registry's area of use of EPSG:27700
        countries = self.layers["countries"]
        names = ((reference.CRS84, False), ("EPSG:27700", False), ("EPSG:27700", True))
        points = zip(*(reference.single_points(countries.in_crs(name, ballpark)) for name, ballpark in names))
        inside = [(strict, default) for point, strict, default in points if reference.numbers_inside([point], area)]
        self.assertGreater(len(inside), 100)
        strict, default = zip(*inside)
        self.assertLessEqual(reference.largest_difference(strict, default), reference.MILLIMETRE)

    def test_tells_exchanged_axes_apart(self):
        places = self.layers["places"].in_crs("EPSG:25832")
        self.assertGreater(reference.largest_difference(places, reference.exchanged(places)), 1e6)


class Configuration(ClientTest):
    def test_as_shipped_rounds_to_its_decimal_places(self):
        """Half a unit of the last place: 8 places of a degree are 0.6 mm, 3 of a metre 0.5 mm."""
        with Service(fragment=SHIPPED_FRAGMENT) as service:
            for case in SIMPLE + [LONGITUDE_FIRST, COMPOUND]:
                _, found = gdal_wfs(service, "places", "2.0.0", case.urn)
                expected = self.layers["places"].in_crs(case.definition)
                with self.subTest(name=case.urn):
                    difference = reference.largest_difference(expected, found)
                    self.assertLessEqual(difference, reference.bound(case.definition, 0.001))


class GdalWfs(ClientTest):
    def read(self, version, name, definition, order, layer="places"):
        srs, found = gdal_wfs(self.service, layer, version, name)
        self.check(f"GDAL WFS {version}", name, definition, order, found, layer)
        with self.subTest(name=name, version=version):
            self.assertTrue(srs.IsSame(reference.crs(name), ["IGNORE_DATA_AXIS_TO_SRS_AXIS_MAPPING=YES"]))

    def test_reads_urns_in_traditional_order(self):
        for version in ("1.1.0", "2.0.0"):
            for case in SIMPLE + [LONGITUDE_FIRST, COMPOUND]:
                self.read(version, case.urn, case.definition, TRADITIONAL)

    def test_reads_urls_in_traditional_order(self):
        for version in ("1.1.0", "2.0.0"):
            for case in SIMPLE:
                self.read(version, case.url, case.definition, TRADITIONAL)

    def test_reads_short_names_in_traditional_order(self):
        for version in ("1.1.0", "2.0.0"):
            for case in SIMPLE:
                self.read(version, case.short, case.definition, TRADITIONAL)

    def test_reads_lines_and_areas(self):
        for layer in ("countries", "rivers"):
            for case in (SIMPLE[0], SIMPLE[3], SIMPLE[5]):
                self.read("2.0.0", case.urn, case.definition, TRADITIONAL, layer=layer)

    def test_reads_by_ogr2ogr(self):
        for version, name in (("1.1.0", SIMPLE[0].urn), ("1.1.0", SIMPLE[0].short), ("2.0.0", SIMPLE[0].short),
                              ("2.0.0", SIMPLE[3].url)):
            definition = "EPSG:3035" if "3035" in name else "EPSG:4326"
            self.check(f"ogr2ogr WFS {version}", name, definition, TRADITIONAL,
                       ogr2ogr(self.service, "places", version, name))

    def test_filters_by_a_box(self):
        """GDAL writes the box as a filter, in the order of the name, and itself drops features that are outside."""
        expected, _ = self.layers["places"].in_box("EPSG:4326", BOX)
        for version, name in (("1.1.0", SIMPLE[0].urn), ("1.1.0", SIMPLE[0].short), ("2.0.0", SIMPLE[0].urn),
                              ("2.0.0", SIMPLE[0].short)):
            source = gdal.OpenEx(f"WFS:{self.service.wfs}?VERSION={version}&SRSNAME={name}", gdal.OF_VECTOR)
            layer = layer_of(source, "places")
            layer.SetSpatialFilterRect(*BOX)
            with self.subTest(version=version, name=name):
                self.assertEqual(len(expected), len(list(layer)))


class GdalOapif(ClientTest):
    def test_reads_its_default_crs(self):
        definition = "EPSG:3034" if GDAL_NAMES_CRS else reference.CRS84
        for layer in ("places", "countries", "rivers"):
            self.check("GDAL OAPIF", "(none)", definition, TRADITIONAL, gdal_oapif(self.service, layer), layer)

    def test_reads_another_crs(self):
        for case in SIMPLE + [LONGITUDE_FIRST]:
            self.check("GDAL OAPIF, CRS", case.url, case.definition, TRADITIONAL if GDAL_NAMES_CRS else REGISTRY,
                       gdal_oapif(self.service, "places", case.url))

    def test_reads_a_compound_crs_by_a_parameter_of_the_connection_alone(self):
        if GDAL_NAMES_CRS:
            with self.assertRaisesRegex(RuntimeError, "Invalid value for CRS"):
                gdal_oapif(self.service, "places", COMPOUND.url)
            return
        self.check("GDAL OAPIF, CRS", COMPOUND.url, COMPOUND.definition, REGISTRY,
                   gdal_oapif(self.service, "places", COMPOUND.url))

    def test_filters_by_a_box(self):
        expected, _ = self.layers["places"].in_box(reference.CRS84, BOX)
        source = gdal_oapif_source(self.service, LONGITUDE_FIRST.url)
        layer = layer_of(source, "places")
        layer.SetSpatialFilterRect(*BOX)
        self.assertEqual(len(expected), len(list(layer)))


class OwsLib(ClientTest):
    def test_reads_wfs_in_the_order_of_the_spelling(self):
        for case in SIMPLE + [LONGITUDE_FIRST, COMPOUND]:
            for name, order in ((case.urn, REGISTRY), (case.url, REGISTRY), (case.short, TRADITIONAL),
                                (case.gml, TRADITIONAL)):
                if name and name != LONGITUDE_FIRST.url:  # OWSLib takes the end of a URL to be a number in WFS 1.1
                    self.check("OWSLib WFS 1.1.0", name, case.definition, order,
                               owslib_wfs110(self.service, "places", name))
                if name:
                    self.check("OWSLib WFS 2.0.0", name, case.definition, order,
                               owslib_wfs200(self.service, "places", name))

    def test_reads_the_ogc_api(self):
        self.check("OWSLib OGC API", "(none)", reference.CRS84, TRADITIONAL, owslib_ogcapi(self.service, "places"))
        for case in SIMPLE + [LONGITUDE_FIRST, COMPOUND]:
            self.check("OWSLib OGC API, crs=", case.url, case.definition, REGISTRY,
                       owslib_ogcapi(self.service, "places", case.url))

    def test_finds_every_offered_crs_in_the_capabilities(self):
        for version in ("1.1.0", "2.0.0"):
            client = WebFeatureService(self.service.wfs, version=version)
            offered = {option.id for option in client.contents[typename_of(client, "places")].crsOptions}
            for case in SIMPLE + [LONGITUDE_FIRST, COMPOUND]:
                with self.subTest(version=version, name=case.urn):
                    self.assertIn(case.urn, offered)

    def test_filters_by_a_box(self):
        """The box is given with the longitude first; OWSLib exchanges it for a URN."""
        places = self.layers["places"]
        wanted, allowed = places.in_box("EPSG:4326", BOX)
        for version in ("1.1.0", "2.0.0"):
            client = WebFeatureService(self.service.wfs, version=version)
            document = client.getfeature(typename=[typename_of(client, "places")], bbox=BOX + (SIMPLE[0].urn,)).read()
            found = len(answers.features_of_gml(document))
            with self.subTest(version=version):
                self.assertGreaterEqual(found, len(wanted))
                self.assertLessEqual(found, len(allowed))


if __name__ == "__main__":
    unittest.main()
