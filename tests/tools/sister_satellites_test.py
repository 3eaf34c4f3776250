"""Products of the satellites that are built like TerraSAR-X, and pairs of them.

    sister_satellites_test.py BUILD FOLDER
"""
import json
import unittest

import programs
from programs import ANNOTATION, FOLDER, GRIDKIT, complaint, simulate, text

SISTERS = ("TDX-1", "PAZ-1")


class Sisters(unittest.TestCase):
    def test_the_command_takes_them_and_says_which_satellite_it_is(self):
        for satellite in ("TSX-1", *SISTERS):
            annotation = simulate(satellite, "--satellite", satellite)
            self.assertTrue(annotation.name.startswith(satellite.replace("-", "") + "_SAR__SSC_"), annotation.name)
            told = text(GRIDKIT, "info", annotation)
            self.assertRegex(told, rf"satellite +{satellite}, orbit ")
            self.assertEqual("TerraSAR-X", json.loads(text(GRIDKIT, "info", "--json", annotation))["format"])

    def test_beam_mode_and_orbit_are_told_as_of_terrasar_x(self):
        told = []
        for satellite in ("TSX-1", *SISTERS):
            info = json.loads(text(GRIDKIT, "info", "--json", simulate(satellite, "--satellite", satellite)))
            self.assertEqual(satellite, info["satellite"].pop("mission"))
            told.append((info["mode"], info["satellite"], info["polarisations"]))
        self.assertEqual("strip_005", told[0][0]["beam"])
        self.assertEqual(told[0], told[1])
        self.assertEqual(told[0], told[2])

    def test_a_folder_of_one_is_found(self):
        annotation = simulate("folder", "--satellite", "TDX-1")
        self.assertIn("X_HH_MAGNITUDE_1", text(GRIDKIT, "layers", FOLDER / "folder"))
        self.assertIn(f"{annotation}: valid in schema", text(ANNOTATION, "check", FOLDER / "folder"))

    def test_a_preference_takes_them_back(self):
        preferences = FOLDER / "preferences"
        preferences.write_text("tsx.sister_satellites = 0\n")
        for satellite in SISTERS:
            annotation = simulate("off", "--satellite", satellite)
            self.assertEqual(f"gridkit: {annotation}: of none of the known formats; see `gridkit formats`\n",
                             complaint(GRIDKIT, "--preferences", preferences, "info", annotation))
        self.assertIn("TSX-1", text(GRIDKIT, "--preferences", preferences, "info", simulate("on")))

    def test_pixels_are_those_of_terrasar_x(self):
        blocks = []
        for satellite in ("TSX-1", *SISTERS):
            annotation = simulate("pixels", "--satellite", satellite)
            blocks.append(programs.run(GRIDKIT, "read", "--raw", annotation, "X_HH_MAGNITUDE_1", "--block", 1, 1).stdout)
        self.assertEqual(2 * 64 * 64, len(blocks[0]))
        self.assertEqual(blocks[0], blocks[1])
        self.assertEqual(blocks[0], blocks[2])

    def test_a_pair_is_told_as_one(self):
        pair = FOLDER / "pair"
        annotations = [simulate(f"pair/{satellite}", "--satellite", satellite) for satellite in ("TSX-1", "TDX-1")]
        listed = "".join(f"\n  {a}" for a in sorted(annotations))
        words = (f"{pair}: holds a pair of products, of TSX-1 and TDX-1, as bistatic acquisitions have them; "
                 f"name one of{listed}\n")
        self.assertEqual("gridkit: " + words, complaint(GRIDKIT, "info", pair))
        self.assertEqual("tsx-annotation: " + words, complaint(ANNOTATION, "check", pair))
        self.assertIn("TDX-1", text(GRIDKIT, "info", annotations[1]))

    def test_products_of_other_satellites_are_several(self):
        several = FOLDER / "several"
        for satellite in ("TSX-1", "PAZ-1"):
            simulate(f"several/{satellite}", "--satellite", satellite)
        self.assertIn(f"{several}: holds several products; name one of\n", complaint(GRIDKIT, "info", several))


if __name__ == "__main__":
    programs.main()
