"""What `gridkit` tells of formats, products and layers.

    description_test.py BUILD FOLDER
"""
import json
import math
import re
import unittest
from xml.etree import ElementTree

from image_files import Tiff
from programs import GRIDKIT, complaint, main, run, simulate, text


def rows(product):
    """The labelled rows of `info`, and the names under its headings."""
    labelled, under, heading = {}, {}, None
    for line in text(GRIDKIT, "info", product).splitlines()[1:]:
        if not line.startswith(" "):
            heading = line
        elif heading is None:
            label, value = line[2:15].strip(), line[16:]
            labelled[label] = value
        else:
            under.setdefault(heading, []).append(line.strip())
    return labelled, under


class Formats(unittest.TestCase):
    def test_as_json(self):
        [entry] = json.loads(text(GRIDKIT, "formats", "--json"))
        self.assertEqual(("TerraSAR-X", "TSX1*.xml", ".xml", ["u16", "s16"], ["athematic"]),
                         (entry["title"], entry["template"], entry["extension"], entry["pixelTypes"],
                          entry["layerTypes"]))
        self.assertTrue(entry["plugin"].endswith("/tsx.so"))


class Layers(unittest.TestCase):
    def test_one_name_a_line(self):
        product = simulate("layers", "--polarisations", "HH,VV", lines=70, samples=90)
        self.assertEqual("X_HH_MAGNITUDE_1\nX_HH_PHASE_2\nX_VV_MAGNITUDE_3\nX_VV_PHASE_4\n",
                         text(GRIDKIT, "layers", product))
        listed = json.loads(text(GRIDKIT, "layers", "--json", product))
        self.assertEqual({"name": "X_VV_PHASE_4", "pixelType": "s16", "width": 90, "height": 70},
                         listed[3])


class Info(unittest.TestCase):
    def test_a_complex_product_at_a_glance(self):
        product = simulate("complex", "--polarisations", "HH,VV", "--centre", "-33.5,-70.25", "--pass",
                           "ascending", "--look", "left", "--height", 432)
        head = text(GRIDKIT, "info", product).splitlines()[0]
        self.assertEqual(product.stem, head)
        labelled, under = rows(product)
        truth = json.loads((product.parent / "truth.json").read_text())
        self.assertEqual("TerraSAR-X", labelled["format"])
        self.assertEqual("single-look slant-range complex (SSC)", labelled["product"])
        self.assertIn("StripMap (SM)", labelled["mode"])
        self.assertIn("looking left", labelled["mode"])
        self.assertEqual("HH, VV (dual)", labelled["polarisation"])
        self.assertIn("ascending", labelled["satellite"])
        self.assertRegex(labelled["time"], r"^2008-03-12 05:17:46\.25\d* to 05:17:46\.\d+ UTC$")
        self.assertRegex(labelled["centre"], r"^33\.50\d\dS 70\.2[45]\d\dW, 432 m above the ellipsoid")
        self.assertEqual("300 lines x 260 samples", labelled["size"])
        # Half a sample's time at the speed of light, three decimals.
        slant = truth["sampleSpacing"] * 299792458 / 2
        self.assertIn(f"{slant:.3f} m slant range", labelled["spacing"])
        self.assertEqual(4, len(under["layers"]))
        self.assertRegex(under["layers"][1], r"^X_HH_PHASE_2 +300 lines x +260 samples +16 bits signed$")
        self.assertEqual([":RADAR_Generic_v2.2", ":TSX_Beta0"], under["data"])

    def test_the_extent_is_that_of_the_scene(self):
        labelled, _ = rows(simulate("extent", "--variant", "GEC", lines=1000, samples=600))
        # 1000 lines of 600 pixels of 2.5 m.
        sides = re.fullmatch(r"about ([\d.]+) km north, ([\d.]+) km east", labelled["extent"])
        self.assertAlmostEqual(2.5, float(sides[1]), delta=0.06)
        self.assertAlmostEqual(1.5, float(sides[2]), delta=0.06)

    def test_maps_are_told(self):
        labelled, under = rows(simulate("mapped", "--variant", "GEC"))
        self.assertEqual("geocoded on the ellipsoid (GEC), spatially enhanced (SE)", labelled["product"])
        self.assertEqual("2.500 m north, 2.500 m east", labelled["spacing"])
        self.assertIn("map: UTM zone 32N, WGS 84, upper left", under["layers"][1])
        polar = simulate("polar", "--variant", "EEC", "--projection", "UPS", "--centre", "78,15")
        self.assertIn("map: Polar Stereographic, upper left", rows(polar)[1]["layers"][1])

    def test_every_mode_and_version_is_described(self):
        for mode, words in (("spotlight", "SpotLight"), ("scansar", "ScanSAR")):
            self.assertIn(words, rows(simulate("modes", "--mode", mode))[0]["mode"])
        for version in ("3.4", "3.5", "4.0"):
            for profile in ("minimal", "maximal"):
                product = simulate("versions", "--version-text", version, "--profile", profile,
                                   "--variant", "MGD", lines=64, samples=64)
                labelled, _ = rows(product)
                self.assertIn("multi-look ground-range detected (MGD)", labelled["product"])
                self.assertEqual("2.750 m azimuth, 2.750 m ground range", labelled["spacing"])

    def test_every_image_has_its_calibration_factor(self):
        product = simulate("factors", "--polarisations", "HH,VV")
        stated = {c.findtext("polLayer"): c.findtext("calFactor") for c in
                  ElementTree.parse(product).getroot().iterfind("calibration/calibrationConstant")}
        self.assertEqual(2, len(set(stated.values())))
        row = rows(product)[0]["calibration"]
        self.assertEqual([("HH", float(stated["HH"])), ("VV", float(stated["VV"]))],
                         [(p, float(f)) for p, f in (part.split() for part in row.split(", "))])

    def test_json_has_what_the_page_has(self):
        product = simulate("json", "--polarisations", "HH,VV", "--centre", "-33.5,-70.25", "--pass", "ascending",
                           "--look", "left", "--height", 432)
        info = json.loads(text(GRIDKIT, "info", "--json", product))
        truth = json.loads((product.parent / "truth.json").read_text())
        self.assertEqual({"name": product.stem, "variant": "SSC", "resolutionVariant": None},
                         {n: info["product"][n] for n in ("name", "variant", "resolutionVariant")})
        self.assertEqual(("SM", "DUAL", "LEFT"), tuple(info["mode"][n] for n in ("imaging", "polarisation", "look")))
        self.assertEqual(["HH", "VV"], info["polarisations"])
        self.assertEqual("ASCENDING", info["satellite"]["pass"])
        self.assertRegex(info["times"]["start"], r"^2008-03-12T05:17:46\.25\d*Z$")
        for axis in ("latitude", "longitude"):
            self.assertAlmostEqual(truth["centre"][axis], info["centre"][axis], delta=4.5e-5)  # two pixels
        self.assertEqual(4, len(info["extent"]["corners"]))
        self.assertEqual(432, info["heights"]["average"])
        # A sample's two-way time at the speed of light, and its share on the ground at 35 degrees: near range is
        # steeper, far range flatter, by less than half a degree here.
        spacing = info["spacing"]
        slant = truth["sampleSpacing"] * 299792458 / 2
        self.assertEqual("slant range", spacing["plane"])
        self.assertAlmostEqual(1, spacing["sample"] / slant, delta=1e-6)
        self.assertAlmostEqual(1, spacing["line"] / (truth["lineSpacing"] * truth["groundVelocity"]), delta=1e-6)
        for ground in spacing["sampleOnGround"]:
            self.assertAlmostEqual(slant / math.sin(math.radians(35)), ground, delta=0.03)
        self.assertEqual(["HH", "VV"], [image["polarisation"] for image in info["calibration"]])
        self.assertEqual([], info["warnings"])
        # 300 lines and 260 samples, corner to corner.
        self.assertAlmostEqual(299 * spacing["line"], info["extent"]["lines"], delta=5)
        self.assertAlmostEqual(259 * sum(spacing["sampleOnGround"]) / 2, info["extent"]["samples"], delta=5)
        [on_map] = [json.loads(text(GRIDKIT, "info", "--json", simulate("json_map", "--variant", "EEC")))]
        self.assertEqual(("map", None), (on_map["spacing"]["plane"], on_map["spacing"]["sampleOnGround"]))

    def test_warnings_stand_in_json_too(self):
        product = simulate("cut")
        image = next((product.parent / "IMAGEDATA").iterdir())
        image.write_bytes(image.read_bytes()[:-4])
        done = run(GRIDKIT, "info", "--json", product)
        warnings = json.loads(done.stdout)["warnings"]
        self.assertGreater(len(warnings), 0)
        self.assertIn(f"gridkit: warning: {warnings[0]}", done.stderr.decode())

    def test_an_image_without_its_map_is_a_warning(self):
        product = simulate("mapless", "--variant", "EEC")
        tiff = Tiff(next((product.parent / "IMAGEDATA").glob("*.tif")))
        for tag in (33550, 33922, 34735):  # of a GeoTIFF's map
            place = tiff.data.index(tag.to_bytes(2, "little"), tiff.data.index(b"II*") + 4)
            tiff.data[place:place + 2] = (60000 + tag % 100).to_bytes(2, "little")
        tiff.path.write_bytes(tiff.data)
        done = run(GRIDKIT, "info", "--json", product)
        info = json.loads(done.stdout)
        self.assertIsNone(info["layers"][0]["mapInfo"])
        about_map = [warning for warning in info["warnings"] if "map information" in warning]
        self.assertEqual(1, len(about_map))
        self.assertNotIn("tsxLayerMapInfoRead", done.stderr.decode())
        self.assertIn(about_map[0], done.stderr.decode())
        run(GRIDKIT, "info", product)


class MissingImages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.product = simulate("missing", "--polarisations", "HH,VV")
        cls.before = text(GRIDKIT, "info", cls.product)
        cls.images = sorted((cls.product.parent / "IMAGEDATA").iterdir())
        for image in cls.images:
            image.unlink()

    def test_info_shows_what_the_annotation_says_and_then_the_files(self):
        done = run(GRIDKIT, "info", self.product, status=1)
        # All that the annotation alone tells; the angles of incidence are asked of an open product.
        told = re.sub("  incidence  [^\n]*\n", "", self.before[:self.before.index("layers\n")])
        self.assertEqual(told, done.stdout.decode())
        self.assertEqual("".join(("gridkit: " if i == 0 else "  ") + f"{image}: no such image file\n"
                                 for i, image in enumerate(self.images)), done.stderr.decode())

    def test_other_commands_and_json_tell_the_files_alone(self):
        for command in (("info", "--json"), ("layers",)):
            self.assertIn(f"gridkit: {self.images[0]}: no such image file\n", complaint(GRIDKIT, *command, self.product))

    def test_the_calls_behind_it_are_for_debugging(self):
        self.assertNotIn("gkf_fopen", complaint(GRIDKIT, "layers", self.product))
        self.assertIn("\ngridkit: debug: tsxFileTitleIdentifyAndOpen: gkf_fopen failed\n",
                      complaint(GRIDKIT, "--debug", "layers", self.product))


if __name__ == "__main__":
    main()
