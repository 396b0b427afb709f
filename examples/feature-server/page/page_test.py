#!/usr/bin/python3
"""usage: page_test.py PICTURES GEOPACKAGE SERVER [ARGUMENT...]

Opens the page of a feature server in headless Chromium, chooses CRS, and checks where places are: in the coordinates
that the map holds, in the drawn picture and under the pointer. GDAL computes the coordinates from the GeoPackage that
the server reads. The command SERVER must print "listening on http://..." first. Screenshots are kept in PICTURES.

Needs Debian's chromium-driver, python3-selenium and python3-gdal.
"""

import base64
import hashlib
import os
import re
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

import numpy
from osgeo import gdal, osr
from selenium import webdriver
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.support.wait import WebDriverWait

PAGE = Path(__file__).resolve().parent
STATIC = PAGE.parent / "static"
WIDE, NARROW = (1280, 800), (400, 800)
SECONDS = 30

# A CRS, places within its area of use, and the accuracy of its datum shift in its own unit, at least the rounding of
# the server.
PLACES = [
    ("EPSG:4326", ["Berlin", "Madrid", "Athens"], 1e-6),
    ("EPSG:25832", ["Oslo", "Vaduz"], 0.02),
    ("EPSG:3857", ["Berlin", "Dublin", "Athens"], 0.2),
    ("EPSG:3034", ["Berlin", "Madrid", "Athens"], 0.02),
    ("EPSG:3035", ["Berlin", "Madrid", "Athens"], 0.02),
    ("EPSG:2154", ["Paris", "Andorra"], 0.02),
    ("EPSG:27700", ["London"], 5),
]

gdal.UseExceptions()
osr.UseExceptions()


class Truth:
    """Coordinates of places by GDAL, in the CRS's own axis order and with easting or longitude first."""

    def __init__(self, geopackage):
        source = gdal.OpenEx(geopackage, gdal.OF_VECTOR | gdal.OF_READONLY)
        layer = source.GetLayerByName("places")
        self.stored = layer.GetSpatialRef()
        self.stored.SetAxisMappingStrategy(osr.OAMS_TRADITIONAL_GIS_ORDER)
        self.points = {f.GetField("name"): f.GetGeometryRef().GetPoint_2D() for f in layer}
        self.counts = [source.GetLayer(i).GetFeatureCount() for i in range(source.GetLayerCount())]

    def at(self, place, crs, strategy):
        target = osr.SpatialReference()
        target.SetFromUserInput(crs)
        target.SetAxisMappingStrategy(strategy)
        return osr.CoordinateTransformation(self.stored, target).TransformPoint(*self.points[place])[:2]

    def on_map(self, place, crs):
        return self.at(place, crs, osr.OAMS_TRADITIONAL_GIS_ORDER)

    def north_first(self, crs):
        system = osr.SpatialReference()
        system.SetFromUserInput(crs)
        return system.GetAxisOrientation(None, 0) == osr.OAO_North

    def in_order(self, place, crs):
        return self.at(place, crs, osr.OAMS_AUTHORITY_COMPLIANT)


def start_browser(host):
    options = webdriver.ChromeOptions()
    options.binary_location = shutil.which("chromium")
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    arguments = ["--headless=new", "--disable-gpu", "--hide-scrollbars"]
    arguments += [f"--host-resolver-rules=MAP * ~NOTFOUND, EXCLUDE {host}"]
    for argument in arguments + ["--no-sandbox"] * (os.geteuid() == 0):
        options.add_argument(argument)
    return webdriver.Chrome(service=Service(shutil.which("chromedriver")), options=options)


def picture(png):
    """The picture as height x width x 3 numbers."""
    gdal.FileFromMemBuffer("/vsimem/screen.png", png)
    bands = gdal.Open("/vsimem/screen.png").ReadAsArray()
    return numpy.moveaxis(bands[:3], 0, 2).astype(int)


def numbers(text):
    parts = re.findall("[\u22120-9\u202f.]+", text)
    return [float(part.replace("\u2212", "-").replace("\u202f", "")) for part in parts]


def luminance(colour):
    parts = [int(part) / 255 for part in re.findall(r"\d+", colour)[:3]]
    linear = [part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4 for part in parts]
    return 0.2126 * linear[0] + 0.7152 * linear[1] + 0.0722 * linear[2]


def contrast(one, other):
    darker, lighter = sorted([luminance(one), luminance(other)])
    return (lighter + 0.05) / (darker + 0.05)


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.pictures = Path(ARGUMENTS[0])
        cls.pictures.mkdir(parents=True, exist_ok=True)
        cls.truth = Truth(ARGUMENTS[1])
        cls.server = subprocess.Popen(ARGUMENTS[2:], stdout=subprocess.PIPE, text=True)
        cls.addClassCleanup(cls.server.communicate)
        cls.addClassCleanup(cls.server.terminate)
        cls.address = re.search(r"http://\S+", cls.server.stdout.readline())[0]
        cls.browser = start_browser(re.search("//([^:/]+)", cls.address)[1])
        cls.addClassCleanup(cls.browser.quit)

    # What a user does

    def open(self, size=WIDE, scheme="light", crs=""):
        width, height = size
        screen = {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False}
        self.command("Emulation.setDeviceMetricsOverride", **screen)
        self.command("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])
        self.browser.get("about:blank")
        self.browser.get(f"{self.address}#{crs}")
        self.wait()

    def choose(self, crs):
        radio = self.browser.find_element(By.CSS_SELECTOR, f'input[value="{crs}"]')
        self.script("arguments[0].scrollIntoView({block: 'center'})", radio)
        radio.find_element(By.XPATH, "..").click()
        self.wait(crs)

    def wait(self, crs=""):
        drawn = "return map.ariaBusy === 'false' && code.textContent.endsWith(arguments[0])"
        WebDriverWait(self.browser, SECONDS, 0.05).until(lambda browser: browser.execute_script(drawn, crs))

    def toggle(self, layer):
        """Shows or hides a layer and waits until the map is drawn."""
        self.browser.execute_async_script(
            """const [id, done] = arguments;
               featureMap.once("rendercomplete", () => done());
               document.getElementById(id).click();""", f"layer-{layer}")

    def point_at(self, x, y):
        self.command("Input.dispatchMouseEvent", type="mouseMoved", x=x, y=y)

    # What a user sees

    def command(self, name, **parameters):
        return self.browser.execute_cdp_cmd(name, parameters)

    def script(self, text, *arguments):
        return self.browser.execute_script(text, *arguments)

    def text(self, element):
        return self.browser.find_element(By.ID, element).text

    def screen(self):
        return picture(base64.b64decode(self.command("Page.captureScreenshot")["data"]))

    def keep(self, name):
        longer = self.script("return document.documentElement.scrollHeight > innerHeight")
        data = self.command("Page.captureScreenshot", captureBeyondViewport=longer)["data"]
        (self.pictures / f"{name}.png").write_bytes(base64.b64decode(data))

    def drawn_at(self, place):
        """The place's coordinates in the map."""
        return self.script(
            """for (const layer of featureMap.getAllLayers())
                   for (const feature of layer.getSource()?.getFeatures() ?? [])
                       if (feature.get("name") === arguments[0] && feature.getGeometry().getType() === "Point")
                           return feature.getGeometry().getCoordinates();""", place)

    def on_screen(self, point):
        """The pixel of map coordinates by arithmetic, from the upper left corner of the window."""
        centre, resolution, middle = self.script(
            """const view = featureMap.getView(), box = map.getBoundingClientRect();
               const middle = [box.left + map.clientWidth / 2, box.top + map.clientTop + map.clientHeight / 2];
               return [view.getCenter(), view.getResolution(), middle];""")
        return middle[0] + (point[0] - centre[0]) / resolution, middle[1] - (point[1] - centre[1]) / resolution

    def pixel_of_map(self, point):
        return self.script(
            """const box = map.getBoundingClientRect(), [x, y] = featureMap.getPixelFromCoordinate(arguments[0]);
               return [box.left + x, box.top + map.clientTop + y];""", point)

    def mark_near(self, x, y):
        """The middle of what the layer of places draws in the colour of its marks near a pixel."""
        colour = self.script("return getComputedStyle(document.documentElement).getPropertyValue('--place')")
        mark = numpy.array([int(colour.strip()[i:i + 2], 16) for i in (1, 3, 5)])
        with_places = self.screen()
        self.toggle("places")
        without = self.screen()
        self.toggle("places")
        left, top = round(x) - 8, round(y) - 8
        window = numpy.s_[top:top + 17, left:left + 17]
        in_colour = abs(with_places[window] - mark).sum(axis=2) < 40
        rows, columns = numpy.nonzero(in_colour & (with_places[window] != without[window]).any(axis=2))
        self.assertGreater(len(rows), 10, "no mark is drawn")
        return left + columns.mean() + 0.5, top + rows.mean() + 0.5

    # Places

    def assert_close(self, found, wanted, delta):
        self.assertEqual(len(found), len(wanted))
        for one, other in zip(found, wanted):
            self.assertAlmostEqual(one, other, delta=delta)

    def check_place(self, crs, place, accuracy):
        expected = self.truth.on_map(place, crs)
        self.assert_close(self.drawn_at(place), expected, accuracy)
        x, y = self.on_screen(expected)
        self.assert_close(self.pixel_of_map(expected), (x, y), 0.5)
        # The mark begins at a whole pixel of the map, and the map at a whole pixel of the screen.
        self.assert_close(self.mark_near(x, y), (x, y), 1.5)
        self.point_at(x, y)
        resolution = self.script("return featureMap.getView().getResolution()")
        self.assert_close(numbers(self.text("position")), self.truth.in_order(place, crs), resolution * 1.5)
        first = ("latitude", "northing") if self.truth.north_first(crs) else ("longitude", "easting")
        self.assertTrue(self.text("position").startswith(first))
        self.assertIn(place, self.text("under"))

    def check_places(self, size, scheme):
        self.open(size, scheme)
        for crs, places, accuracy in PLACES:
            self.choose(crs)
            self.script("map.scrollIntoView({block: 'end'})")
            for place in places:
                with self.subTest(crs=crs, place=place, size=size):
                    self.check_place(crs, place, accuracy)
            self.point_at(1, 1)
            self.keep(f"{crs.replace(':', '-')}-{size[0]}-{scheme}")

    def test_places_are_where_they_must_be(self):
        self.check_places(WIDE, "light")

    def test_places_are_where_they_must_be_on_a_narrow_dark_screen(self):
        self.check_places(NARROW, "dark")

    def test_compound_crs_has_the_places_of_its_horizontal_part(self):
        self.open()
        names = self.script("return [...document.querySelectorAll('input[name=crs]')].map((radio) => radio.value)")
        compound = next(name for name in names if "+" in name)
        self.choose(compound)
        self.assert_close(self.drawn_at("Oslo")[:2], self.truth.on_map("Oslo", compound.split("+")[0]), 0.02)

    def test_names_are_drawn_beside_places(self):
        self.open(crs="EPSG:3035")
        x, y = map(round, self.on_screen(self.truth.on_map("Athens", "EPSG:3035")))
        named = self.screen()
        self.toggle("places")
        changed = (named != self.screen()).any(axis=2)
        self.assertGreater(changed[y - 6:y + 6, x + 8:x + 40].mean(), 0.3)
        self.assertFalse(changed[y - 6:y + 6, x - 40:x - 8].any())

    def test_another_crs_makes_another_picture(self):
        self.open(crs="EPSG:3035")
        before = self.screen()
        self.choose("EPSG:3857")
        self.assertGreater((self.screen() != before).any(axis=2).mean(), 0.05)
        self.assertTrue(self.script("return location.hash").endswith("3857"))

    # The label

    def test_label_has_code_title_axes_and_unit(self):
        for crs, title, axes, unit in [
            ("EPSG:4326", "WGS 84", "1 latitude, 2 longitude", "degree"),
            ("EPSG:3035", "ETRS89-extended / LAEA Europe", "1 northing, 2 easting", "metre"),
            ("EPSG:25832", "ETRS89 / UTM zone 32N", "1 easting, 2 northing", "metre"),
        ]:
            with self.subTest(crs=crs):
                self.open(crs=crs)
                label = [self.text(part) for part in ("code", "title", "axes", "unit")]
                self.assertEqual(label, [crs, title, axes, unit])

    def test_every_offered_crs_can_be_chosen(self):
        self.open()
        for radio in self.browser.find_elements(By.NAME, "crs"):
            with self.subTest(crs=radio.get_attribute("value")):
                self.choose(radio.get_attribute("value"))
                self.assertEqual(self.text("failure"), "")
                counts = [int(count.text) for count in self.browser.find_elements(By.CLASS_NAME, "count")]
                self.assertEqual(sorted(counts), sorted(self.truth.counts))

    # Screens

    def test_nothing_is_wider_than_the_screen(self):
        for size in [WIDE, NARROW, (320, 640), (768, 1024), (1920, 1080)]:
            for crs in ["EPSG:4326", "EPSG:3035"]:
                with self.subTest(size=size, crs=crs):
                    self.open(size, crs=crs)
                    self.assertLessEqual(self.script("return document.documentElement.scrollWidth"), size[0])
                    rights = """return [...document.querySelectorAll("main *")]
                                    .map((element) => element.getBoundingClientRect().right)"""
                    self.assertLessEqual(max(self.script(rights)), size[0])
                    self.assertGreater(self.script("return map.clientHeight"), 300)

    def test_text_is_readable_in_light_and_in_dark(self):
        texts = ["#code", "#title", "dt", "#position", "#keys", "#layers a", ".count", "#failure", "b", "small"]
        for scheme, is_scheme in [("light", lambda sea: sea > 0.7), ("dark", lambda sea: sea < 0.05)]:
            self.open(scheme=scheme)
            colours = """const element = document.querySelector(arguments[0]), panel = element.closest("main > *");
                         return [getComputedStyle(element).color, getComputedStyle(panel).backgroundColor];"""
            for selector in texts:
                with self.subTest(scheme=scheme, element=selector):
                    self.assertGreater(contrast(*self.script(colours, selector)), 4.5)
            self.assertTrue(is_scheme(luminance(self.script("return getComputedStyle(map).backgroundColor"))))

    def test_map_follows_a_change_between_light_and_dark(self):
        self.open(crs="EPSG:3035")
        x, y = map(round, self.on_screen(self.truth.on_map("Warsaw", "EPSG:3035")))
        land = self.screen()[y - 12, x]
        self.command("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": "dark"}])
        self.browser.execute_async_script(
            """const [done] = arguments;
               featureMap.once("rendercomplete", () => done());
               featureMap.render();""")
        self.assertLess(self.screen()[y - 12, x].sum(), land.sum() / 2)

    # Keys

    def test_keys_choose_a_crs_and_move_the_map(self):
        self.open(crs="EPSG:4326")
        self.browser.find_element(By.CSS_SELECTOR, "input[value='EPSG:4326']").send_keys(Keys.ARROW_DOWN)
        WebDriverWait(self.browser, SECONDS).until(lambda _: self.text("code") != "EPSG:4326")
        self.wait()
        state = "return [...featureMap.getView().getCenter(), featureMap.getView().getResolution()]"
        before = self.script(state)
        self.browser.find_element(By.ID, "map").send_keys(Keys.ARROW_LEFT)
        WebDriverWait(self.browser, SECONDS).until(lambda _: self.script(state)[0] < before[0])
        self.browser.find_element(By.ID, "map").send_keys("+")
        WebDriverWait(self.browser, SECONDS).until(lambda _: self.script(state)[2] < before[2])
        self.assertEqual(self.text("source"), "Centre")

    def test_tab_reaches_layers_crs_and_map(self):
        self.open()
        reached = set()
        for _ in range(20):
            ActionChains(self.browser).send_keys(Keys.TAB).perform()
            focused = self.browser.switch_to.active_element
            reached.add(focused.get_attribute("id") or focused.get_attribute("name") or focused.get_attribute("class"))
        self.assertLessEqual({"layer-places", "crs", "map", "whole", "ol-zoom-in"}, reached)

    # Failures and the network

    def test_layer_that_fails_is_named_and_the_others_are_drawn(self):
        self.command("Network.enable")
        self.command("Network.setBlockedURLs", urls=["*/rivers/items*"])
        self.addCleanup(self.command, "Network.setBlockedURLs", urls=[])
        self.open()
        self.assertRegex(self.text("failure"), "Rivers.*: Failed to fetch")
        self.assertIsNotNone(self.drawn_at("Berlin"))

    def test_map_is_empty_if_all_layers_fail(self):
        self.command("Network.enable")
        self.command("Network.setBlockedURLs", urls=["*/items*"])
        self.addCleanup(self.command, "Network.setBlockedURLs", urls=[])
        self.open()
        self.assertEqual(len(self.text("failure").split("\n")), 3)
        self.assertIsNone(self.drawn_at("Berlin"))

    def test_page_asks_no_other_host(self):
        self.open()
        self.choose("EPSG:3035")
        asked = self.script("return performance.getEntriesByType('resource').map(({name}) => name)")
        self.assertGreater(len(asked), 5)
        self.assertEqual([address for address in asked if not address.startswith((self.address, "data:"))], [])
        self.assertEqual([entry for entry in self.browser.get_log("browser") if entry["level"] == "SEVERE"], [])

    # The built file

    def test_built_file_is_made_from_these_sources(self):
        sources = [PAGE / "build", *sorted(PAGE.glob("*.js")), PAGE / "package-lock.json"]
        fingerprint = hashlib.sha256(b"".join(path.read_bytes() for path in sources)).hexdigest()
        built = (STATIC / "map.js").read_text()
        self.assertIn(fingerprint, built.split("\n")[0], "run page/build")
        self.assertLess(len(built.encode()), 400_000)
        self.assertIn("BSD 2-Clause", (STATIC / "map.licences.txt").read_text())
        self.assertNotIn("resolved", (PAGE / "package-lock.json").read_text())


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    ARGUMENTS = sys.argv[1:]
    unittest.main(argv=sys.argv[:1], verbosity=2)
