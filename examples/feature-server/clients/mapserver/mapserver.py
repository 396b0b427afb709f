"""MapServer 8 by FastCGI behind lighttpd, on loopback and with its own configuration in a temporary folder.

    mapserver.py GEOPACKAGE    serves until Enter is pressed
"""

import os
import shutil
import signal
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), os.pardir))
from service import answers_soon, free_port  # noqa: E402

PROCESSES = 2
CODES = "EPSG:3034 EPSG:4326 EPSG:25832 EPSG:3857 EPSG:3035 EPSG:2154 EPSG:27700 EPSG:4258"
TYPES = {"countries": "POLYGON", "places": "POINT", "rivers": "LINE", "points": "POINT"}

LAYER = """
  LAYER
    NAME "{name}"
    TYPE {type}
    STATUS ON
    CONNECTIONTYPE OGR
    CONNECTION "{geopackage}"
    DATA "{name}"
    PROCESSING "CLOSE_CONNECTION=DEFER"
    PROJECTION
      "init=epsg:3034"
    END
    METADATA
      "ows_title" "{name}"
      "ows_srs" "{codes}"
      "ows_extent" "{extent}"
      "gml_include_items" "all"
      "gml_types" "auto"
      "gml_featureid" "name"
      "wfs_geometry_precision" "{decimals}"
      "oga_geometry_precision" "{decimals}"
    END
    TEMPLATE "dummy"
  END
"""

MAP = """
MAP
  NAME "europe"
  SIZE 100 100
  EXTENT {extent}
  PROJECTION
    "init=epsg:3034"
  END
  WEB
    METADATA
      "ows_title" "Europe"
      "ows_srs" "{codes}"
      "ows_enable_request" "*"
      "ows_onlineresource" "http://127.0.0.1:{port}/wfs"
      "oga_onlineresource" "http://127.0.0.1:{port}/mapserv/europe/ogcapi"
      "oga_html_template_directory" "/usr/share/mapserver/ogcapi/templates/html-plain/"
      "wfs_namespace_uri" "http://127.0.0.1/europe"
      "wfs_namespace_prefix" "ms"
      "wfs_getfeature_formatlist" "gml,gml3,gml32,geojson"
    END
  END
  OUTPUTFORMAT
    NAME "geojson"
    DRIVER "OGR/GEOJSON"
    MIMETYPE "application/json"
    FORMATOPTION "STORAGE=stream"
    FORMATOPTION "FORM=SIMPLE"
    FORMATOPTION "LCO:COORDINATE_PRECISION={decimals}"
  END
{layers}
END
"""

CONFIG = """
CONFIG
  ENV
    "MS_MAP_PATTERN" "."
    "PROJ_LIB" "/usr/share/proj"
  END
  MAPS
    "europe" "{map}"
  END
END
"""

LIGHTTPD = """
server.modules = ("mod_rewrite", "mod_fastcgi")
server.bind = "127.0.0.1"
server.port = {port}
server.document-root = "{folder}"
server.errorlog = "{folder}/lighttpd.log"
url.rewrite-once = ("^/wfs\\??(.*)$" => "/mapserv?map=europe&$1")
fastcgi.server = ("/mapserv" => ((
  "socket" => "{folder}/mapserv.socket", "check-local" => "disable"
)))
"""


class MapServer:
    """A running MapServer; `with` ends it. Each request to `wfs` may carry any query."""

    def __init__(self, geopackage, layers=("countries", "places", "rivers"), decimals=8):
        self.folder = tempfile.mkdtemp(prefix="mapserver-")
        self.port = free_port()
        self.wfs = f"http://127.0.0.1:{self.port}/wfs"
        self.ogcapi = f"http://127.0.0.1:{self.port}/mapserv/europe/ogcapi"
        self.lighttpd = None
        self.pids = []
        self._write(os.path.abspath(geopackage), layers, decimals)
        self._start()

    def _write(self, geopackage, layers, decimals):
        # The area of EPSG:3034 where the features are, in metres.
        values = {"extent": "800000 300000 8000000 6500000", "codes": CODES, "port": self.port, "folder": self.folder,
                  "decimals": decimals}
        texts = [LAYER.format(name=name, type=TYPES[name], geopackage=geopackage, **values)
                 for name in layers]
        self._file("europe.map", MAP.format(layers="".join(texts), **values))
        self._file("mapserver.conf", CONFIG.format(map=os.path.join(self.folder, "europe.map")))
        self._file("lighttpd.conf", LIGHTTPD.format(**values))

    def _file(self, name, text):
        with open(os.path.join(self.folder, name), "w", encoding="utf-8") as file:
            file.write(text)

    def _start(self):
        environment = dict(os.environ, MAPSERVER_CONFIG_FILE=os.path.join(self.folder, "mapserver.conf"))
        spawned = subprocess.run(
            ["spawn-fcgi", "-s", f"{self.folder}/mapserv.socket", "-P", f"{self.folder}/mapserv.pid", "-F",
             str(PROCESSES), "--", "/usr/lib/cgi-bin/mapserv"],
            env=environment, check=True, capture_output=True, text=True)
        self.pids = [int(line.rsplit("PID:", 1)[1]) for line in spawned.stdout.splitlines() if "PID:" in line]
        # pylint: disable=consider-using-with
        self.lighttpd = subprocess.Popen(["/usr/sbin/lighttpd", "-D", "-f", f"{self.folder}/lighttpd.conf"],
                                         stdout=subprocess.DEVNULL)
        self._wait()

    def _wait(self):
        if not answers_soon(self.lighttpd, self.wfs + "?service=WFS&request=GetCapabilities"):
            self.close()
            raise RuntimeError("MapServer does not answer")

    def close(self):
        if self.lighttpd:
            self.lighttpd.terminate()
            self.lighttpd.wait(10)
        for pid in self.pids:
            os.kill(pid, signal.SIGKILL)  # a process that waits for a request ignores SIGTERM
        shutil.rmtree(self.folder, ignore_errors=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()


if __name__ == "__main__":
    with MapServer(sys.argv[1]) as server:
        print(server.wfs, server.ogcapi, flush=True)
        input()
