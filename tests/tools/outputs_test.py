"""Where `gridkit read` writes to and how: standard output, every layer at once, compression by choice.

    outputs_test.py BUILD FOLDER
"""
import os
import pty
import re
import subprocess
import unittest
from xml.etree import ElementTree

from programs import FOLDER, GRIDKIT, complaint, main, run, simulate
from rasters import described, metadata, pixels

LAYER = "X_HH_MAGNITUDE_1"


class StandardOutput(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.product = simulate("streamed", lines=320, samples=256)

    def test_gets_the_bytes_that_the_file_would_hold(self):
        for name, layer, options in (("s.png", LAYER, ()), ("s.img", "X_HH_PHASE_2", ()),
                                     ("b.img", LAYER, ("--calibrate", "beta0")),
                                     ("e.png", LAYER, ("--stretch", "--window", "3", "5", "100", "70"))):
            with self.subTest(name=name):
                file = FOLDER / name
                run(GRIDKIT, "read", self.product, layer, file, *options)
                file_format = "PNG" if name.endswith("png") else "ENVI"
                streamed = run(GRIDKIT, "read", self.product, layer, "-", "-f", file_format, *options)
                self.assertEqual(file.read_bytes(), streamed.stdout)
                self.assertEqual(b"", streamed.stderr)

    def test_takes_formats_that_come_in_one_stream_alone(self):
        for options in ((), ("-f", "GTiff"), ("-f", "COG")):
            message = complaint(GRIDKIT, "read", self.product, LAYER, "-", *options, status=2)
            self.assertIn("only PNG and ENVI go to standard output; choose by -f", message)

    def test_that_is_full_is_told(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([GRIDKIT, "read", self.product, LAYER, "-", "-f", "ENVI"], stdout=full,
                                  stderr=subprocess.PIPE, check=False)
        self.assertEqual((1, b"gridkit: standard output cannot be written: the disk is full\n"),
                         (done.returncode, done.stderr))

    def test_that_is_a_terminal_gets_no_pixels(self):
        leader, terminal = pty.openpty()
        done = subprocess.run([GRIDKIT, "read", self.product, LAYER, "-", "-f", "PNG"], stdout=terminal,
                              stderr=subprocess.PIPE, check=False)
        os.close(terminal)
        os.close(leader)
        self.assertEqual((1, b"gridkit: standard output is a terminal, which shows no pixels; name a file\n"),
                         (done.returncode, done.stderr))


class EveryLayer(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.product = simulate("every", "--polarisations", "HH,VV", lines=320, samples=256)
        cls.names = ["X_HH_MAGNITUDE_1", "X_HH_PHASE_2", "X_VV_MAGNITUDE_3", "X_VV_PHASE_4"]

    def test_has_a_file_of_its_name(self):
        for ending, options in ((".tif", ()), (".tif", ("-f", "COG")), (".png", ("-f", "PNG"))):
            folder = FOLDER / ("layers" + "_".join(options))
            run(GRIDKIT, "read", self.product, "--all", folder, *options)
            self.assertEqual([name + ending for name in self.names], sorted(os.listdir(folder)))
            for name in self.names:
                one = FOLDER / ("one" + ending)
                run(GRIDKIT, "read", self.product, name, one, "--overwrite", *options)
                self.assertEqual(one.read_bytes(), (folder / (name + ending)).read_bytes())

    def test_that_is_a_magnitude_is_calibrated(self):
        folder = FOLDER / "calibrated"
        run(GRIDKIT, "read", self.product, "--all", folder, "--calibrate", "beta0", "--window", 0, 0, 40, 30)
        self.assertEqual([self.names[0] + ".tif", self.names[2] + ".tif"], sorted(os.listdir(folder)))
        self.assertEqual([40, 30], described(folder / "X_VV_MAGNITUDE_3.tif")["size"])

    def test_is_kept_from_being_read_by_one_file_in_the_way(self):
        folder = FOLDER / "in_the_way"
        folder.mkdir()
        last = folder / (self.names[3] + ".tif")
        last.write_text("precious")
        self.assertEqual(f"gridkit: {last}: exists already; --overwrite replaces it\n",
                         complaint(GRIDKIT, "read", self.product, "--all", folder))
        self.assertEqual([last.name], os.listdir(folder))
        run(GRIDKIT, "read", self.product, "--all", folder, "--overwrite")
        self.assertEqual(4, len(os.listdir(folder)))

    def test_needs_a_folder(self):
        file = FOLDER / "no_folder"
        file.write_text("x")
        self.assertEqual(f"gridkit: {file}: it is no folder\n",
                         complaint(GRIDKIT, "read", self.product, "--all", file))
        self.assertEqual(f"gridkit: {FOLDER}/a/b: no such folder, and it cannot be made: no such file or folder\n",
                         complaint(GRIDKIT, "read", self.product, "--all", FOLDER / "a/b"))

    def test_goes_without_the_name_of_one(self):
        complaint(GRIDKIT, "read", self.product, LAYER, "--all", FOLDER / "x", status=2)
        complaint(GRIDKIT, "read", self.product, "--all", FOLDER / "x", "--raw", "--block", 0, 0, status=2)
        self.assertFalse((FOLDER / "x").exists())


class Metadata(unittest.TestCase):
    """What a file tells of its product, against the annotation's own text."""

    @classmethod
    def setUpClass(cls):
        cls.product = simulate("described", "--polarisations", "HH,VV", "--pass", "ascending", "--look", "left",
                               lines=320, samples=256)
        root = ElementTree.parse(cls.product).getroot()
        info = root.find("productInfo")
        system = root.find("generalHeader/generationSystem")
        text = info.findtext
        cls.expected = {
            "PRODUCT_ID": cls.product.stem,
            "PRODUCT_TYPE": text("productVariantInfo/productType"),
            "SATELLITE_IDENTIFIER": text("missionInfo/mission"),
            "BEAM_MODE": text("acquisitionInfo/imagingMode"),
            "BEAMS": text("acquisitionInfo/elevationBeamConfiguration"),
            "POLARISATION": "VV",
            "ACQUISITION_START_TIME": text("sceneInfo/start/timeUTC"),
            "ACQUISITION_STOP_TIME": text("sceneInfo/stop/timeUTC"),
            "ORBIT_NUMBER": text("missionInfo/absOrbit"),
            "ORBIT_DIRECTION": "ASCENDING",
            "LOOK_DIRECTION": "LEFT",
            "PROCESSING_SOFTWARE": f"{system.text} {system.get('version')}",
            "WRITTEN_BY": run(GRIDKIT, "--version").stdout.decode().split(" (")[0],
        }
        cls.incidence = float(text("sceneInfo/sceneCenterCoord/incidenceAngle"))

    def compare(self, told):
        self.assertEqual(self.expected, {key: told.get(key) for key in self.expected})
        self.assertAlmostEqual(self.incidence, float(told["INCIDENCE_ANGLE"]), delta=1e-9)

    def test_is_the_same_in_every_format(self):
        for name, options in (("m.tif", ()), ("c.tif", ("-f", "COG")), ("m.png", ())):
            with self.subTest(name=name):
                run(GRIDKIT, "read", self.product, "X_VV_PHASE_4", FOLDER / name, *options)
                self.compare(metadata(FOLDER / name))
        run(GRIDKIT, "read", self.product, "X_VV_PHASE_4", FOLDER / "m.img")
        header = (FOLDER / "m.img.hdr").read_text()
        self.compare(dict(re.findall(r"^  ([A-Z_]+): (.*?)[,}]$", header, re.MULTILINE)))

    def test_stands_in_quicklooks_too(self):
        run(GRIDKIT, "quicklook", self.product, "X_VV_MAGNITUDE_3", FOLDER / "q.png")
        self.compare(metadata(FOLDER / "q.png"))

    def test_of_a_layer_tells_its_own_polarisation(self):
        run(GRIDKIT, "read", self.product, "X_HH_PHASE_2", FOLDER / "hh.tif")
        self.assertEqual("HH", metadata(FOLDER / "hh.tif")["POLARISATION"])


class Names(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.product = simulate("names", lines=320, samples=256)

    def test_that_are_missing_bring_the_layers(self):
        for names, words in (((), "LAYER and OUTPUT are missing; the layers are X_HH_MAGNITUDE_1 X_HH_PHASE_2; "
                                  "--all FOLDER reads every one"),
                             (("x.tif",), "LAYER is missing; the layers are X_HH_MAGNITUDE_1 X_HH_PHASE_2; "
                                          "--all FOLDER reads every one"),
                             ((LAYER,), "OUTPUT is missing after X_HH_MAGNITUDE_1")):
            self.assertEqual(f"gridkit: read: {words}\nSee `gridkit read --help`.\n",
                             complaint(GRIDKIT, "read", self.product, *names, status=2))

    def test_that_are_missing_are_told_without_a_product_too(self):
        for names, words in (((), "LAYER and OUTPUT are missing"), (("x.tif",), "LAYER or OUTPUT is missing")):
            self.assertEqual(f"gridkit: read: {words}\nSee `gridkit read --help`.\n",
                             complaint(GRIDKIT, "read", FOLDER / "nowhere", *names, status=2))

    def test_of_quicklooks_end_in_png(self):
        for name in ("x.jpg", "x.tif", "x.png.gz"):
            message = complaint(GRIDKIT, "quicklook", self.product, FOLDER / name, status=2)
            self.assertIn(f'the ending of "{FOLDER / name}" is not .png, and the picture is a PNG file', message)
            self.assertFalse((FOLDER / name).exists())

    def test_of_quicklooks_may_be_standard_output(self):
        run(GRIDKIT, "quicklook", self.product, FOLDER / "x.PNG")
        streamed = run(GRIDKIT, "quicklook", self.product, "-").stdout
        self.assertEqual((FOLDER / "x.PNG").read_bytes(), streamed)


class Compression(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.product = simulate("compressed", lines=640, samples=512)

    def test_keeps_every_pixel(self):
        plain = FOLDER / "plain.tif"
        run(GRIDKIT, "read", self.product, LAYER, plain)
        expected = pixels(plain, "UInt16")
        for file_format in ("GTiff", "COG"):
            for word in ("deflate", "zstd", "lzw", "none"):
                with self.subTest(format=file_format, compression=word):
                    output = FOLDER / f"{file_format}_{word}.tif"
                    run(GRIDKIT, "read", self.product, LAYER, output, "-f", file_format, "--compress", word,
                        "--threads", 3)
                    told = described(output)["metadata"]["IMAGE_STRUCTURE"].get("COMPRESSION", "none")
                    self.assertEqual(word, told.lower())
                    self.assertEqual(expected, pixels(output, "UInt16"))

    def test_is_for_geotiff_alone(self):
        for name in ("x.png", "x.img"):
            message = complaint(GRIDKIT, "read", self.product, LAYER, FOLDER / name, "--compress", "lzw", status=2)
            self.assertIn("is for GTiff and COG; a PNG is always compressed, samples of ENVI never are", message)
            self.assertFalse((FOLDER / name).exists())

    def test_takes_1_to_16_threads(self):
        for count in (0, 17, "many"):
            complaint(GRIDKIT, "read", self.product, LAYER, FOLDER / "x.tif", "--threads", count, status=2)


if __name__ == "__main__":
    main()
