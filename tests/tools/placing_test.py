"""Where other programs place the images that `gridkit read` writes: gdaltransform and gdalwarp against
the truth of simulated scenes.

    placing_test.py BUILD FOLDER
"""
import json
import subprocess
import unittest

from programs import FOLDER, GRIDKIT, main, run, simulate
from rasters import described, metadata, metres, pixels, transformed


def truth(product):
    return json.loads((product.parent / "truth.json").read_text())


def read(product, output, *options):
    run(GRIDKIT, "read", product, "X_HH_MAGNITUDE_1", output, *options)
    return output


def misses(image, targets, *options, window=(0, 0)):
    """Metres between the targets and where the image's file places their pixels."""
    # The truth counts pixels by their centres, GeoTIFF by their corners.
    seen = transformed([(t["sample"] - window[0] + 0.5, t["line"] - window[1] + 0.5) for t in targets],
                       *options, image)
    return [metres(t["latitude"], t["longitude"], y, x) for t, (x, y) in zip(targets, seen)]


class ControlPoints(unittest.TestCase):
    def test_are_a_grid_over_the_whole_window(self):
        product = simulate("grid", lines=301, samples=260)
        for options in ((), ("-f", "COG")):
            output = read(product, FOLDER / "grid.tif", "--window", 10, 20, 182, 266, "--overwrite",
                          *options)
            points = described(output)["gcps"]["gcpList"]
            self.assertEqual([(13 * c, 19 * r) for r in range(15) for c in range(15)],
                             [(p["pixel"], p["line"]) for p in points])
            for point in points:
                self.assertAlmostEqual(600, point["z"], delta=1e-6)
            self.assertIn("at the terrain's heights", metadata(output)["CONTROL_POINTS"])
            # The very places that `locate` gives, for pixels counted by their centres.
            for point in points[::56]:
                done = run(GRIDKIT, "locate", "--json", product, point["line"] + 20 - 0.5,
                           point["pixel"] + 10 - 0.5)
                place = json.loads(done.stdout)
                self.assertAlmostEqual(place["longitude"], point["x"], delta=1e-9)
                self.assertAlmostEqual(place["latitude"], point["y"], delta=1e-9)

    def test_place_small_scenes_to_a_few_centimetres(self):
        for variant, options in (("SSC", ()), ("MGD", ()), ("MGD", ("--start-with", "LATEAZFARRG")),
                                 ("SSC", ("--centre", "-33.5,-70.25", "--pass", "ascending", "--look", "left"))):
            product = simulate("small", "--variant", variant, *options, lines=900, samples=700)
            output = read(product, FOLDER / "small.tif", "--overwrite")
            self.assertLess(max(misses(output, truth(product)["targets"])), 0.05, (variant, options))
            output = read(product, FOLDER / "small.tif", "--overwrite", "--window", 100, 300, 500, 400)
            self.assertLess(max(misses(output, truth(product)["targets"], window=(100, 300))), 0.5,
                            "targets outside the window lie beyond its points")

    def test_place_large_scenes_to_metres_and_with_a_cubic_to_decimetres(self):
        # 24 x 24 km in slant range, 33 x 27 km on the ground.
        for variant, plain, cubic in (("SSC", 2, 0.1), ("MGD", 0.3, 0.05)):
            product = simulate("large", "--variant", variant, "--empty-images", lines=12000, samples=10000)
            output = read(product, FOLDER / "large.tif", "--overwrite")
            targets = truth(product)["targets"]
            self.assertEqual(9, len(targets))
            self.assertLess(max(misses(output, targets)), plain)
            self.assertLess(max(misses(output, targets, "-order", 3)), cubic)
            output.unlink()

    def test_place_long_scenes_with_a_cubic_but_not_with_a_thin_plate(self):
        # 50 km along the track. A thin plate bends to every point, a cubic is what the geometry is like.
        for variant, cubic in (("SSC", 0.08), ("MGD", 0.03)):
            product = simulate("long", "--variant", variant, "--empty-images", "--targets", 25, lines=26000,
                               samples=10000)
            output = read(product, FOLDER / "long.tif", "--overwrite")
            targets = truth(product)["targets"]
            self.assertEqual(25, len(targets))
            with_cubic = max(misses(output, targets, "-order", 3))
            self.assertLess(with_cubic, cubic, variant)
            self.assertGreater(max(misses(output, targets, "-tps")), 10 * with_cubic, variant)
            output.unlink()

    def test_stay_together_over_the_date_line(self):
        product = simulate("dateline", "--centre", "-16.8,180", lines=900, samples=700)
        output = read(product, FOLDER / "dateline.tif")
        points = described(output)["gcps"]["gcpList"]
        longitudes = [p["x"] for p in points]
        self.assertLess(max(longitudes) - min(longitudes), 1)
        self.assertLess(max(misses(output, truth(product)["targets"])), 0.05)


class Maps(unittest.TestCase):
    def test_keep_their_place_and_system(self):
        for variant, options, system in (("GEC", (), 32632), ("EEC", (), 32632),
                                         ("GEC", ("--centre", "-33.5,-70.25"), 32719),
                                         ("GEC", ("--projection", "UPS", "--centre", "78,15"), 5041)):
            product = simulate("map", "--variant", variant, *options)
            image = next((product.parent / "IMAGEDATA").glob("*.tif"))
            own = described(image)
            for name, more in (("map.tif", ()), ("map_cog.tif", ("-f", "COG")), ("map.img", ())):
                with self.subTest(variant=variant, options=options, name=name):
                    output = read(product, FOLDER / name, "--overwrite", *more)
                    self.assertEqual(own["geoTransform"], described(output)["geoTransform"])
                    targets = truth(product)["targets"]
                    places = transformed([(t["longitude"], t["latitude"]) for t in targets], "-t_srs",
                                         "OGC:CRS84", "-i", output)
                    for target, (column, line) in zip(targets, places):
                        self.assertAlmostEqual(target["sample"] + 0.5, column, delta=0.01)
                        self.assertAlmostEqual(target["line"] + 0.5, line, delta=0.01)
            if system != 5041:
                self.assertIn(f'ID["EPSG",{system}]]', described(FOLDER / "map.tif")["coordinateSystem"]["wkt"])

    def test_a_windows_corner_moves_with_it(self):
        product = simulate("moved", "--variant", "GEC")
        whole = described(read(product, FOLDER / "whole.tif"))["geoTransform"]
        part = described(read(product, FOLDER / "part.tif", "--window", 40, 70, 100, 90))["geoTransform"]
        self.assertEqual([whole[0] + 40 * whole[1], *whole[1:3], whole[3] + 70 * whole[5], *whole[4:]], part)


class Warped(unittest.TestCase):
    def test_bright_targets_stand_where_they_are(self):
        """The way of a user: read, warp to a map of 1 m, look for the bright points."""
        for variant in ("SSC", "MGD", "GEC"):
            product = simulate("warped", "--variant", variant, lines=600, samples=500)
            output = read(product, FOLDER / f"{variant}.tif", "--calibrate", "beta0")
            warped = FOLDER / f"{variant}_warped.tif"
            subprocess.run(["gdalwarp", "-q", "-t_srs", "EPSG:32632", "-tr", "1", "1", "-r", "cubic",
                            str(output), str(warped)], check=True)
            left, step, _, top, _, down = described(warped)["geoTransform"]
            image = pixels(warped, "Float32")
            targets = truth(product)["targets"]
            places = transformed([(t["longitude"], t["latitude"]) for t in targets], "-s_srs", "OGC:CRS84",
                                 "-t_srs", "EPSG:32632")
            for target, (easting, northing) in zip(targets, places):
                column, line = (easting - left) / step, (northing - top) / down
                box = [(image[r][c], c + 0.5, r + 0.5) for r in range(int(line) - 20, int(line) + 21)
                       for c in range(int(column) - 20, int(column) + 21)]
                _, seen_column, seen_line = max(box)
                # Half a pixel of at most 2.75 m each way, and half of one of 1 m.
                self.assertLess(max(abs(seen_column - column), abs(seen_line - line)), 2.75 / 2 + 0.5,
                                (variant, target["name"]))


if __name__ == "__main__":
    main()
