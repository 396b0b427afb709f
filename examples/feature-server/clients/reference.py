"""What the clients must find: the coordinates of a GeoPackage's layer, computed by GDAL alone.

Coordinates are in traditional order (easting or longitude first) unless a function states otherwise.
"""

from osgeo import ogr, osr

osr.UseExceptions()
ogr.UseExceptions()

CRS84 = "OGC:CRS84"
MILLIMETRE = 0.001
DEGREES_PER_METRE = 1 / 111195.0  # on a sphere of 6371 km


def crs(name):
    result = osr.SpatialReference()
    result.SetFromUserInput(name)
    result.SetAxisMappingStrategy(osr.OAMS_TRADITIONAL_GIS_ORDER)
    return result


def transformation(source, target, ballpark=False):
    """GDAL's choice of operation. Without ballpark operations a datum shift is applied outside its area as well, where
    GDAL would otherwise apply none."""
    options = osr.CoordinateTransformationOptions()
    options.SetBallparkAllowed(ballpark)
    return osr.CoordinateTransformation(source, target, options)


def is_north_first(name):
    """Whether the registry has northing or latitude first."""
    definition = crs(name)
    return bool(definition.EPSGTreatsAsLatLong() or definition.EPSGTreatsAsNorthingEasting())


def bound(name, metres=MILLIMETRE):
    """A distance in the units of a CRS."""
    return metres * DEGREES_PER_METRE if crs(name).IsGeographic() else metres


def points_of(geometry):
    """All points of a geometry in their order."""
    if geometry.GetGeometryCount() == 0:
        return [point[:2] for point in geometry.GetPoints() or []]
    return [point for i in range(geometry.GetGeometryCount()) for point in points_of(geometry.GetGeometryRef(i))]


class Layer:
    """A layer of the GeoPackage, read once."""

    def __init__(self, path, name):
        source = ogr.Open(path)
        layer = source.GetLayerByName(name)
        self.name = name
        self.storage = layer.GetSpatialRef()
        self.storage.SetAxisMappingStrategy(osr.OAMS_TRADITIONAL_GIS_ORDER)
        self.features = [points_of(feature.GetGeometryRef()) for feature in layer]

    def in_crs(self, name, ballpark=False):
        """The features' points in a CRS."""
        change = transformation(self.storage, crs(name), ballpark)
        return [[point[:2] for point in change.TransformPoints(feature)] for feature in self.features]

    def in_box(self, name, box):
        """Numbers of the features within a box of a CRS, and of those within the smallest box of the storage CRS that
        contains it: a filter in the storage CRS may return these."""
        change = transformation(crs(name), self.storage)
        wider = change.TransformBounds(*box, 21)
        return numbers_inside(self.in_crs(name), box), numbers_inside(self.features, wider)


def numbers_inside(features, box):
    west, south, east, north = box
    return {i for i, feature in enumerate(features)
            if all(west <= x <= east and south <= y <= north for x, y in feature)}


def single_points(features):
    """Each point as a feature of its own."""
    return [[point] for feature in features for point in feature]


def exchanged(features):
    return [[(y, x) for x, y in feature] for feature in features]


class Mismatch(Exception):
    pass


def largest_difference(expected, found):
    """The largest difference of two lists of features, in any coordinate. Raises Mismatch where they differ in kind."""
    if len(expected) != len(found):
        raise Mismatch(f"{len(found)} features instead of {len(expected)}")
    largest = 0.0
    for i, (wanted, got) in enumerate(zip(expected, found)):
        if len(wanted) != len(got):
            raise Mismatch(f"{len(got)} points instead of {len(wanted)} in feature {i}")
        for (a, b), (x, y) in zip(wanted, got):
            largest = max(largest, abs(a - x), abs(b - y))
    return largest
