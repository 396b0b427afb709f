"""QGIS's WFS and OAPIF providers read the feature server's layers without a display; one row for each reading.

    qgis_client.py [unittest options]

QGIS presents coordinates with easting or longitude first. The CRS of a WFS layer is named by its identifier; in WFS 1.1
and 2.0 QGIS asks for the URN of an EPSG code unless the capabilities advertise "EPSG:n". It cannot name a compound CRS
by its parts. The OAPIF provider of QGIS 3.22 asks for CRS84 alone, which it calls EPSG:4326, and that of QGIS 3.40 for
the storage CRS.
"""

import os
import sys
import tempfile
import unittest

PROFILE = tempfile.TemporaryDirectory(prefix="qgis-")
os.environ.setdefault("QT_QPA_PLATFORM", "offscreen")
os.environ.setdefault("QGIS_CUSTOM_CONFIG_PATH", PROFILE.name)

# pylint: disable=wrong-import-position
from qgis.core import QgsApplication, QgsDataSourceUri, QgsFeatureRequest, QgsRectangle, QgsVectorLayer  # noqa: E402

import reference  # noqa: E402
from service import GEOPACKAGE, Service  # noqa: E402

PREFIX = "fs:"
CODES = (4326, 25832, 3857, 3035, 2154, 27700)


def read(layer, request=None):
    if not layer.isValid():
        raise RuntimeError("QGIS refuses the layer " + layer.source())
    features = layer.getFeatures(request or QgsFeatureRequest())
    return [[(point.x(), point.y()) for point in feature.geometry().vertices()] for feature in features]


def qgis_wfs(service, layer, version, authid):
    uri = QgsDataSourceUri()
    uri.setParam("url", service.wfs)
    uri.setParam("typename", PREFIX + layer)
    uri.setParam("version", version)
    uri.setParam("srsname", authid)
    uri.setParam("restrictToRequestBBOX", "1")
    return QgsVectorLayer(uri.uri(False), layer, "WFS")


def qgis_oapif(service, layer):
    uri = QgsDataSourceUri()
    uri.setParam("url", service.ogcapi)
    uri.setParam("typename", layer)
    return QgsVectorLayer(uri.uri(False), layer, "OAPIF")


class Qgis(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.service = Service()
        cls.layers = {name: reference.Layer(GEOPACKAGE, name) for name in ("places", "rivers")}

    @classmethod
    def tearDownClass(cls):
        cls.service.__exit__()

    def check(self, client, name, definition, layer, found):
        """QGIS may return features in another order than that of their arrival: both lists are sorted."""
        expected = sorted(self.layers[layer].in_crs(definition))
        with self.subTest(client=client, name=name):
            difference = reference.largest_difference(expected, sorted(found))
            points = sum(len(feature) for feature in found)
            metres = difference / reference.bound(definition, 1.0)
            print(f"| {client} | `{name}` | traditional | {layer} | {points} | {metres * 1000:.3f} mm |", flush=True)
            self.assertLessEqual(difference, reference.bound(definition))

    def test_wfs(self):
        for version in ("1.1.0", "2.0.0"):
            for code in CODES:
                layer = qgis_wfs(self.service, "places", version, f"EPSG:{code}")
                self.check(f"QGIS WFS {version}", f"EPSG:{code}", f"EPSG:{code}", "places", read(layer))
                self.assertEqual(f"EPSG:{code}", layer.crs().authid())

    def test_wfs_lines(self):
        layer = qgis_wfs(self.service, "rivers", "2.0.0", "EPSG:3035")
        self.check("QGIS WFS 2.0.0", "EPSG:3035", "EPSG:3035", "rivers", read(layer))

    def test_wfs_crs84(self):
        layer = qgis_wfs(self.service, "places", "2.0.0", "OGC:CRS84")
        self.check("QGIS WFS 2.0.0", "OGC:CRS84", reference.CRS84, "places", read(layer))

    def test_box(self):
        """QGIS sends the box of its map and drops features that are outside."""
        box = (-5.0, 50.0, 9.0, 55.0)
        expected, _ = self.layers["places"].in_box("EPSG:4326", box)
        request = QgsFeatureRequest(QgsRectangle(*box))
        oapif = qgis_oapif(self.service, "places")
        oapif_box = (3500000, 2000000, 4500000, 3000000) if oapif.crs().authid() == "EPSG:3034" else box
        oapif_expected, _ = self.layers["places"].in_box(oapif.crs().authid(), oapif_box)
        for version in ("1.1.0", "2.0.0"):
            layer = qgis_wfs(self.service, "places", version, "EPSG:4326")
            self.assertEqual(len(expected), len(read(layer, request)))
        self.assertGreater(len(oapif_expected), 0)
        self.assertEqual(len(oapif_expected), len(read(oapif, QgsFeatureRequest(QgsRectangle(*oapif_box)))))

    def test_oapif(self):
        for name in ("places", "rivers"):
            layer = qgis_oapif(self.service, name)
            self.assertIn(layer.crs().authid(), ("EPSG:4326", "EPSG:3034"))
            self.check("QGIS OAPIF", "(none)", layer.crs().authid(), name, read(layer))


if __name__ == "__main__":
    application = QgsApplication([], False)
    application.initQgis()
    result = unittest.main(exit=False).result
    application.exitQgis()
    sys.exit(not result.wasSuccessful())
