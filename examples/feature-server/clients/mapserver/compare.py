"""Asks the feature server and MapServer 8 the same forty requests and writes a Markdown table of their answers.

    compare.py [FILE]

Expectations are computed by GDAL from the GeoPackage (`reference.py`). The order of the axes that is expected: the
registry's under a URN or http URL, and under every spelling in WFS 2.0; easting or longitude first under "EPSG:n" and
"epsg.xml#n" in WFS 1.1, where GDAL, OWSLib and QGIS read these spellings so; longitude first in CRS84. A box without
a CRS is in the default CRS. A box must return every place inside it, and may return those inside the smallest box of
the storage CRS that contains it.
"""

import os
import sys
from collections import Counter, namedtuple

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), os.pardir))
# pylint: disable=wrong-import-position
import reference  # noqa: E402
from answers import ask  # noqa: E402
from mapserver import MapServer  # noqa: E402
from service import GEOPACKAGE, Service  # noqa: E402

REGISTRY, EAST_FIRST = "registry's order", "easting or longitude first"
URN = "urn:ogc:def:crs:EPSG::"
URL = "http://www.opengis.net/def/crs/EPSG/0/"
GML = "http://www.opengis.net/gml/srs/epsg.xml#"
CRS84 = reference.CRS84
BRITAIN = (0, 0, 700000, 1300000)
CENTRE = (-5.0, 50.0, 9.0, 55.0)
NOTHING = "refusal, or no place"

Request = namedtuple("Request", "kind text parameters definition order box")


def wfs(version, definition, order, name=None, box=None, bbox=None):
    parameters = {"service": "WFS", "version": version, "request": "GetFeature"}
    parameters["typeNames" if version == "2.0.0" else "typeName"] = "places"
    if name:
        parameters["srsName"] = name
    if bbox:
        parameters["bbox"] = bbox
    text = ", ".join(f"{key}={parameters[key]}" for key in ("srsName", "bbox") if key in parameters)
    return Request("wfs", f"WFS {version[:3]} {text or 'without srsName'}", parameters, definition, order, box)


def items(definition, order, box=None, **parameters):
    text = ", ".join(f"{key}={value}" for key, value in parameters.items()).replace("_", "-")
    renamed = {key.replace("_", "-"): value for key, value in parameters.items()}
    return Request("ogcapi", f"OGC API {text or 'without parameters'}", dict(renamed, f="json", limit=1000), definition,
                   order, box)


def box_text(box, order, name=None):
    west, south, east, north = box
    numbers = (south, west, north, east) if order == REGISTRY else box
    return ",".join(map(str, numbers)) + (f",{name}" if name else "")


def spellings():
    yield wfs("2.0.0", "EPSG:3034", REGISTRY)
    for name in (URN + "4326", URL + "4326", "urn:ogc:def:crs:EPSG:6.12:4326", "urn:x-ogc:def:crs:EPSG::4326"):
        yield wfs("2.0.0", "EPSG:4326", REGISTRY, name)
    for name in ("EPSG:4326", GML + "4326"):
        yield wfs("2.0.0", "EPSG:4326", EAST_FIRST, name)
    for name in ("urn:ogc:def:crs:OGC:1.3:CRS84", "CRS:84"):
        yield wfs("2.0.0", CRS84, EAST_FIRST, name)
    yield wfs("2.0.0", "EPSG:3035", REGISTRY, URN + "3035")
    yield wfs("2.0.0", "EPSG:25832", EAST_FIRST, URN + "25832")
    yield wfs("2.0.0", "EPSG:3857", EAST_FIRST, "EPSG:3857")
    yield wfs("2.0.0", "EPSG:25832", EAST_FIRST, "urn:ogc:def:crs,crs:EPSG::25832,crs:EPSG::5783")
    yield wfs("1.1.0", "EPSG:3034", REGISTRY)
    for name in (URN + "4326", URL + "4326"):
        yield wfs("1.1.0", "EPSG:4326", REGISTRY, name)
    for name in ("EPSG:4326", GML + "4326"):
        yield wfs("1.1.0", "EPSG:4326", EAST_FIRST, name)
    yield wfs("1.1.0", "EPSG:3035", EAST_FIRST, "EPSG:3035")
    yield wfs("1.1.0", "EPSG:3035", REGISTRY, URN + "3035")
    yield wfs("1.1.0", "EPSG:25832", EAST_FIRST, "EPSG:25832")


def boxes():
    storage = (3000000, 2000000, 4500000, 3500000)
    yield wfs("2.0.0", "EPSG:3034", REGISTRY, box=("EPSG:3034", storage), bbox=box_text(storage, REGISTRY))
    for version, name, definition, order in (
            ("2.0.0", URN + "4326", "EPSG:4326", REGISTRY), ("2.0.0", "EPSG:4326", "EPSG:4326", EAST_FIRST),
            ("2.0.0", "urn:ogc:def:crs:OGC:1.3:CRS84", CRS84, EAST_FIRST),
            ("1.1.0", "EPSG:4326", "EPSG:4326", EAST_FIRST), ("1.1.0", URN + "4326", "EPSG:4326", REGISTRY)):
        yield wfs(version, "EPSG:25832", EAST_FIRST, URN + "25832", (definition, CENTRE),
                  box_text(CENTRE, order, name))
    utm = (300000, 5200000, 900000, 6200000)
    yield wfs("2.0.0", "EPSG:4326", REGISTRY, URN + "4326", ("EPSG:25832", utm),
              box_text(utm, EAST_FIRST, URN + "25832"))
    yield wfs("2.0.0", "EPSG:27700", EAST_FIRST, URN + "27700", ("EPSG:27700", BRITAIN),
              box_text(BRITAIN, EAST_FIRST, URN + "27700"))
    world = (-180.0, -90.0, 180.0, 90.0)
    yield wfs("2.0.0", "EPSG:25832", EAST_FIRST, URN + "25832", ("EPSG:4326", world),
              box_text(world, REGISTRY, URN + "4326"))


def refusals():
    for name in ("EPSG:999999", "utm32", "EPSG:31467", "urn:ogc:def:crs:EPSG:4326"):
        yield wfs("2.0.0", None, None, name)
    yield wfs("2.0.0", None, None, bbox="50,-5,55,9,urn:ogc:def:crs:EPSG::999999")
    yield wfs("2.0.0", None, NOTHING, bbox="95,0,99,10,urn:ogc:def:crs:EPSG::4326")


def ogc_api():
    yield items(CRS84, EAST_FIRST)
    yield items("EPSG:4326", REGISTRY, crs=URL + "4326")
    yield items(CRS84, EAST_FIRST, box=(CRS84, (20.0, 35.0, 180.0, 80.0)), bbox="20,35,-170,80")
    yield items(None, None, crs=URL + "999999")


def refusal(answer):
    code = answer.exception()
    if code or answer.status >= 400:
        return f"refused: {answer.status}" + (f" {code}" if code else "")
    return None


def matches(places, wanted, allowed, found, tolerance):
    """Whether the features found are all those wanted and only those allowed."""
    found = sorted(found)
    expected = sorted((places[i], i) for i in allowed)
    numbers = set()
    for feature in found:
        near = [i for points, i in expected
                if i not in numbers and reference.largest_difference([points], [feature]) <= tolerance]
        if not near:
            return False
        numbers.add(near[0])
    return wanted <= numbers


def verdict_of_refusal(request, refused, answer):
    if refused:
        return f"right ({refused})"
    found = len(answer.features())
    return ("right" if found == 0 and request.order == NOTHING else "wrong") + f": {found} places"


def verdict(request, layer, answer):
    refused = refusal(answer)
    if request.definition is None:
        return verdict_of_refusal(request, refused, answer)
    if refused:
        return refused
    found = answer.features()
    everything = set(range(len(layer.features)))
    wanted, allowed = layer.in_box(*request.box) if request.box else (everything, everything)
    places = layer.in_crs(request.definition)
    if request.order == REGISTRY and reference.is_north_first(request.definition):
        places = reference.exchanged(places)
    tolerance = 2 * reference.bound(request.definition)
    if matches(places, wanted, allowed, found, tolerance):
        return "right" + (f", {len(found) - len(wanted)} more" if len(found) > len(wanted) else "")
    if matches(reference.exchanged(places), wanted, allowed, found, tolerance):
        return "wrong: exchanged"
    if matches(layer.in_crs(request.definition, ballpark=True), wanted, allowed, found, tolerance):
        return "right within the area of the shift, none applied outside"
    if len(found) == len(wanted):
        return "wrong: other points"
    return f"wrong: {len(found)} places instead of {len(wanted)}"


def expectation(request, layer):
    if request.definition is None:
        return request.order or "refusal"
    if not request.box:
        return f"{request.definition}, {request.order}"
    wanted, allowed = layer.in_box(*request.box)
    return f"{len(wanted)} to {len(allowed)} places, {request.definition}"


def main(output):
    requests = [*spellings(), *boxes(), *refusals(), *ogc_api()]
    layer = reference.Layer(GEOPACKAGE, "places")
    totals = (Counter(), Counter())
    rows = ["| | request | expected | feature server | MapServer 8 |", "|---|---|---|---|---|"]
    with Service() as service, MapServer(GEOPACKAGE) as mapserver:
        for number, request in enumerate(requests, 1):
            verdicts = []
            for server, total in zip((service, mapserver), totals):
                url = server.wfs if request.kind == "wfs" else server.ogcapi + "/collections/places/items"
                verdicts.append(verdict(request, layer, ask(url, **request.parameters)))
                total[verdicts[-1].split(":")[0].split(",")[0].split()[0]] += 1
            rows.append(f"| {number} | {request.text} | {expectation(request, layer)} | " + " | ".join(verdicts) + " |")
    rows += ["", *(f"{name}: " + ", ".join(f"{count} {word}" for word, count in sorted(total.items()))
                   for name, total in zip(("Feature server", "MapServer 8"), totals))]
    print("\n".join(rows), file=output)


if __name__ == "__main__":
    if len(sys.argv) > 1:
        with open(sys.argv[1], "w", encoding="utf-8") as file:
            main(file)
    else:
        main(sys.stdout)
