"""Places, descriptions and files of a product through the GDAL driver are those that the project's programs tell."""
import unittest

import numpy
from osgeo import gdal
from products import LINES, MADE, SAMPLES, gridkit_says, named, opened, run, simulate, written


def setUpModule():
    global SSC, DUAL, MGD, GEC, DATE_LINE, BURSTS
    SSC = simulate("ssc", "--relief", 200, "--troposphere", 14, "--ionosphere", 2, "--azimuth-shift=-180")
    DUAL = simulate("dual", "--polarisations", "HH,VV")
    MGD = simulate("mgd", "--variant", "MGD")
    GEC = simulate("gec", "--variant", "GEC")
    DATE_LINE = simulate("date_line", "--centre=-16.5,180")
    BURSTS = simulate("bursts", "--bursts", 2)


def points_of(dataset):
    return [(p.GCPPixel, p.GCPLine, p.GCPX, p.GCPY, p.GCPZ) for p in dataset.GetGCPs()]


class ControlPoints(unittest.TestCase):
    def test_are_those_that_read_writes(self):
        for annotation in (SSC, MGD, DATE_LINE):
            with self.subTest(annotation.parent.parent.name):
                file = written(annotation, "HH")
                expected = points_of(file)
                self.assertEqual(225, len(expected))
                for name in (["HH"], ["HH", "BETA0"], ["X_HH_MAGNITUDE_1"]):
                    dataset = opened(annotation, *name)
                    self.assertEqual(expected, points_of(dataset))
                    self.assertTrue(dataset.GetGCPSpatialRef().IsSame(file.GetGCPSpatialRef()))
                    self.assertIsNone(dataset.GetSpatialRef())

    def test_stay_together_over_the_date_line(self):
        longitudes = [point[2] for point in points_of(opened(DATE_LINE))]
        self.assertLess(max(longitudes) - min(longitudes), 1)
        self.assertTrue(min(longitudes) < -180 or max(longitudes) > 180)

    def test_stand_at_the_height_that_is_asked_for(self):
        points = points_of(opened(SSC, "HH", options=["HEIGHT=1234.5"]))
        self.assertEqual({1234.5}, {point[4] for point in points})
        for given in ("high", "", "1e9", "12 m", "nan"):
            with self.assertRaisesRegex(RuntimeError, "metres above the ellipsoid"):
                opened(SSC, "HH", options=[f"HEIGHT={given}"])

    def test_go_without_delays_where_that_is_asked_for(self):
        expected = points_of(written(SSC, "HH", "--no-delays"))
        self.assertEqual(expected, points_of(opened(SSC, "HH", options=["DELAYS=NO"])))
        self.assertNotEqual(expected, points_of(opened(SSC, "HH")))

    def test_of_what_cannot_be_placed_there_are_none(self):
        self.assertEqual(points_of(written(BURSTS, "HH_B2")), points_of(opened(BURSTS, "HH_B2")))
        self.assertEqual({}, opened(BURSTS, "HH_B2").GetMetadata("RPC") or {})


class RationalModel(unittest.TestCase):
    def test_is_that_of_locate(self):
        for options, switch in ([], []), (["DELAYS=NO"], ["--no-delays"]):
            told = opened(SSC, "HH", options=options).GetMetadata("RPC")
            expected = gridkit_says("locate", "--rpc", "--json", *switch, SSC)
            self.assertEqual(16, len(told))
            for name, text in told.items():
                numbers = [float(number) for number in text.split()]
                if name not in ("ERR_BIAS", "ERR_RAND"):
                    self.assertEqual(expected[name], numbers if len(numbers) > 1 else numbers[0])

    def test_is_gdals_own_way_onto_the_ground(self):
        dataset = opened(SSC, "HH")
        point = dataset.GetGCPs()[112]
        way = gdal.Transformer(dataset, None, ["METHOD=RPC", f"RPC_HEIGHT={point.GCPZ}"])
        found, (x, y, _) = way.TransformPoint(True, point.GCPX, point.GCPY)
        self.assertTrue(found)
        self.assertLess(max(abs(x - point.GCPPixel), abs(y - point.GCPLine)), 0.01)


class Maps(unittest.TestCase):
    def test_are_those_that_read_writes(self):
        expected = written(GEC, "HH")
        for name in (["HH"], ["HH", "INTENSITY"], ["X_HH_MAGNITUDE_1"]):
            dataset = opened(GEC, *name)
            self.assertEqual(expected.GetGeoTransform(), dataset.GetGeoTransform())
            self.assertTrue(expected.GetSpatialRef().IsSame(dataset.GetSpatialRef()))
            self.assertEqual(0, dataset.GetGCPCount())
            self.assertEqual(0, dataset.GetRasterBand(1).GetNoDataValue())
            self.assertNotIn("RPC", dataset.GetMetadataDomainList())

    def test_are_none_in_radar_geometry(self):
        dataset = opened(SSC, "HH")
        self.assertIsNone(dataset.GetGeoTransform(can_return_null=True))
        self.assertIsNone(dataset.GetRasterBand(1).GetNoDataValue())


class Warping(unittest.TestCase):
    def test_by_control_points_and_by_the_rational_model_meet(self):
        flat = simulate("flat")
        images = []
        for option in (["-order", "3"], ["-rpc", "-to", "RPC_HEIGHT=600"]):
            output = MADE / f"warped{option[0]}.tif"
            done = run("gdalwarp", "-q", "-overwrite", *option, "-t_srs", "EPSG:32632", "-tr", 10, 10, "-te", 669600, 5327400, 670000, 5328000,
                       named(flat, "HH", "AMPLITUDE"), output)
            self.assertEqual(0, done.returncode, done.stderr)
            images.append(gdal.Open(str(output)).ReadAsArray().astype(float))
        self.assertGreater(numpy.count_nonzero(images[0]), 500)
        self.assertGreater(numpy.mean(images[0] == images[1]), 0.95)


class Descriptions(unittest.TestCase):
    def test_say_what_read_writes(self):
        for annotation in (SSC, MGD, GEC):
            expected, told = written(annotation, "HH").GetMetadata(), opened(annotation, "HH").GetMetadata()
            both = set(expected) & set(told)
            self.assertGreaterEqual(len(both), 14)
            for name in both:
                self.assertEqual(expected[name], told[name], name)

    def test_name_what_the_product_tells(self):
        info = gridkit_says("info", "--json", SSC)
        told = opened(SSC, "HH").GetMetadata()
        self.assertEqual(info["incidence"]["near"], float(told["NEAR_INCIDENCE_ANGLE"]))
        self.assertEqual(info["spacing"]["sample"], float(told["PIXEL_SPACING"]))
        self.assertEqual(info["calibration"][0]["factors"][0], float(told["CALIBRATION_FACTOR"]))
        self.assertEqual("VV", opened(DUAL, "VV").GetMetadataItem("POLARISATION"))

    def test_tell_every_file(self):
        self.assertEqual([str(DUAL), *sorted(map(str, (DUAL.parent / "IMAGEDATA").iterdir()))], sorted(opened(DUAL, "HH").GetFileList(), key=lambda f: (f != str(DUAL), f)))

    def test_leave_nothing_beside_the_product(self):
        before = sorted(SSC.parent.parent.rglob("*"))
        done = run("gdalinfo", "-stats", "-hist", named(SSC, "HH", "AMPLITUDE"))
        self.assertEqual(0, done.returncode, done.stderr)
        self.assertIn("STATISTICS_MEAN", done.stdout)
        self.assertEqual(before, sorted(SSC.parent.parent.rglob("*")))
        self.assertEqual((LINES, SAMPLES), opened(SSC, "HH").ReadAsArray().shape)


if __name__ == "__main__":
    unittest.main(argv=["places_test.py"])
