"""`gridkit locate` from the outside: places, checks, and what it refuses.

    locate_test.py BUILD FOLDER
"""
import json
import re
import sys
import unittest

from programs import FOLDER, GRIDKIT, SIMULATE, complaint, real_annotations, run, simulate, text


def locate(annotation, *arguments):
    return json.loads(text(GRIDKIT, "locate", "--json", annotation, *arguments))


def truth(annotation):
    return json.loads((annotation.parent / "truth.json").read_text())


class Places(unittest.TestCase):
    def test_targets_of_every_variant(self):
        for variant in ("SSC", "MGD", "GEC", "EEC"):
            annotation = simulate(variant, "--variant", variant, "--centre", "-33.5,-70.25")
            for target in truth(annotation)["targets"]:
                with self.subTest(variant=variant, target=target["name"]):
                    seen = locate(annotation, "--ground", target["latitude"], target["longitude"],
                                  target["height"])
                    self.assertAlmostEqual(seen["line"], target["line"], delta=0.05)
                    self.assertAlmostEqual(seen["sample"], target["sample"], delta=0.05)
                    height = () if variant in ("GEC", "EEC") else ("--height", target["height"])
                    found = locate(annotation, target["line"], target["sample"], *height)
                    self.assertAlmostEqual(found["latitude"], target["latitude"], delta=1e-6)
                    self.assertAlmostEqual(found["longitude"], target["longitude"], delta=1e-6)

    def test_without_a_height_it_is_the_scenes_average(self):
        annotation = simulate("average", "--height", 432)
        self.assertEqual(432, locate(annotation, 10, 20)["height"])
        self.assertIn("height 432.000", text(GRIDKIT, "locate", annotation, 10, 20))

    def test_a_map_knows_no_heights(self):
        annotation = simulate("map", "--variant", "GEC")
        self.assertIsNone(locate(annotation, 10, 20)["height"])
        self.assertNotIn("height", text(GRIDKIT, "locate", annotation, 10, 20))
        self.assertIn("an image on a map takes no height",
                      complaint(GRIDKIT, "locate", annotation, 10, 20, "--height", 5))


class Check(unittest.TestCase):
    def test_every_variant_agrees_with_its_annotation(self):
        for variant in ("SSC", "MGD", "GEC", "EEC"):
            with self.subTest(variant=variant):
                annotation = simulate("check", "--variant", variant, "--height", 950)
                points = locate(annotation, "--check")
                self.assertEqual(["centre"] + [f"corner {i}" for i in range(1, 5)],
                                 [point["point"] for point in points])
                for point in points:
                    # Latitude and longitude are single precision, half of 2^-18 degrees up to 64.
                    self.assertLess(abs(point["along"]) + abs(point["across"]), 0.5)
                    if variant in ("SSC", "MGD"):
                        self.assertAlmostEqual(point["height"], 950, delta=0.5)

    def test_tells_the_cost_of_the_average_height(self):
        annotation = simulate("cost", "--height", 1500)
        content = annotation.read_text()
        annotation.write_text(re.sub("<sceneAverageHeight>[^<]*<", "<sceneAverageHeight>500<", content))
        points = locate(annotation, "--check")
        for point in points:
            # At 35 degrees incidence a kilometre of height moves a place by 1 km / tan(35 degrees).
            self.assertAlmostEqual(point["height"], 1500, delta=1)
            self.assertAlmostEqual(point["atAverageHeight"], 1428, delta=15)
        self.assertIn("scene's average height 500.0 m", text(GRIDKIT, "locate", annotation, "--check"))

    def test_a_corner_that_no_height_explains_fails(self):
        annotation = simulate("moved")
        content = annotation.read_text()
        latitude = re.search("<sceneCornerCoord>.*?<lat>([^<]*)<", content, re.S)
        moved = float(latitude[1]) + 0.01
        annotation.write_text(content[:latitude.start(1)] + f"{moved:.17E}" + content[latitude.end(1):])
        done = run(GRIDKIT, "locate", annotation, "--check", status=1)
        self.assertRegex(done.stderr.decode(),
                         "gridkit: .*: corner 1 lies 1[01][0-9][0-9].[0-9] m from its pixel")
        self.assertIn(b"corner 4", done.stdout, "the table is complete")

    def test_points_without_a_pixel_are_nothing_to_check(self):
        annotation = simulate("nopixels", "--profile", "minimal")
        self.assertIn("its centre and corner coordinates name no row and column to check",
                      complaint(GRIDKIT, "locate", annotation, "--check"))


class Refusals(unittest.TestCase):
    def test_wrong_use_exits_with_two(self):
        annotation = simulate("use")
        for arguments in ((), (1,), (1, 2, "--check"), ("--ground", 1, 2), ("--height", 3),
                          ("--check", "--ground", 1, 2, 3), (1, 2, "--ground", 1, 2, 3)):
            run(GRIDKIT, "locate", annotation, *arguments, status=2)

    def test_places_out_of_sight(self):
        annotation = simulate("sight")
        self.assertEqual(
            f"gridkit: {annotation}: the satellite does not come abeam of that place within its state "
            "vectors\n", complaint(GRIDKIT, "locate", annotation, "--ground", -30, 11, 0))
        self.assertEqual(f"gridkit: {annotation}: the slant range does not reach that height\n",
                         complaint(GRIDKIT, "locate", annotation, 0, -1e6))

    def test_a_model_without_times_is_told(self):
        annotation = simulate("times")
        content = annotation.read_text()
        start = re.search("<start>.*?<timeUTC>([^<]*)<", content, re.S)[1]
        stop = re.search("<stop>.*?<timeUTC>([^<]*)<", content, re.S)
        annotation.write_text(content[:stop.start(1)] + start + content[stop.end(1):])
        self.assertEqual(f"gridkit: {annotation}: its pixels cannot be placed: the sensor model gives its "
                         "lines no times\n", complaint(GRIDKIT, "locate", annotation, 0, 0))


class RealAnnotations(unittest.TestCase):
    def test_corners_lie_within_two_metres_at_their_height(self):
        files = real_annotations()
        if not files:
            self.skipTest("none at hand")
        for file in files:
            copy = text(SIMULATE, "--images-for", file, FOLDER / "real").strip()
            for point in locate(copy, "--check"):
                # The centre's row and column are rounded to whole ones, by some lines.
                limit = 5 if point["point"] == "centre" else 2
                self.assertLess((point["along"]**2 + point["across"]**2)**0.5, limit, (file, point))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
