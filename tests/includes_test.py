"""Includes run one way: each folder sees only what stands here for it.

    includes_test.py ROOT
"""
import re
import sys
import unittest
from pathlib import Path

ROOT = Path(sys.argv[1])

# What a folder's sources may include of the project, by the beginning of the include's path. Paths below
# platform/ are included without that word.
GRIDKIT = tuple(f"gridkit/{header.name}" for header in (ROOT / "platform/gridkit").glob("*.h"))
TOOLKIT = (*GRIDKIT, "handlepool/", "rmdllib/", "debug/")
ALLOWED = {
    "platform/conversion": ("conversion/",),
    "platform/lmx": ("lmx/",),
    "platform/gridkit": GRIDKIT,
    "platform/gridkit/services": (*GRIDKIT, "gridkit/services/"),
    "platform/gridkit/records": (*GRIDKIT, "gridkit/records/", "gridkit/services/"),
    "platform/gridkit/layers": (*GRIDKIT, "gridkit/layers/", "gridkit/services/"),
    "platform/gridkit/maps": (*GRIDKIT, "gridkit/maps/", "gridkit/layers/", "gridkit/services/"),
    "platform/gridkit/writers": (*GRIDKIT, "gridkit/writers/", "gridkit/maps/", "gridkit/layers/",
                                 "gridkit/services/"),
    "platform/gridkit/host": (*GRIDKIT, "gridkit/host/", "gridkit/services/", "handlepool/handlepool.h"),
    "platform/gridkit/describe": (*GRIDKIT, "gridkit/describe/"),
    "platform/picture": ("picture/", *GRIDKIT, "rmdllib/placement.h"),
    "platform/gridkit/c": (*GRIDKIT, "gridkit/c/", "picture/", "gridkit/host/sample_road.h", "gridkit/samples/ordered_work.h", "rmdllib/"),
    "platform/gridkit/samples": (*GRIDKIT, "gridkit/samples/", "gridkit/services/", "conversion/",
                                 "rmdllib/ellipsoid.h"),
    "platform/gridkit/radiometry": (*GRIDKIT, "gridkit/radiometry/", "conversion/", "rmdllib/"),
    "platform/handlepool": ("handlepool/", "gridkit/export.h"),
    "platform/debug": ("debug/", "gridkit/export.h"),
    "platform/rmdllib": ("rmdllib/", "gridkit/services/fail.h", *GRIDKIT),
    "binding": ("binding/", "lmx/"),
    "schema": ("schema/", "level1bProduct/", "binding/", "lmx/"),
    "record": ("record/", "binding/level1bProductBase.h", *TOOLKIT),
    "geometry": ("geometry/", "record/", "binding/level1bProductBase.h", *TOOLKIT),
    "image": ("image/", "conversion/", "record/", "binding/level1bProductBase.h", *TOOLKIT),
    "plugin": ("plugin/", "image/", "geometry/", "record/", "binding/level1bProductBase.h", *TOOLKIT,
               "lmx/error.h"),
    "companion": ("companion/", "image/cosar_layout.h", "conversion/", "record/tsx_file.h",
                  "plugin/recognition_texts.h", "plugin/schema_version.h", "schema/lenience.h", "binding/", "lmx/",
                  "level1bProduct", *GRIDKIT),
    "bridges/gdal": ("bridges/gdal/", "gridkit/gridkit.h"),
    # The simulator and the annotation's own tool work on the classes; the host's command line on products.
    # What the three command lines share.
    "tools/command_line": ("tools/command_line/", "gridkit/error.h", "gridkit/os_error.h", "gridkit/version.h",
                           "lmx/parser_version.h"),
    "tools/annotation": ("tools/annotation/", "plugin/schema_version.h", "plugin/required_texts.h",
                         "plugin/recognition_texts.h", "image/cosar_layout.h", "schema/lenience.h",
                         "tools/command_line/", *GRIDKIT, "binding/", "lmx/", "level1bProduct", "geometry/", "record/tsx_file.h"),
    "tools/simulate": ("tools/simulate/", "tools/annotation/", "tools/command_line/", "plugin/schema_version.h",
                       "binding/", "lmx/", *GRIDKIT, "rmdllib/vector3.h", "level1bProduct"),
    "tools/gridkit": ("tools/gridkit/", "picture/", "tools/annotation/", "tools/command_line/", *TOOLKIT),
    "tools/gridkit/terminal": ("tools/gridkit/terminal/", "tools/command_line/terminal.h"),
    "tools/gridkit/product": ("tools/gridkit/product/", "tools/gridkit/terminal/", "tools/command_line/", "tools/annotation/",
                              *GRIDKIT, "rmdllib/", "lmx/"),
    "tools/gridkit/place": ("tools/gridkit/place/", "tools/annotation/", *GRIDKIT, "rmdllib/"),
    "tools/gridkit/read": ("tools/gridkit/read/", "tools/gridkit/place/", "tools/gridkit/product/",
                           "tools/gridkit/terminal/", "tools/command_line/existing_output.h",
                           *GRIDKIT, "rmdllib/"),
    "tools/gridkit/picture": ("tools/gridkit/picture/", "picture/", "tools/gridkit/place/", "tools/gridkit/product/",
                              "tools/gridkit/read/line_ranges.h", *GRIDKIT, "rmdllib/"),
    "tools/gridkit/report": ("tools/gridkit/report/", "tools/gridkit/picture/", "picture/", "tools/gridkit/place/",
                             "tools/gridkit/product/", "tools/gridkit/read/line_ranges.h",
                             "tools/annotation/", "lmx/", "report_assets.h", *TOOLKIT),
}
# The host, and the driver of GDAL's own.
GDAL_HOMES = ("platform/gridkit/", "bridges/gdal/")
# The one source of the plug-in that names classes of the schema.
EXCEPTIONS = {"plugin/document.cpp": ("level1bProduct",)}


def includes(file):
    return re.findall(r'^\s*#include "([^"]+)"', file.read_text(), re.M)


class Includes(unittest.TestCase):
    def test_run_one_way(self):
        for folder, allowed in ALLOWED.items():
            files = [f for f in sorted((ROOT / folder).glob("*")) if f.suffix in (".h", ".cpp", ".inc")]
            self.assertTrue(files, folder)
            for file in files:
                name = str(file.relative_to(ROOT))
                for path in includes(file):
                    with self.subTest(file=name, include=path):
                        self.assertTrue(path.startswith(allowed + EXCEPTIONS.get(name, ())))

    def test_every_folder_of_sources_has_its_rule(self):
        for top in ("platform", "tools"):
            for folder in (ROOT / top).rglob("*"):
                if folder.is_dir() and folder.name != "__pycache__":
                    self.assertIn(str(folder.relative_to(ROOT)), ALLOWED)

    def test_libraries_stand_behind_their_folders(self):
        behind = {"expat.h": ("platform/lmx/",), "gdal": GDAL_HOMES, "ogr": GDAL_HOMES,
                  "png.h": ("platform/gridkit/",), "cpl_": GDAL_HOMES, "Eigen/": ("platform/rmdllib/",)}
        for folder in ALLOWED:
            for file in (ROOT / folder).glob("*"):
                if file.suffix not in (".h", ".cpp"):
                    continue
                for path in re.findall(r"^\s*#include <([^>]+)>", file.read_text(), re.M):
                    for library, homes in behind.items():
                        if path.startswith(library):
                            with self.subTest(file=str(file), include=path):
                                self.assertTrue(f"{folder}/".startswith(homes))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
