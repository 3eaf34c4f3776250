"""Images of mountains on a map: gdalwarp with the rational polynomials that `gridkit read` writes and a terrain
model, against the truth of simulated scenes.

    orthorectification_test.py BUILD FOLDER
"""
import json
import subprocess
import unittest

from programs import FOLDER, GRIDKIT, main, run, simulate
from rasters import described, pixels, transformed

# Delays as real products have them, and hills of 400 m.
SCENE = ("--relief", 400, "--troposphere", 14, "--ionosphere", 2, "--azimuth-shift", -180)
ZONE = "EPSG:32632"
SPACING = 2.5  # metres on the map


def mountains(name, variant, *options):
    return simulate(name, "--variant", variant, *SCENE, *options, lines=900, samples=700)


def warped(product, name, *options):
    """The first image of a product on a map, with so much of the terrain as the options tell."""
    image, on_map = FOLDER / f"{name}.tif", FOLDER / f"{name}_map.tif"
    run(GRIDKIT, "read", product, "X_HH_MAGNITUDE_1", image, "--overwrite")
    subprocess.run(["gdalwarp", "-q", "-overwrite", "-rpc", *map(str, options), "-t_srs", ZONE, "-tr", str(SPACING),
                    str(SPACING), "-r", "cubic", "-ot", "Float32", str(image), str(on_map)], check=True)
    return on_map


def centroid(image, line, column):
    """Where the power about the brightest pixel near a place lies, counted by centres of pixels."""
    def power(at):
        return image[at[0]][at[1]]**2

    brightest = max(((r, c) for r in range(line - 5, line + 6) for c in range(column - 5, column + 6)), key=power)
    box = [(brightest[0] + i, brightest[1] + j) for i in range(-2, 3) for j in range(-2, 3)]
    total = sum(map(power, box))
    return [sum(power(at) * at[axis] for at in box) / total for axis in (0, 1)]


def misses(on_map, product, band_type="Float32"):
    """How many pixels of a map its targets are off, the larger of both directions for each."""
    left, step, _, top, _, down = described(on_map)["geoTransform"]
    assert (step, down) == (SPACING, -SPACING)
    image = pixels(on_map, band_type)
    targets = json.loads((product.parent / "truth.json").read_text())["targets"]
    places = transformed([(t["longitude"], t["latitude"]) for t in targets], "-s_srs", "OGC:CRS84", "-t_srs", ZONE)
    found = []
    for easting, northing in places:
        line, column = (northing - top) / down - 0.5, (easting - left) / step - 0.5
        seen = centroid(image, round(line), round(column))
        found.append(max(abs(seen[0] - line), abs(seen[1] - column)))
    assert len(found) == 9
    return found


class Targets(unittest.TestCase):
    def test_lie_within_half_a_pixel_of_their_places(self):
        for variant, options in (("SSC", ()), ("MGD", ()), ("MGD", ("--start-with", "LATEAZFARRG")),
                                 ("SSC", ("--pass", "ascending", "--look", "left"))):
            with self.subTest(variant=variant, options=options):
                product = mountains("scene", variant, *options)
                terrain = f"RPC_DEM={product.parent / 'terrain.tif'}"
                self.assertLess(max(misses(warped(product, "scene", "-to", terrain), product)), 0.5)

    def test_are_pixels_off_without_the_terrain(self):
        # 100 m of height are 143 m on the ground at 35 degrees, so that the terrain is what places them.
        product = mountains("flat", "SSC")
        self.assertGreater(max(misses(warped(product, "flat", "-to", "RPC_HEIGHT=600"), product)), 1)

    def test_of_the_terrain_corrected_product_lie_as_well(self):
        product = mountains("corrected", "EEC")
        image = FOLDER / "corrected.tif"
        run(GRIDKIT, "read", product, "X_HH_MAGNITUDE_1", image, "--overwrite")
        self.assertLess(max(misses(image, product, "UInt16")), 0.5)


class Polynomials(unittest.TestCase):
    NUMBERS = [f"{name}_{part}" for part in ("OFF", "SCALE") for name in ("LINE", "SAMP", "LAT", "LONG", "HEIGHT")]
    COEFFICIENTS = [f"{name}_{part}_COEFF" for name in ("LINE", "SAMP") for part in ("NUM", "DEN")]

    def compare(self, image, product, window, *options):
        """Those in a file's own tag with those that `locate` tells, for a window's first line and sample."""
        told = json.loads(run(GRIDKIT, "locate", "--rpc", "--json", product, *options).stdout)
        told["LINE_OFF"] -= window[1]
        told["SAMP_OFF"] -= window[0]
        domains = described(image)["metadata"]
        # GDAL shows fifteen digits of them.
        for name in self.NUMBERS:
            self.assertAlmostEqual(told[name], float(domains["RPC"][name]), delta=1e-13 * abs(told[name]), msg=name)
        for name in self.COEFFICIENTS:
            for mine, theirs in zip(told[name], map(float, domains["RPC"][name].split()), strict=True):
                self.assertAlmostEqual(mine, theirs, delta=1e-13 * abs(mine), msg=name)
        for name in ("ERR_LINE", "ERR_SAMP", "MIN_HEIGHT", "MAX_HEIGHT"):
            self.assertEqual(told[name], float(domains[""][f"RPC_{name}"]))
        self.assertEqual("applied" if told["delays"] else "left out", domains[""]["SIGNAL_DELAYS"])

    def test_of_every_kind_of_file_are_those_that_are_told(self):
        product = mountains("kinds", "SSC")
        image = FOLDER / "kind.tif"
        for source in (("X_HH_MAGNITUDE_1",), ("X_HH_PHASE_2",), ("HH",), ("HH", "--calibrate", "beta0")):
            for kind in ("GTiff", "COG"):
                for window in ((0, 0), (100, 50, 300, 200)):
                    with self.subTest(source=source, kind=kind, window=window):
                        cut = ("--window", *window) if len(window) == 4 else ()
                        run(GRIDKIT, "read", product, source[0], image, *source[1:], "-f", kind, *cut, "--overwrite")
                        self.compare(image, product, window)

    def test_and_control_points_go_without_delays_where_asked(self):
        product = mountains("without", "MGD")
        image = FOLDER / "without.tif"
        points = []
        for option in ((), ("--no-delays",)):
            run(GRIDKIT, "read", product, "X_HH_MAGNITUDE_1", image, *option, "--overwrite")
            self.compare(image, product, (0, 0), *option)
            point = described(image)["gcps"]["gcpList"][0]
            points.append((point["x"], point["y"]))
        self.assertNotEqual(*points)

    def test_of_an_image_on_a_map_are_none(self):
        product = mountains("mapped", "EEC")
        image = FOLDER / "mapped.tif"
        run(GRIDKIT, "read", product, "X_HH_MAGNITUDE_1", image)
        self.assertNotIn("RPC", described(image)["metadata"])
        self.assertNotIn("SIGNAL_DELAYS", described(image)["metadata"][""])


class ControlPoints(unittest.TestCase):
    def test_lie_at_the_height_of_the_terrain(self):
        product = mountains("points", "SSC")
        image = FOLDER / "points.tif"
        run(GRIDKIT, "read", product, "X_HH_MAGNITUDE_1", image, "--window", 100, 50, 280, 420)
        points = described(image)["gcps"]["gcpList"]
        self.assertEqual(225, len(points))
        self.assertGreater(len({p["z"] for p in points}), 200)
        for point in points[::40]:
            place = json.loads(run(GRIDKIT, "locate", "--json", product, point["line"] + 50 - 0.5,
                                   point["pixel"] + 100 - 0.5, "--height", "terrain").stdout)
            self.assertAlmostEqual(place["height"], point["z"], delta=1e-6)
            self.assertAlmostEqual(place["longitude"], point["x"], delta=1e-9)
            self.assertAlmostEqual(place["latitude"], point["y"], delta=1e-9)
        self.assertIn("at the terrain's heights", described(image)["metadata"][""]["CONTROL_POINTS"])

    def test_of_a_grid_at_fault_lie_at_the_average_height_and_it_is_told(self):
        product = mountains("fault", "SSC")
        (product.parent / "ANNOTATION" / "GEOREF.xml").write_text("<geoReference/>")
        image = FOLDER / "fault.tif"
        done = run(GRIDKIT, "read", product, "X_HH_MAGNITUDE_1", image)
        self.assertRegex(done.stderr.decode(), "^gridkit: warning: .*GEOREF.xml:1:.*; the geolocation grid is not used\n$")
        self.assertEqual({600}, {p["z"] for p in described(image)["gcps"]["gcpList"]})
        self.assertEqual("left out", described(image)["metadata"][""]["SIGNAL_DELAYS"])


if __name__ == "__main__":
    main()
