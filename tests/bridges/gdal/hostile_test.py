"""Bad names, missing and damaged files end in words, never in a crash, and leave nothing open."""
import os
import shutil
import unittest

from osgeo import gdal
from products import LINES, MADE, named, opened, run, simulate


def setUpModule():
    global SSC, MGD
    SSC = simulate("ssc")
    MGD = simulate("mgd", "--variant", "MGD")


def copied(annotation, name):
    folder = MADE / name
    shutil.rmtree(folder, ignore_errors=True)
    return shutil.copytree(annotation.parent, folder) / annotation.name


def image_of(annotation):
    file, = (annotation.parent / "IMAGEDATA").iterdir()
    return file


class Names(unittest.TestCase):
    def refused(self, name, words):
        with self.subTest(name):
            with self.assertRaises(RuntimeError) as refusal:
                gdal.Open(name)
            self.assertIn(words, str(refusal.exception))

    def test_that_mean_nothing_are_told(self):
        self.refused("GRIDKIT:", "the path is missing")
        self.refused('GRIDKIT:"x', "the quote after the path is missing")
        self.refused(named(SSC, "HH", "DECIBELS"), '"DECIBELS" is none of AMPLITUDE')
        self.refused(named(SSC, "HX"), "there are HH X_HH_MAGNITUDE_1 X_HH_PHASE_2")
        self.refused(named(SSC, "X_HH_PHASE_2", "BETA0"), "is a layer")
        self.refused(named(MGD, "HH", "PHASE"), "is detected and has no phase")
        self.refused(named(MADE / "nowhere"), "no such file")
        self.refused(f"GRIDKIT:{MADE}/nowhere:HH", "no such file")

    def test_of_every_length_and_kind_of_letters_are_refused(self):
        for middle in ("a" * 100_000, ":" * 5_000, '"' * 501, "\\" * 333, "%s%n%d", "\x01\x7f", "/dev/null", "/", ".."):
            for name in (f"GRIDKIT:{middle}", f'GRIDKIT:"{middle}"', f"GRIDKIT:{SSC}:{middle}", f"GRIDKIT:{SSC}:HH:{middle}"):
                with self.assertRaises(RuntimeError):
                    gdal.Open(name)

    def test_are_for_reading_alone(self):
        with self.assertRaisesRegex(RuntimeError, "only reads"):
            gdal.Open(named(SSC, "HH"), gdal.GA_Update)


class Damage(unittest.TestCase):
    def test_of_the_annotation_is_told_with_its_line(self):
        annotation = copied(SSC, "annotation")
        text = annotation.read_text()
        annotation.write_text(text[:len(text) // 2])
        with self.assertRaisesRegex(RuntimeError, ".xml:[0-9]+:[0-9]+: /level1Product/"):
            opened(annotation, "HH")

    def test_of_a_cut_image_leaves_what_comes_before(self):
        annotation = copied(SSC, "cut")
        image = image_of(annotation)
        os.truncate(image, image.stat().st_size // 2)
        expected = opened(SSC, "HH").ReadAsArray(0, 0, 260, 100)
        dataset = opened(annotation, "HH")
        self.assertEqual(expected.tobytes(), dataset.ReadAsArray(0, 0, 260, 100).tobytes())
        for window in ((0, 0, 260, LINES), (0, LINES - 1, 1, 1)):
            with self.assertRaisesRegex(RuntimeError, image.name):
                dataset.ReadAsArray(*window)
        with self.assertRaises(RuntimeError):
            dataset.GetRasterBand(1).ReadBlock(0, 0)
        done = run("gdal_translate", "-q", named(annotation, "HH"), MADE / "cut.tif")
        self.assertEqual(1, done.returncode)
        self.assertIn(image.name, done.stderr)

    def test_of_a_missing_image_is_told_by_its_name(self):
        for product in (SSC, MGD):
            annotation = copied(product, "missing")
            image = image_of(annotation)
            image.unlink()
            with self.assertRaisesRegex(RuntimeError, image.name):
                opened(annotation, "HH").ReadAsArray()

    def test_of_a_header_is_told(self):
        annotation = copied(SSC, "header")
        with image_of(annotation).open("r+b") as file:
            file.write(b"\xff" * 64)
        with self.assertRaises(RuntimeError):
            opened(annotation, "HH").ReadAsArray()

    def test_of_the_installation_is_told(self):
        done = run("env", f"GRIDKIT_PLUGINS={MADE}", "gdalinfo", named(SSC, "HH"))
        self.assertEqual(1, done.returncode)
        self.assertIn("plug-in", done.stderr)


class Opens(unittest.TestCase):
    def test_by_the_thousand_leave_no_file_open(self):
        broken = named(copied(SSC, "broken").parent / "nothing.xml")

        def work(count):
            for i in range(count):
                dataset = opened(SSC, "HH", *(["AMPLITUDE"] if i % 2 else []))
                dataset.ReadAsArray(0, 0, 10, 10)
                dataset = None
                with self.assertRaises(RuntimeError):
                    gdal.Open(broken)

        work(10)
        before = len(os.listdir("/proc/self/fd"))
        work(1000)
        self.assertLessEqual(len(os.listdir("/proc/self/fd")), before)


if __name__ == "__main__":
    unittest.main(argv=["hostile_test.py"])
