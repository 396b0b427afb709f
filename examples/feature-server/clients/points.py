"""Makes a GeoPackage of 10,000 points in EPSG:3034, the same at every run.

    points.py FILE
"""

import os
import random
import sys

from osgeo import ogr, osr

ogr.UseExceptions()

COUNT = 10000
SEED = 3034
AREA = (3000000, 1500000, 5000000, 3500000)  # west, south, east and north: central Europe


def make(path):
    if os.path.exists(path):
        os.remove(path)
    numbers = random.Random(SEED)
    srs = osr.SpatialReference()
    srs.ImportFromEPSG(3034)
    srs.SetAxisMappingStrategy(osr.OAMS_TRADITIONAL_GIS_ORDER)
    source = ogr.GetDriverByName("GPKG").CreateDataSource(path)
    layer = source.CreateLayer("points", srs, ogr.wkbPoint)
    layer.CreateField(ogr.FieldDefn("name", ogr.OFTString))
    layer.StartTransaction()
    for i in range(COUNT):
        feature = ogr.Feature(layer.GetLayerDefn())
        feature.SetField("name", f"point {i + 1}")
        point = ogr.Geometry(ogr.wkbPoint)
        point.AddPoint_2D(round(numbers.uniform(AREA[0], AREA[2]), 3), round(numbers.uniform(AREA[1], AREA[3]), 3))
        feature.SetGeometry(point)
        layer.CreateFeature(feature)
    layer.CommitTransaction()


if __name__ == "__main__":
    make(sys.argv[1])
