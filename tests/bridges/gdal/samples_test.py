"""Pixels through the GDAL driver are those that `gridkit read` writes, bit for bit."""
import json
import unittest

import numpy
from osgeo import gdal
from products import BUILD, LINES, MADE, SAMPLES, named, opened, run, simulate, written


def setUpModule():
    global SSC, HALF, DUAL, MGD, GEC
    SSC = simulate("ssc", "--relief", 200)
    HALF = simulate("half", "--sample-type", "half")
    DUAL = simulate("dual", "--polarisations", "HH,VV")
    MGD = simulate("mgd", "--variant", "MGD")
    GEC = simulate("gec", "--variant", "GEC")


class Identifying:
    """As long as it lasts, plain annotations are the driver's."""

    def __enter__(self):
        gdal.SetConfigOption("GRIDKIT_IDENTIFY", "YES")

    def __exit__(self, *_):
        gdal.SetConfigOption("GRIDKIT_IDENTIFY", None)


class Samples(unittest.TestCase):
    def same(self, expected, dataset):
        ours, theirs = dataset.ReadAsArray(), expected.ReadAsArray()
        self.assertEqual(expected.GetRasterBand(1).DataType, dataset.GetRasterBand(1).DataType)
        self.assertEqual(theirs.dtype, ours.dtype)
        self.assertEqual(theirs.shape, ours.shape)
        self.assertEqual(theirs.tobytes(), ours.tobytes())
        self.assertGreater(numpy.count_nonzero(ours), ours.size // 2)

    def test_of_images_are_those_of_the_file(self):
        for annotation, image in ((SSC, "HH"), (HALF, "HH"), (DUAL, "VV"), (MGD, "HH"), (GEC, "HH")):
            with self.subTest(annotation.stem, image=image):
                self.same(written(annotation, image), opened(annotation, image))

    def test_of_layers_are_the_plug_ins(self):
        for annotation, layer in ((SSC, "X_HH_MAGNITUDE_1"), (SSC, "X_HH_PHASE_2"), (DUAL, "X_VV_MAGNITUDE_3"), (GEC, "X_HH_MAGNITUDE_1")):
            with self.subTest(annotation.stem, layer=layer):
                self.same(written(annotation, layer), opened(annotation, layer))

    def test_of_amplitude_and_phase_are_those_of_the_layers(self):
        self.same(written(SSC, "X_HH_MAGNITUDE_1"), opened(SSC, "HH", "AMPLITUDE"))
        self.same(written(SSC, "X_HH_PHASE_2"), opened(SSC, "HH", "PHASE"))
        self.same(written(MGD, "X_HH_MAGNITUDE_1"), opened(MGD, "HH", "AMPLITUDE"))

    def test_of_backscatter_are_calibrated(self):
        for annotation in (SSC, MGD):
            for quantity in ("beta0", "sigma0", "gamma0"):
                with self.subTest(annotation.stem, quantity=quantity):
                    self.same(written(annotation, "HH", "--calibrate", quantity), opened(annotation, "HH", quantity.upper()))
        self.same(written(SSC, "HH", "--calibrate", "sigma0", "--subtract-noise"), opened(SSC, "HH", "SIGMA0", options=["SUBTRACT_NOISE=YES"]))

    def test_of_intensity_are_squared_moduli(self):
        samples = opened(SSC, "HH").ReadAsArray()
        expected = samples.real.astype(numpy.float32) ** 2 + samples.imag.astype(numpy.float32) ** 2
        self.assertTrue(numpy.array_equal(expected, opened(SSC, "HH", "INTENSITY").ReadAsArray()))

    def test_of_windows_are_cut_out_of_the_whole(self):
        for quantity in ([], ["AMPLITUDE"], ["BETA0"]):
            dataset = opened(SSC, "HH", *quantity)
            whole = dataset.ReadAsArray()
            for x, y, width, height in ((0, 0, 1, 1), (SAMPLES - 1, LINES - 1, 1, 1), (7, 11, 100, 53), (0, 299, 260, 1)):
                part = dataset.ReadAsArray(x, y, width, height)
                self.assertEqual(whole[y:y + height, x:x + width].tobytes(), part.tobytes())

    def test_thinned_by_whole_steps_are_those_of_the_pixels_centres(self):
        dataset = opened(SSC, "HH")
        whole = dataset.ReadAsArray()
        for step_x, step_y in ((2, 2), (5, 3), (10, 20), (1, 4), (260, 300)):
            small = dataset.ReadAsArray(buf_xsize=SAMPLES // step_x, buf_ysize=LINES // step_y)
            expected = whole[step_y // 2::step_y, step_x // 2::step_x]
            self.assertEqual(expected.tobytes(), small.tobytes())
            copy = gdal.GetDriverByName("MEM").CreateCopy("", dataset)
            of_memory = copy.ReadAsArray(buf_xsize=SAMPLES // step_x, buf_ysize=LINES // step_y)
            self.assertEqual(of_memory.tobytes(), small.tobytes())

    def test_resampled_otherwise_are_what_gdal_makes_of_them(self):
        dataset = opened(SSC, "HH", "AMPLITUDE")
        copy = gdal.GetDriverByName("MEM").CreateCopy("", dataset)
        for algorithm in (gdal.GRIORA_NearestNeighbour, gdal.GRIORA_Average, gdal.GRIORA_Bilinear):
            for width, height in ((97, 111), (130, 150), (600, 500)):
                wish = {"buf_xsize": width, "buf_ysize": height, "resample_alg": algorithm}
                self.assertTrue(numpy.array_equal(copy.ReadAsArray(**wish), dataset.ReadAsArray(**wish)))

    def test_come_in_other_types_and_strides(self):
        dataset = opened(SSC, "HH")
        whole = dataset.ReadAsArray()
        for kind in (gdal.GDT_CFloat32, gdal.GDT_CFloat64, gdal.GDT_Float32):
            given = dataset.ReadAsArray(buf_type=kind)
            expected = whole.real if kind == gdal.GDT_Float32 else whole
            self.assertTrue(numpy.array_equal(expected, given))
        amplitude = opened(SSC, "HH", "AMPLITUDE")
        raw = amplitude.GetRasterBand(1).ReadRaster(0, 0, SAMPLES, LINES, buf_pixel_space=6, buf_line_space=6 * SAMPLES)
        spread = numpy.frombuffer(raw + b"\0" * (6 * SAMPLES * LINES - len(raw)), numpy.uint16).reshape(LINES, SAMPLES, 3)
        self.assertTrue(numpy.array_equal(amplitude.ReadAsArray(), spread[:, :, 0]))

    def test_tell_their_progress_and_can_be_stopped(self):
        told, dataset = [], opened(SSC, "HH")
        dataset.GetRasterBand(1).ReadRaster(callback=lambda part, *_: told.append(part) or 1)
        self.assertEqual(1.0, told[-1])
        with self.assertRaises(RuntimeError):
            dataset.GetRasterBand(1).ReadRaster(callback=lambda *_: 0)

    def test_blocks_are_of_whole_lines(self):
        dataset = opened(simulate("wide", lines=3000, samples=700), "HH")
        wide = dataset.GetRasterBand(1)
        width, height = wide.GetBlockSize()
        self.assertEqual(700, width)
        self.assertTrue(1 << 20 <= width * height * 4 <= 4 << 20)
        whole = wide.ReadAsArray()
        rows = [wide.ReadBlock(0, row) for row in range(-(-3000 // height))]
        self.assertEqual(whole.tobytes(), numpy.frombuffer(b"".join(rows), numpy.int16)[:whole.size * 2].astype(numpy.float32).tobytes())

    def test_go_through_gdals_programs(self):
        copy = MADE / "copy.tif"
        done = run("gdal_translate", "-q", named(SSC, "HH"), copy)
        self.assertEqual((0, ""), (done.returncode, done.stderr))
        self.assertEqual(written(SSC, "HH").ReadAsArray().tobytes(), gdal.Open(str(copy)).ReadAsArray().tobytes())
        stacked = MADE / "stack.vrt"
        done = run("gdalbuildvrt", "-q", "-separate", stacked, named(GEC, "HH", "BETA0"), named(GEC, "HH", "INTENSITY"))
        self.assertEqual(0, done.returncode, done.stderr)
        self.assertEqual(opened(GEC, "HH", "BETA0").ReadAsArray().tobytes(), gdal.Open(str(stacked)).ReadAsArray()[0].tobytes())


class Subdatasets(unittest.TestCase):
    def test_open_as_they_are_called(self):
        for annotation, images, layers in ((SSC, 1, 2), (DUAL, 2, 4), (MGD, 1, 1), (GEC, 1, 1)):
            dataset = opened(annotation)
            listed = [name for name, _ in dataset.GetSubDatasets()]
            # Detected images have no phase, and those on a map no angle of incidence.
            quantities = {SSC: 7, DUAL: 7, MGD: 6, GEC: 4}[annotation]
            self.assertEqual(images * quantities + layers, len(set(listed)))
            for name in listed:
                self.assertEqual((SAMPLES, LINES), (gdal.Open(name).RasterXSize, gdal.Open(name).RasterYSize))
            self.assertEqual(1 if images == 1 else 0, dataset.RasterCount)

    def test_of_a_sole_image_are_that_image(self):
        self.assertEqual(opened(SSC, "HH").ReadAsArray().tobytes(), opened(SSC).ReadAsArray().tobytes())

    def test_have_paths_of_all_kinds(self):
        for name in ("with blank", "co:lon:HH", 'quo"te', "Räume", "back\\slash", "x" * 120 + "/" + "y" * 120 + "/" + "z" * 120):
            link = MADE / "kinds" / name
            link.parent.mkdir(parents=True, exist_ok=True)
            if not link.is_symlink():
                link.symlink_to(SSC.parent)
            escaped = str(link).replace("\\", "\\\\").replace('"', '\\"')
            with self.subTest(name):
                for subdataset, _ in opened(escaped).GetSubDatasets()[:2]:
                    self.assertEqual(SAMPLES, gdal.Open(subdataset).RasterXSize)
                self.assertEqual(SAMPLES, gdal.Open(f"GRIDKIT:{link}:HH:AMPLITUDE").RasterXSize)


class Identification(unittest.TestCase):
    def test_is_by_the_prefix_unless_the_configuration_says_otherwise(self):
        self.assertNotEqual("GRIDKIT", gdal.Open(str(SSC)).GetDriver().ShortName)
        with self.assertRaises(RuntimeError):
            gdal.OpenEx(str(SSC), allowed_drivers=["GRIDKIT"])
        with Identifying():
            dataset = gdal.OpenEx(str(SSC), allowed_drivers=["GRIDKIT"])
            self.assertEqual(opened(SSC).ReadAsArray().tobytes(), dataset.ReadAsArray().tobytes())
            self.assertEqual("GRIDKIT", gdal.Open(str(SSC)).GetDriver().ShortName)
            other = MADE / "other.vrt"
            gdal.Translate(str(other), opened(GEC, "HH"), format="VRT")
            self.assertEqual("VRT", gdal.Open(str(other)).GetDriver().ShortName)

    def test_needs_the_folder_of_the_driver_alone(self):
        done = run("env", "-i", f"GDAL_DRIVER_PATH={BUILD / 'lib/gdalplugins'}", "/usr/bin/gdalinfo", "-json", named(SSC, "HH"))
        self.assertEqual((0, "GRIDKIT"), (done.returncode, json.loads(done.stdout)["driverShortName"]), done.stderr)


if __name__ == "__main__":
    unittest.main(argv=["samples_test.py"])
