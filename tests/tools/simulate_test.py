"""Simulated products as a user asks for them: what is replaced and what is kept, images for annotations that
exist, terrain and geolocation grids against an orbit, an ellipsoid and a blend of heights of this test's own.

    simulate_test.py BUILD FOLDER
"""
import json
import math
import re
import shutil
import struct
import unittest
import xml.etree.ElementTree as ElementTree

from image_files import Tiff, findings, image_of
from programs import ANNOTATION, FOLDER, SIMULATE, complaint, main, run, simulate, text

LIGHT = 299792458.0
SEMIMAJOR, FLATTENING = 6378137.0, 1 / 298.257223563
DELAYS = ("--troposphere", 14.5, "--ionosphere", 0.25, "--azimuth-shift", -180)
RANGE_DELAY, SHIFT = 14.75e-9, -180e-6


def earth_fixed(latitude, longitude, height):
    """Of geodetic degrees and metres."""
    lat, lon = math.radians(latitude), math.radians(longitude)
    e2 = FLATTENING * (2 - FLATTENING)
    normal = SEMIMAJOR / math.sqrt(1 - e2 * math.sin(lat) ** 2)
    return ((normal + height) * math.cos(lat) * math.cos(lon), (normal + height) * math.cos(lat) * math.sin(lon),
            (normal * (1 - e2) + height) * math.sin(lat))


def dot(a, b):
    return sum(x * y for x, y in zip(a, b))


class Orbit:
    """Through all states of the truth, by Lagrange's polynomial; in the middle of twelve of them, 10 s apart, it
    is good to far below a millimetre."""

    def __init__(self, truth):
        self.states = truth["orbit"]

    def at(self, time):
        weights = []
        for i, own in enumerate(self.states):
            weight = 1.0
            for k, other in enumerate(self.states):
                if k != i:
                    weight *= (time - other["time"]) / (own["time"] - other["time"])
            weights.append(weight)
        return tuple(tuple(sum(w * s[kind][axis] for w, s in zip(weights, self.states)) for axis in range(3))
                     for kind in ("position", "velocity"))

    def sees(self, point):
        """Time of closest approach, and two-way range time then."""
        time = 0.0
        for _ in range(20):
            position, velocity = self.at(time)
            sight = tuple(p - s for p, s in zip(point, position))
            step = dot(sight, velocity) / dot(velocity, velocity)
            time += step
            if abs(step) < 1e-12:
                break
        position, _ = self.at(time)
        return time, 2 * math.dist(point, position) / LIGHT


class Heights:
    """A GeoTIFF of 32-bit floats on latitudes and longitudes, one strip a line, blended between centres."""
    STRIPS, SCALE, TIE_POINT = 273, 33550, 33922

    def __init__(self, path):
        tiff = Tiff(path)
        self.width, self.height = (tiff.values(tag)[0] for tag in (256, 257))
        self.lines = [struct.unpack_from(f"<{self.width}f", tiff.data, at) for at in tiff.values(self.STRIPS)]
        self.step, step_down, _ = tiff.values(self.SCALE)
        _, _, _, self.west, self.north, _ = tiff.values(self.TIE_POINT)
        assert step_down == self.step

    def at(self, latitude, longitude):
        y, x = (self.north - latitude) / self.step - 0.5, (longitude - self.west) / self.step - 0.5
        row, column = math.floor(y), math.floor(x)
        v, u = y - row, x - column
        above, below = self.lines[row], self.lines[row + 1]
        return ((above[column] * (1 - u) + above[column + 1] * u) * (1 - v) +
                (below[column] * (1 - u) + below[column + 1] * u) * v)


def slope_factor(orbit, heights, place):
    """sin(theta) / sin(theta - slope towards the satellite), by heights 20 m to either side in the direction of
    range on the ground."""
    lat, lon, height = place["latitude"], place["longitude"], place["height"]
    point = earth_fixed(lat, lon, height)
    satellite, _ = orbit.at(orbit.sees(point)[0])
    up, east, north = (tuple(b - a for a, b in zip(point, earth_fixed(*there)))
                       for there in ((lat, lon, height + 1), (lat, lon + 1e-6, height), (lat + 1e-6, lon, height)))
    sight = tuple(s - p for s, p in zip(satellite, point))
    x, y, z = (dot(sight, axis) / math.hypot(*axis) for axis in (east, north, up))
    incidence, ground = math.atan2(math.hypot(x, y), z), math.hypot(x, y)

    def height_towards(metres):
        return heights.at(lat + metres * y / ground / math.hypot(*north) * 1e-6,
                          lon + metres * x / ground / math.hypot(*east) * 1e-6)
    slope = math.atan((height_towards(-20) - height_towards(20)) / 40)
    return math.sin(incidence) / math.sin(incidence - slope)


def truth_of(product):
    return json.loads((product.parent / "truth.json").read_text())


def grid_of(product):
    return ElementTree.parse(product.parent / "ANNOTATION" / "GEOREF.xml").getroot()


def numbers(point, *names):
    return [float(point.find(name).text) for name in names]


class Grids(unittest.TestCase):
    def check_points(self, product, heights=None):
        truth, grid = truth_of(product), grid_of(product)
        orbit = Orbit(truth)
        points = grid.findall("geolocationGrid/gridPoint")
        start, near = truth["start"], float(grid.find("geolocationGrid/gridReferenceTime/tauReferenceTime").text)
        self.assertEqual(near, truth["firstRangeTime"])
        self.assertGreaterEqual(len(points), 9)
        for point in points:
            t, tau, lat, lon, height, incidence = numbers(point, "t", "tau", "lat", "lon", "height", "inc")
            place = earth_fixed(lat, lon, height)
            time, delay = orbit.sees(place)
            # 1e-9 s is 7 micrometres of flight, 1e-13 s are 15 micrometres of range.
            self.assertAlmostEqual(start + t - SHIFT, time, delta=2e-9)
            self.assertAlmostEqual(near + tau - RANGE_DELAY, delay, delta=1e-13)
            position, _ = orbit.at(time)
            up = earth_fixed(lat, lon, height + 1)
            sight = tuple(s - p for s, p in zip(position, place))
            cosine = dot(sight, tuple(u - p for u, p in zip(up, place))) / math.hypot(*sight)
            self.assertAlmostEqual(math.degrees(math.acos(cosine)), incidence, delta=1e-6)
            if heights:
                self.assertAlmostEqual(heights.at(lat, lon), height, delta=1e-3)
            else:
                self.assertAlmostEqual(600, height, delta=1e-5)
        return points

    def test_places_are_where_the_pixels_are_once_delays_and_shift_are_applied(self):
        for variant in ("SSC", "MGD", "GEC"):
            with self.subTest(variant):
                self.check_points(simulate("grid", "--variant", variant, *DELAYS))

    def test_places_lie_on_the_terrain(self):
        for variant in ("SSC", "MGD", "EEC"):
            with self.subTest(variant):
                product = simulate("hills", "--variant", variant, "--relief", 900, *DELAYS)
                self.check_points(product, Heights(product.parent / "terrain.tif"))

    def test_points_are_even_in_time_and_tell_their_row_and_column(self):
        product = simulate("even", "--variant", "SSC", *DELAYS)
        truth, grid = truth_of(product), grid_of(product)
        # Steps are an eighth of the image: 37 of 300 lines, 32 of 260 samples; 300 = 8 x 37 + 4.
        points = grid.findall("geolocationGrid/gridPoint")
        sizes = [int(grid.find(f"geolocationGrid/numberOfGridPoints/{n}").text) for n in ("total", "azimuth", "range")]
        self.assertEqual([10 * 10, 10, 10], sizes)
        self.assertEqual(sizes[0], len(points))
        for i, point in enumerate(points):
            azimuth, across = divmod(i, 10)
            self.assertEqual((str(azimuth + 1), str(across + 1)), (point.get("iaz"), point.get("irg")))
            self.assertEqual([str(37 * azimuth + 1), str(32 * across + 1)],
                             [point.find(n).text for n in ("row", "col")])
            t, tau = numbers(point, "t", "tau")
            self.assertAlmostEqual(37 * azimuth * truth["lineSpacing"], t, delta=1e-12)
            self.assertAlmostEqual(32 * across * truth["sampleSpacing"], tau, delta=1e-17)

    def test_rows_and_columns_follow_a_turned_raster(self):
        product = simulate("turned", "--variant", "MGD", "--start-with", "LATEAZFARRG")
        first = grid_of(product).find("geolocationGrid/gridPoint")
        self.assertEqual(["300", "260"], [first.find(n).text for n in ("row", "col")])

    def test_delays_and_shift_are_told(self):
        grid = grid_of(simulate("told", *DELAYS))
        effects = grid.find("signalPropagationEffects")
        told = {(e.tag, e.get("source")): float(e.find("coefficient").text) for e in effects}
        self.assertEqual({("rangeDelay", "IONO"): 0.25e-9, ("rangeDelay", "ATMOS"): 14.5e-9,
                          ("azimuthShift", "TIMING"): -180e-6}, told)
        none = grid_of(simulate("none")).find("signalPropagationEffects")
        self.assertEqual({0.0}, {float(e.find("coefficient").text) for e in none})

    def test_leap_seconds_are_those_of_the_date(self):
        for start, ahead, since in (("2008-03-12T05:17:46", 14, "2006-01-01"), ("2021-05-01T12:00:00", 18, "2017-01-01")):
            time = grid_of(simulate("leap", "--start", start)).find("referenceFrames/time")
            self.assertEqual(ahead, float(time.find("diffUTC_GPS").text))
            self.assertEqual(since + "T00:00:00.000000Z", time.find("lastLeapSecondUTC").text)


class Terrain(unittest.TestCase):
    def check_targets(self, product, heights):
        truth = truth_of(product)
        orbit = Orbit(truth)
        self.assertEqual(9, len(truth["targets"]))
        for target in truth["targets"]:
            lat, lon, height = (target[n] for n in ("latitude", "longitude", "height"))
            self.assertAlmostEqual(heights.at(lat, lon), height, delta=1e-3)
            time, delay = orbit.sees(earth_fixed(lat, lon, height))
            self.assertAlmostEqual(time, target["azimuthTime"], delta=2e-9)
            self.assertAlmostEqual(delay, target["rangeTime"], delta=1e-13)
            line = (time + SHIFT - truth["start"]) / (truth["stop"] - truth["start"]) * 299
            self.assertAlmostEqual(line, target["line"], delta=1e-4)
            yield target, delay + RANGE_DELAY, truth

    def test_targets_of_complex_images_stand_on_it(self):
        product = simulate("ssc", "--relief", 900, *DELAYS)
        for target, delay, truth in self.check_targets(product, Heights(product.parent / "terrain.tif")):
            self.assertAlmostEqual((delay - truth["firstRangeTime"]) * truth["rsf"], target["sample"], delta=1e-4)

    def test_targets_of_ground_range_images_stand_on_it(self):
        product = simulate("mgd", "--variant", "MGD", "--relief", 900, *DELAYS)
        for target, delay, truth in self.check_targets(product, Heights(product.parent / "terrain.tif")):
            since = delay - truth["slantToGround"]["reference"]
            ground = sum(c * since ** k for k, c in enumerate(truth["slantToGround"]["coefficients"]))
            self.assertAlmostEqual(ground / truth["sampleSpacing"], target["sample"], delta=1e-3)

    def test_relief_bounds_the_heights(self):
        product = simulate("bounds", "--relief", 900, "--height", 1500)
        told, heights = truth_of(product)["terrain"], Heights(product.parent / "terrain.tif")
        lowest, highest = (f(f(line) for line in heights.lines) for f in (min, max))
        self.assertEqual({"file": "terrain.tif", "lowest": lowest, "highest": highest}, told)
        self.assertGreaterEqual(lowest, 1050)
        self.assertLessEqual(highest, 1950)
        self.assertGreater(highest - lowest, 400)

    def test_a_model_that_was_written_serves_as_one_that_is_read(self):
        made = simulate("made", "--relief", 900, *DELAYS)
        model = FOLDER / "model.tif"
        shutil.copy(made.parent / "terrain.tif", model)
        read = simulate("read", "--dem", model, *DELAYS)
        self.assertEqual(str(model), truth_of(read)["terrain"]["file"])
        for own, other in zip(truth_of(made)["targets"], truth_of(read)["targets"]):
            for name in ("latitude", "longitude"):
                self.assertAlmostEqual(own[name], other[name], delta=1e-9)
            self.assertAlmostEqual(own["height"], other["height"], delta=1e-3)
        self.assertFalse((read.parent / "terrain.tif").exists())

    def test_variants_of_one_scene_share_it(self):
        ssc, eec = (simulate(v, "--variant", v, "--relief", 900) for v in ("SSC", "EEC"))
        model = Heights(ssc.parent / "terrain.tif")
        for target in truth_of(eec)["targets"]:
            self.assertAlmostEqual(model.at(target["latitude"], target["longitude"]), target["height"], delta=1e-3)

    def test_slopes_show_in_the_image(self):
        # Texture and speckle of two images are the same; what differs is the factor of the slopes.
        def powers(*options):
            cosar = image_of(simulate("slopes", "--targets", 0, *options), ".cos").read_bytes()

            def around(line, sample):
                at = [(line + l + 4) * 4 * 262 + 4 * (sample + s + 2) for l in range(-2, 3) for s in range(-2, 3)]
                return sum(i * i + q * q for i, q in (struct.unpack_from(">hh", cosar, a) for a in at))
            return around
        product = simulate("places", "--relief", 3000)
        truth, heights = truth_of(product), Heights(product.parent / "terrain.tif")
        hilly, even = powers("--relief", 3000), powers("--relief", 0.001)
        orbit, factors = Orbit(truth), []
        for target in truth["targets"]:
            line, sample = round(target["line"]), round(target["sample"])
            expected = slope_factor(orbit, heights, target)
            factors.append(expected)
            # Slopes change within the 5 x 5 pixels that are summed and the 4 from node to node of the factors.
            self.assertAlmostEqual(1, hilly(line, sample) / even(line, sample) / expected, delta=0.05)
        self.assertGreater(max(abs(factor - 1) for factor in factors), 0.2)

    def test_what_cannot_be_a_terrain_model_is_told(self):
        not_there = complaint(SIMULATE, FOLDER / "x", "--dem", FOLDER / "none.tif")
        self.assertIn("none.tif", not_there)
        self.assertIn("tsx-simulate: a GEC lies on the ellipsoid and has no terrain model",
                      complaint(SIMULATE, FOLDER / "x", "--variant", "GEC", "--relief", 10, status=2))
        elsewhere = simulate("elsewhere", "--relief", 100, "--centre", "10,20").parent / "terrain.tif"
        self.assertRegex(complaint(SIMULATE, FOLDER / "x", "--dem", elsewhere),
                         r"^tsx-simulate: the terrain model has no height at latitude 48\.\d+, longitude 11\.\d+\n$")
        plain = simulate("plain", "--variant", "MGD").parent / "PREVIEW" / "BROWSE.tif"
        self.assertRegex(complaint(SIMULATE, FOLDER / "x", "--dem", plain),
                         rf"^tsx-simulate: {re.escape(str(plain))}: a terrain model without a map \(.*\)\n$")


class Existing(unittest.TestCase):
    def test_a_product_that_is_there_is_kept(self):
        product = simulate("kept", "--seed", 1)
        image = image_of(product, ".cos")
        before = image.read_bytes()
        again = (SIMULATE, FOLDER / "kept", "--lines", 300, "--samples", 260, "--seed", 2)
        self.assertEqual(f"tsx-simulate: {product.parent}: exists already; --overwrite replaces it\n",
                         complaint(*again))
        self.assertEqual(before, image.read_bytes())
        self.assertEqual(f"{product}\n", text(*again, "--overwrite"))
        self.assertNotEqual(before, image.read_bytes())

    def test_dual_polarisation_is_told_in_name_and_type(self):
        product = simulate("dual", "--polarisations", "HH,VV")
        self.assertIn("_SM_D_SRA_", product.name)
        self.assertIn("<productType>SSC____SM_D</productType>", product.read_text())


class ImagesFor(unittest.TestCase):
    def remade(self, product, *options):
        """Image files made anew for a product that lost them."""
        shutil.rmtree(product.parent / "IMAGEDATA")
        done = run(SIMULATE, "--images-for", product, *options)
        self.assertEqual(f"{product}\n", done.stdout.decode())
        return done.stderr.decode()

    def test_they_are_those_of_the_product(self):
        for variant, ending, where in (("SSC", ".cos", ""), ("MGD", ".tif", ""),
                                       ("GEC", ".tif", ", on UTM zone 32 N, WGS84"),
                                       ("EEC", ".tif", ", on UTM zone 32 N, WGS84")):
            with self.subTest(variant):
                product = simulate("again", "--variant", variant, "--targets", 4, "--seed", 3)
                before = image_of(product, ending).read_bytes()
                said = self.remade(product, "--targets", 4, "--seed", 3)
                self.assertEqual(f"tsx-simulate: 1 image of 300 lines x 260 samples was written{where}\n", said)
                self.assertEqual([], findings(product, status=0))
                after = image_of(product, ending).read_bytes()
                self.assertEqual(len(before), len(after))
                # The texture's scale is the annotation's rounded spacing; targets and speckle are the same.
                same = sum(a == b for a, b in zip(before, after)) / len(before)
                self.assertGreater(same, 0.9)

    def test_maps_of_both_poles_and_the_south_are_the_annotations(self):
        for options in (("--centre=-10,-179.999",), ("--projection", "UPS", "--centre", "78,15", "--pass", "ascending"),
                        ("--projection", "UPS", "--centre=-75,15")):
            product = simulate("maps", "--variant", "GEC", *options)
            before = image_of(product, ".tif").read_bytes()
            self.remade(product)
            self.assertEqual([], findings(product, status=0))
            for tag in (33550, 33922, 34735):
                product_tiff = Tiff(image_of(product, ".tif"))
                other = FOLDER / "before.tif"
                other.write_bytes(before)
                for own, was in zip(product_tiff.values(tag), Tiff(other).values(tag)):
                    self.assertAlmostEqual(was, own, delta=0.02)

    def test_seed_and_targets_are_honoured(self):
        product = simulate("content")
        images = []
        for options in (("--seed", 1), ("--seed", 2), ("--targets", 0)):
            self.remade(product, *options)
            images.append(image_of(product, ".cos").read_bytes())
        self.assertEqual(3, len(set(images)))

    def test_an_image_that_is_there_is_kept_with_a_word(self):
        product = simulate("one_kept", "--polarisations", "HH,VV")
        kept, made = (product.parent / "IMAGEDATA" / f"IMAGE_{p}_SRA_strip_005.cos" for p in ("HH", "VV"))
        kept.write_bytes(b"mine")
        made.unlink()
        done = run(SIMULATE, "--images-for", product)
        self.assertEqual(f"tsx-simulate: {kept}: kept as it is; --overwrite replaces it\n"
                         "tsx-simulate: 1 image of 300 lines x 260 samples was written\n", done.stderr.decode())
        self.assertEqual(b"mine", kept.read_bytes())
        done = run(SIMULATE, "--images-for", product, "--overwrite")
        self.assertEqual("tsx-simulate: 2 images of 300 lines x 260 samples were written\n", done.stderr.decode())
        self.assertEqual(made.stat().st_size, kept.stat().st_size)
        done = run(SIMULATE, "--images-for", product)
        self.assertIn("tsx-simulate: no image was written\n", done.stderr.decode())

    def test_another_annotation_of_the_name_is_kept(self):
        product = simulate("mine")
        elsewhere = FOLDER / "elsewhere"
        shutil.rmtree(elsewhere, ignore_errors=True)
        command = (SIMULATE, "--images-for", product, elsewhere)
        self.assertEqual(f"{elsewhere / product.name}\n", text(*command))
        self.assertEqual(f"{elsewhere / product.name}\n", text(*command), "the same one may be there")
        (elsewhere / product.name).write_text("other")
        self.assertEqual(f"tsx-simulate: {elsewhere / product.name}: exists already; --overwrite replaces it\n",
                         complaint(*command))
        self.assertEqual("other", (elsewhere / product.name).read_text())

    def test_options_of_scenes_are_refused(self):
        product = simulate("options")
        for option in ("--variant=MGD", "--lines=100", "--centre=1,2", "--relief=10", "--bursts=2", "--mode=scansar"):
            said = complaint(SIMULATE, "--images-for", product, option, status=2)
            self.assertIn(f"{option.split('=')[0]} cannot be used with --images-for: the annotation tells it", said)

    def test_what_its_images_cannot_have_is_refused(self):
        complex_one, detected = simulate("complex"), simulate("detected", "--variant", "MGD")
        for product, option, said in (
                (complex_one, "--edge-taper=66", "the edge taper must be 0 to 1000 samples and a quarter of a line at most"),
                (detected, "--sample-type=half", f"{detected}: only its complex images could have a sample type, record "
                                                 "padding and an edge taper")):
            self.assertIn(said, complaint(SIMULATE, "--images-for", product, option, "--overwrite", status=2))
        run(SIMULATE, "--images-for", complex_one, "--sample-type", "half", "--overwrite")
        self.assertIn("half-precision floats", run(ANNOTATION, "check", "--images", complex_one, status=1).stderr.decode())

    def test_names_that_lead_elsewhere_are_refused(self):
        product = simulate("climbing")
        product.write_text(product.read_text().replace("<path>IMAGEDATA<", "<path>../../IMAGEDATA<"))
        self.assertIn(": outside the annotation's folder; nothing written\n",
                      complaint(SIMULATE, "--images-for", product))
        self.assertFalse((product.parent.parent.parent / "IMAGEDATA").exists())

    def test_a_map_that_cannot_be_drawn_is_told(self):
        product = simulate("datum", "--variant", "GEC")
        annotation = product.read_text()
        product.write_text(re.sub(r"<geodeticDatumID>[^<]*<", "<geodeticDatumID>ED50<", annotation))
        self.assertEqual(f'tsx-simulate: {product}: its map "UTM" zone "32" on "ED50" is neither UTM nor UPS on '
                         "WGS84\n", complaint(SIMULATE, "--images-for", product, "--overwrite"))


class Statistics(unittest.TestCase):
    def test_later_versions_tell_how_often_values_of_the_quantiser_occur(self):
        pattern = r"<quantisationStatistics>(.*?)</quantisationStatistics>"
        for version, there in (("3.4", False), ("3.7", False), ("4.0", True), ("4.11", True)):
            product = simulate("statistics", "--version-text", version, "--empty-images")
            found = re.findall(pattern, product.read_text(), re.S)
            self.assertEqual(1 if there else 0, len(found), version)
            run(ANNOTATION, "check", product)
        [channels] = [re.findall(r">([\d ]+)</occurrences>", f) for f in found]
        for counts in channels:
            counts = [int(c) for c in counts.split()]
            self.assertEqual(16, len(counts))
            self.assertAlmostEqual(300 * 260, sum(counts), delta=16)
            # Of a Gaussian whose deviation is four steps, 19.74 % lie within one step of the middle.
            self.assertAlmostEqual(0.1974 * 300 * 260, counts[7] + counts[8], delta=20)


main()
