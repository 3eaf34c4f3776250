"""`gridkit locate` from the outside: places, checks, and what it refuses.

    locate_test.py BUILD FOLDER
"""
import json
import re
import subprocess
import sys
import unittest
from xml.etree import ElementTree

from programs import FOLDER, GRIDKIT, SIMULATE, complaint, real_annotations, run, simulate, text
from rasters import described


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


class Edges(unittest.TestCase):
    def test_places_outside_the_image_are_told(self):
        for variant in ("SSC", "GEC"):
            annotation = simulate("edges", "--variant", variant, lines=200, samples=240)
            for line, sample, inside in ((0, 0, True), (-0.5, 100, True), (-0.6, 100, False), (100, -2, False),
                                         (100, 100000, False)):
                with self.subTest(variant=variant, line=line, sample=sample):
                    seen = locate(annotation, "--", line, sample)
                    self.assertIs(inside, seen["inside"])
                    printed = text(GRIDKIT, "locate", annotation, "--", line, sample)
                    self.assertEqual(not inside, printed.endswith("  outside the image\n"), printed)
                    back = locate(annotation, "--ground", seen["latitude"], seen["longitude"],
                                  seen["height"] or 0)
                    self.assertAlmostEqual(line, back["line"], delta=1e-5)
                    if abs(line) != 0.5:
                        self.assertIs(inside, back["inside"])

    def test_strict_refuses_them(self):
        annotation = simulate("strict", lines=200, samples=240)
        inside = locate(annotation, 100, 100)
        self.assertEqual(inside, locate(annotation, 100, 100, "--strict"))
        place = ("--ground", inside["latitude"], inside["longitude"], inside["height"])
        self.assertTrue(locate(annotation, *place, "--strict")["inside"])
        self.assertEqual(f"gridkit: {annotation}: line 200.0, sample 7.0 lies outside the image of 200 lines and "
                         "240 samples\n", complaint(GRIDKIT, "locate", annotation, 200, 7, "--strict"))
        outside = locate(annotation, 100, 300)
        self.assertEqual(f"gridkit: {annotation}: line 100.0, sample 300.0 lies outside the image of 200 lines and "
                         "240 samples\n",
                         complaint(GRIDKIT, "locate", annotation, "--strict", "--ground", outside["latitude"],
                                   outside["longitude"], outside["height"]))


class WithoutImages(unittest.TestCase):
    def test_a_product_is_placed_as_with_them(self):
        for variant in ("SSC", "MGD"):
            with self.subTest(variant):
                annotation = simulate("pixels", "--variant", variant, "--centre", "-33.5,-70.25")
                calls = ((100, 90), (100, 90, "--height", 123), ("--check",),
                         ("--ground", -33.5, -70.25, 700))
                before = [locate(annotation, *call) for call in calls]
                [image] = (annotation.parent / "IMAGEDATA").iterdir()
                image.unlink()
                for product in (annotation, annotation.parent):
                    self.assertEqual(before, [locate(product, *call) for call in calls])
                self.assertEqual(f"gridkit: warning: {image}: no such image file; placing does without\n",
                                 run(GRIDKIT, "locate", annotation, 100, 90).stderr.decode())

    def test_an_image_on_a_map_cannot_be_placed(self):
        annotation = simulate("mapless", "--variant", "GEC")
        image = next((annotation.parent / "IMAGEDATA").iterdir())
        image.unlink()
        self.assertIn(f"{image}: no such image file", complaint(GRIDKIT, "locate", annotation, 10, 20))

    def test_a_fault_of_the_annotation_is_told_as_with_them(self):
        annotation = simulate("faulty")
        annotation.write_text(annotation.read_text().replace("<orbitCycle>", "<orbitCycle>x", 1))
        before = complaint(GRIDKIT, "locate", annotation, 10, 20)
        for image in (annotation.parent / "IMAGEDATA").iterdir():
            image.unlink()
        self.assertEqual(before, complaint(GRIDKIT, "locate", annotation, 10, 20))
        self.assertIn("orbitCycle", before)

    def test_a_model_that_cannot_be_made_is_told(self):
        annotation = simulate("vectors")
        content = annotation.read_text()
        annotation.write_text(re.sub("<numStateVectors>[^<]*", "<numStateVectors>100001", content))
        for image in (annotation.parent / "IMAGEDATA").iterdir():
            image.unlink()
        self.assertRegex(complaint(GRIDKIT, "locate", annotation, 10, 20),
                         f"^gridkit: {re.escape(str(annotation))}: its sensor model cannot be made: .*The annotation's "
                         "numStateVectors must be 0 to 100000 state vectors in its low 32 bits\n$")


class Check(unittest.TestCase):
    def test_every_variant_agrees_with_its_annotation(self):
        for variant in ("SSC", "MGD", "GEC", "EEC"):
            with self.subTest(variant=variant):
                annotation = simulate("check", "--variant", variant, "--height", 950)
                points = locate(annotation, "--check")["points"]
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
        points = locate(annotation, "--check")["points"]
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

    def changed(self, name, change, variant="SSC"):
        """A product whose annotation `change` has altered."""
        annotation = simulate(name, "--variant", variant)
        annotation.write_text(change(annotation.read_text()))
        return annotation

    def test_an_error_in_range_is_told(self):
        # The height that is solved for takes it up; the annotated range times of the points do not.
        later = 50 * 2 / 299792458

        def shift(content):
            first = re.search("<firstPixel>([^<]*)<", content)
            return (content[:first.start(1)] + f"{float(first[1]) + later:.17E}" + content[first.end(1):])

        annotation = self.changed("ranges", shift)
        done = run(GRIDKIT, "locate", "--json", annotation, "--check", status=1)
        for point in json.loads(done.stdout)["points"]:
            self.assertAlmostEqual(50, point["slantRange"], delta=0.01)
            self.assertLess(abs(point["azimuthTime"]), 5e-6)
            self.assertLess(abs(point["along"]) + abs(point["across"]), 0.5, "invisible on the ground")
        names = ["centre"] + [f"corner {i}" for i in range(1, 5)]
        said = done.stderr.decode().splitlines()
        self.assertRegex(said[0], "^gridkit: warning: .*GEOREF.xml: does not belong to this image: the columns of its "
                         "points are up to .* off those that their times tell; ")
        self.assertEqual([f"gridkit: {annotation}: {name}: its pixel's slant range is +50.0 m off the annotated "
                          "rangeTime" for name in names], said[1:])

    def test_an_error_in_time_is_told(self):
        def shift(content):
            place = re.search("<sceneCornerCoord>.*?<azimuthTimeUTC>[^<]*:([0-9.]*)Z?<", content, re.S)
            return (content[:place.start(1)] + f"{(float(place[1]) + 0.002) % 60:09.6f}" + content[place.end(1):])

        annotation = self.changed("times", shift)
        done = run(GRIDKIT, "locate", "--json", annotation, "--check", status=1)
        self.assertAlmostEqual(-0.002, json.loads(done.stdout)["points"][1]["azimuthTime"], delta=5e-6)
        self.assertRegex(done.stderr.decode(),
                         f"^gridkit: {re.escape(str(annotation))}: corner 1: its pixel's time is -[12][09][09][0-9] us off "
                         "the annotated azimuthTimeUTC\n$")

    def test_times_and_ranges_agree_to_the_precision_of_the_model(self):
        for variant in ("SSC", "MGD"):
            for point in locate(simulate("agree", "--variant", variant), "--check")["points"]:
                # Seconds of the day in single precision, 2 microseconds each; MGD's polynomial is a fit.
                self.assertLess(abs(point["azimuthTime"]), 5e-6)
                self.assertLess(abs(point["slantRange"]), 0.02)
        on_a_map = locate(simulate("agree", "--variant", "GEC"), "--check")["points"]
        self.assertEqual({(None, None)}, {(p["azimuthTime"], p["slantRange"]) for p in on_a_map})

    def test_every_heading_tells_its_unit(self):
        radar, maps = (text(GRIDKIT, "locate", simulate("heads", "--variant", v), "--check").splitlines()
                       for v in ("SSC", "GEC"))
        self.assertEqual("point line sample latitude, deg longitude, deg height, m along, m across, m at average "
                         "height, m time, us range, m", " ".join(radar[2].split()))
        self.assertEqual("point line sample latitude, deg longitude, deg north, m east, m", " ".join(maps[0].split()))

    def test_points_without_a_pixel_are_nothing_to_check(self):
        annotation = simulate("nopixels", "--profile", "minimal")
        self.assertIn("its centre and corner coordinates name no row and column to check",
                      complaint(GRIDKIT, "locate", annotation, "--check"))


class RationalModels(unittest.TestCase):
    OFFSETS = [f"{name}_{part}" for part in ("OFF", "SCALE") for name in ("LINE", "SAMP", "LAT", "LONG", "HEIGHT")]
    COEFFICIENTS = [f"{name}_{part}_COEFF" for name in ("LINE", "SAMP") for part in ("NUM", "DEN")]
    QUALITY = ["ERR_LINE", "ERR_SAMP", "MIN_HEIGHT", "MAX_HEIGHT", "delays"]

    def test_gdal_places_the_targets_by_them(self):
        """The way of a user: coefficients in the file that GDAL looks for beside an image."""
        for variant, options in (("SSC", ()), ("MGD", ("--start-with", "LATEAZFARRG")),
                                 ("SSC", ("--centre", "-16.8,179.99", "--look", "left"))):
            with self.subTest(variant=variant, options=options):
                annotation = simulate("rpc", "--variant", variant, *options, lines=900, samples=700)
                image = FOLDER / "image.tif"
                run(GRIDKIT, "read", annotation, "X_HH_MAGNITUDE_1", image, "--overwrite")
                (FOLDER / "image_RPC.TXT").write_text(text(GRIDKIT, "locate", "--rpc", annotation))
                document = locate(annotation, "--rpc")
                domain = described(image)["metadata"]["RPC"]
                for name in self.OFFSETS:
                    self.assertEqual(document[name], float(domain[name]), name)
                for name in self.COEFFICIENTS:
                    self.assertEqual(document[name], [float(c) for c in domain[name].split()], name)
                targets = truth(annotation)["targets"]
                lines = "\n".join(f"{t['longitude']!r} {t['latitude']!r} {t['height']!r}" for t in targets)
                done = subprocess.run(["gdaltransform", "-rpc", "-i", str(image)], input=lines.encode(),
                                      capture_output=True, check=True)
                places = [tuple(map(float, line.split())) for line in done.stdout.decode().splitlines()]
                for target, (x, y, _) in zip(targets, places):
                    # GDAL counts pixels by their corners.
                    self.assertAlmostEqual(target["sample"] + 0.5, x, delta=0.02)
                    self.assertAlmostEqual(target["line"] + 0.5, y, delta=0.02)

    def test_json_has_them_by_gdals_names(self):
        document = locate(simulate("names"), "--rpc")
        self.assertEqual(set(self.OFFSETS + self.COEFFICIENTS + self.QUALITY), set(document))
        for name in self.COEFFICIENTS:
            self.assertEqual(20, len(document[name]))
        self.assertEqual((-500, 9000), (document["MIN_HEIGHT"], document["MAX_HEIGHT"]))
        self.assertEqual(((300 - 1) / 2, (260 - 1) / 2), (document["LINE_OFF"], document["SAMP_OFF"]))
        self.assertLess(document["ERR_LINE"], 0.01)
        self.assertLess(document["ERR_SAMP"], 0.01)

    def test_heights_can_be_asked_for(self):
        document = locate(simulate("heights"), "--rpc", "--heights", -10, 90)
        self.assertEqual((-10, 90), (document["MIN_HEIGHT"], document["MAX_HEIGHT"]))
        self.assertEqual((40, 50), (document["HEIGHT_OFF"], document["HEIGHT_SCALE"]))

    def test_a_model_that_misses_its_goal_is_told(self):
        annotation = simulate("misses", "--incidence", 16, "--empty-images", lines=4000, samples=16000)
        done = run(GRIDKIT, "locate", "--rpc", "--json", annotation, "--heights", -500, 100000)
        self.assertGreater(json.loads(done.stdout)["ERR_SAMP"], 0.01)
        self.assertRegex(done.stderr.decode(),
                         f"^gridkit: warning: {re.escape(str(annotation))}: the rational model is off by up to [^ ]* lines "
                         "and [^ ]* samples, more than 0.01 pixel\n$")

    def test_an_image_on_a_map_has_none(self):
        annotation = simulate("maprpc", "--variant", "GEC")
        self.assertEqual(f"gridkit: {annotation}: an image on a map has a map and no sensor model to fit\n",
                         complaint(GRIDKIT, "locate", annotation, "--rpc"))

    def test_wrong_use_exits_with_two(self):
        annotation = simulate("rpcuse")
        for arguments in (("--rpc", 1, 2), ("--rpc", "--check"), ("--rpc", "--ground", 1, 2, 3), ("--rpc", "--strict"),
                          ("--heights", 1, 2), ("--rpc", "--heights", 1)):
            run(GRIDKIT, "locate", annotation, *arguments, status=2)
        for said, arguments in (("--heights: the lowest comes first, then the highest", ("--heights", 9, 9)),
                                ("--heights: must be a finite number", ("--heights", 0, "inf"))):
            self.assertIn(said, complaint(GRIDKIT, "locate", annotation, "--rpc", *arguments, status=2))


class Refusals(unittest.TestCase):
    def test_wrong_use_exits_with_two(self):
        annotation = simulate("use")
        for arguments in ((), (1,), (1, 2, "--check"), ("--ground", 1, 2), ("--height", 3),
                          ("--check", "--ground", 1, 2, 3), (1, 2, "--ground", 1, 2, 3)):
            run(GRIDKIT, "locate", annotation, *arguments, status=2)

    def test_numbers_that_are_no_places_are_wrong_use(self):
        annotation = simulate("numbers")
        for said, arguments in (("LINE: must be a finite number", ("nan", 1)),
                                ("SAMPLE: must be a finite number", (1, "inf")),
                                ("--height: must be a finite number", (1, 2, "--height", "nan")),
                                ("--ground: must be a finite number", ("--ground", 1, "nan", 2)),
                                ("--ground: a latitude lies between -90 and 90 degrees", ("--ground", 90.001, 1, 2)),
                                ("--ground: a latitude lies between -90 and 90 degrees", ("--ground", -91, 1, 2)),
                                ("--ground: a longitude lies between -360 and 360 degrees",
                                 ("--ground", 1, 361, 2))):
            with self.subTest(arguments):
                self.assertIn(said, complaint(GRIDKIT, "locate", annotation, *arguments, status=2))
        eastward = locate(annotation, "--ground", 48.08, 11.28, 600)
        self.assertAlmostEqual(eastward["line"], locate(annotation, "--ground", 48.08, 371.28 - 720, 600)["line"],
                               delta=1e-6)

    def test_places_out_of_sight(self):
        annotation = simulate("sight")
        self.assertEqual(f"gridkit: {annotation}: that place lies on the far side of the Earth\n",
                         complaint(GRIDKIT, "locate", annotation, "--ground", -48, -169, 0))
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


class GeolocationGrids(unittest.TestCase):
    DELAYS = ("--troposphere", 14, "--ionosphere", 2, "--azimuth-shift", -180)
    RANGE_DELAY, SHIFT = 16e-9, -180e-6

    def mountains(self, name, *options):
        return simulate(name, "--relief", 300, *self.DELAYS, *options, lines=400, samples=360)

    def grid(self, annotation):
        return annotation.parent / "ANNOTATION" / "GEOREF.xml"

    def test_delays_bring_targets_to_their_pixels(self):
        for variant, options in (("SSC", ()), ("MGD", ("--start-with", "LATEAZFARRG")),
                                 ("SSC", ("--centre", "-33.5,-70.25", "--pass", "ascending", "--look", "left"))):
            annotation = self.mountains("delays", "--variant", variant, *options)
            for target in truth(annotation)["targets"]:
                with self.subTest(variant=variant, target=target["name"]):
                    place = target["latitude"], target["longitude"], target["height"]
                    seen = locate(annotation, "--ground", *place)
                    self.assertIs(True, seen["delays"])
                    self.assertAlmostEqual(target["line"], seen["line"], delta=0.02)
                    self.assertAlmostEqual(target["sample"], seen["sample"], delta=0.02)
                    found = locate(annotation, target["line"], target["sample"], "--height", target["height"])
                    self.assertAlmostEqual(target["latitude"], found["latitude"], delta=1e-6)
                    self.assertAlmostEqual(target["longitude"], found["longitude"], delta=1e-6)
                    self.assertIn("  delays applied", text(GRIDKIT, "locate", annotation, "--ground", *place))

    def test_without_them_places_are_off_by_delay_and_shift(self):
        annotation = self.mountains("left_out")
        content = annotation.read_text()
        first, last = (float(re.search(f"<{tag}>([^<]*)<", content)[1]) for tag in ("firstPixel", "lastPixel"))
        start, stop = (re.search(f"<{tag}>.*?<timeUTC>[^<]*:([0-9.]*)Z?<", content, re.S)[1] for tag in ("start", "stop"))
        samples = self.RANGE_DELAY / (last - first) * (360 - 1)
        lines = self.SHIFT / (float(stop) - float(start)) * (400 - 1)
        for target in truth(annotation)["targets"]:
            seen = locate(annotation, "--no-delays", "--ground", target["latitude"], target["longitude"],
                          target["height"])
            self.assertIs(False, seen["delays"])
            self.assertAlmostEqual(target["line"] - lines, seen["line"], delta=0.02)
            self.assertAlmostEqual(target["sample"] - samples, seen["sample"], delta=0.02)
        self.assertNotIn("delays", text(GRIDKIT, "locate", annotation, 10, 20, "--no-delays"))

    def test_height_of_the_terrain_is_the_grids(self):
        annotation = self.mountains("terrain")
        points = {(int(p.find("row").text) - 1, int(p.find("col").text) - 1): float(p.find("height").text)
                  for p in ElementTree.parse(self.grid(annotation)).iter("gridPoint")}
        for (line, sample), height in list(points.items())[:30]:
            if line < 400 and sample < 360:
                seen = locate(annotation, line, sample, "--height", "terrain")
                self.assertAlmostEqual(height, seen["height"], delta=1e-9)
        # A quarter of the way from one point to the next, both ways.
        (l0, l1), (s0, s1) = (sorted({place[i] for place in points})[:2] for i in (0, 1))
        between = locate(annotation, l0 + (l1 - l0) / 4, s0 + (s1 - s0) / 4, "--height", "terrain")
        self.assertAlmostEqual((9 * points[l0, s0] + 3 * points[l0, s1] + 3 * points[l1, s0] + points[l1, s1]) / 16,
                               between["height"], delta=1e-9)
        self.assertIn("lies outside the image", complaint(GRIDKIT, "locate", annotation, 400, 7, "--height", "terrain"))
        self.assertIn("--height: must be a number of metres, or terrain",
                      complaint(GRIDKIT, "locate", annotation, 1, 2, "--height", "sea", status=2))

    def test_every_point_of_the_grid_is_checked(self):
        for variant in ("SSC", "MGD"):
            annotation = self.mountains("checked", "--variant", variant)
            points = len(list(ElementTree.parse(self.grid(annotation)).iter("gridPoint")))
            checked = locate(annotation, "--check")
            self.assertIs(True, checked["delays"])
            grid = checked["grid"]
            self.assertEqual(points, grid["points"])
            # The record holds seconds in single precision: 2 microseconds or 15 mm along the track.
            for name, most in (("along", 0.02), ("across", 0.001), ("height", 0.001)):
                self.assertLess(grid[name]["worst"], most, name)
                self.assertLessEqual(abs(grid[name]["mean"]), grid[name]["worst"])
                self.assertLessEqual(grid[name]["std"], grid[name]["worst"])
            without = locate(annotation, "--check", "--no-delays")
            self.assertIs(False, without["delays"])
            # Half the way of light in the delay, and 180 microseconds at some 7 km/s.
            self.assertAlmostEqual(-self.RANGE_DELAY * 299792458 / 2, without["grid"]["across"]["mean"], delta=0.001)
            self.assertAlmostEqual(-self.SHIFT * 7080, without["grid"]["along"]["mean"], delta=0.05)
            printed = text(GRIDKIT, "locate", annotation, "--check")
            self.assertIn("delays applied: 16.000 ns in range time, -180.0 us in azimuth time\n", printed)
            self.assertRegex(printed, f"geolocation grid, {points} points +mean, m +scatter, m +worst, m\n"
                             "  along the track +[^\n]*\n  across, line of sight [^\n]*\n  height [^\n]*\n$")

    def test_points_that_lie_elsewhere_are_told(self):
        annotation = self.mountains("elsewhere")
        grid = self.grid(annotation)
        content = grid.read_text()
        latitude = re.search("<lat>([^<]*)<", content)
        grid.write_text(content[:latitude.start(1)] + str(float(latitude[1]) + 0.001) + content[latitude.end(1):])
        done = run(GRIDKIT, "locate", annotation, "--check", status=1)
        self.assertRegex(done.stderr.decode(), "^gridkit: .*: points of the geolocation grid lie up to 1[01][0-9].[0-9] m "
                         "along and [0-9.]* m across the line of sight from where the model has them\n$")

    def test_a_grid_that_cannot_be_used_is_a_warning(self):
        annotation = self.mountains("unusable")
        plain = locate(annotation, 10, 20, "--no-delays")
        self.grid(annotation).write_text("<geoReference>")
        done = run(GRIDKIT, "locate", "--json", annotation, 10, 20)
        self.assertEqual(plain, json.loads(done.stdout))
        self.assertRegex(done.stderr.decode(), "^gridkit: warning: .*/ANNOTATION/GEOREF.xml:1:15: /geoReference: .*; the "
                         "geolocation grid is not used, and no delays are applied\n$")
        self.assertEqual(b"", run(GRIDKIT, "locate", "--no-delays", annotation, 10, 20).stderr)
        self.assertIn("it has no geolocation grid, which alone tells the terrain's height",
                      run(GRIDKIT, "locate", annotation, 10, 20, "--height", "terrain", status=1).stderr.decode())

    def test_a_product_without_a_grid_has_no_delays(self):
        annotation = simulate("gridless", "--profile", "minimal")
        self.assertIs(False, locate(annotation, 10, 20)["delays"])
        self.assertIs(False, locate(simulate("map", "--variant", "GEC"), 10, 20)["delays"])

    def test_the_rational_model_has_the_delays(self):
        annotation = self.mountains("fitted")
        self.assertIs(True, locate(annotation, "--rpc")["delays"])
        self.assertIs(False, locate(annotation, "--rpc", "--no-delays")["delays"])
        image = FOLDER / "fitted.tif"
        run(GRIDKIT, "read", annotation, "X_HH_MAGNITUDE_1", image, "--overwrite")
        (FOLDER / "fitted_RPC.TXT").write_text(text(GRIDKIT, "locate", "--rpc", annotation))
        targets = truth(annotation)["targets"]
        lines = "\n".join(f"{t['longitude']!r} {t['latitude']!r} {t['height']!r}" for t in targets)
        done = subprocess.run(["gdaltransform", "-rpc", "-i", str(image)], input=lines.encode(),
                              capture_output=True, check=True)
        for target, line in zip(targets, done.stdout.decode().splitlines()):
            x, y, _ = map(float, line.split())
            self.assertAlmostEqual(target["sample"] + 0.5, x, delta=0.02)
            self.assertAlmostEqual(target["line"] + 0.5, y, delta=0.02)


class RealAnnotations(unittest.TestCase):
    def test_corners_lie_within_two_metres_at_their_height(self):
        files = real_annotations()
        if not files:
            self.skipTest("none at hand")
        for file in files:
            for point in locate(file, "--check")["points"]:
                # The centre's row and column are rounded to whole ones, by some lines.
                limit = 5 if point["point"] == "centre" else 2
                self.assertLess((point["along"]**2 + point["across"]**2)**0.5, limit, (file, point))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
