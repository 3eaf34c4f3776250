"""What `gridkit` tells of formats, products and layers.

    description_test.py BUILD FOLDER
"""
import json
import re
import unittest

from programs import GRIDKIT, main, simulate, text


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
        self.assertEqual("260 columns x 300 lines", labelled["size"])
        # Half a sample's time at the speed of light, three decimals.
        slant = truth["sampleSpacing"] * 299792458 / 2
        self.assertIn(f"{slant:.3f} m slant range", labelled["spacing"])
        self.assertEqual(4, len(under["layers"]))
        self.assertRegex(under["layers"][1], r"^X_HH_PHASE_2 +260 x 300 +16 bits signed$")
        self.assertEqual([":RADAR_Generic_v2.2", ":TSX_Beta0"], under["data"])

    def test_the_extent_is_that_of_the_scene(self):
        labelled, _ = rows(simulate("extent", "--variant", "GEC", lines=1000, samples=600))
        # 600 x 1000 pixels of 2.5 m.
        sides = [float(side) for side in re.findall(r"[\d.]+", labelled["extent"])]
        self.assertAlmostEqual(1.5, sides[0], delta=0.06)
        self.assertAlmostEqual(2.5, sides[1], delta=0.06)

    def test_maps_are_told(self):
        labelled, under = rows(simulate("mapped", "--variant", "GEC"))
        self.assertEqual("geocoded on the ellipsoid (GEC), spatially enhanced (SE)", labelled["product"])
        self.assertEqual("2.500 x 2.500 m", labelled["spacing"])
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
                self.assertEqual("2.750 x 2.750 m", labelled["spacing"])


if __name__ == "__main__":
    main()
