"""Products with values that the schema does not allow: refused, or read over them."""
import json
import re
import unittest

from programs import ANNOTATION, FOLDER, GRIDKIT, complaint, main, run, simulate, text
from rasters import described, metadata, pixels

ORBIT_SENSOR = "/level1Product/platform/orbit/orbitHeader/sensor"
FOUND = 'the value is not one of those allowed: found "IGOR", expected one of "PROP", "GPSS", "GPSD"'


def of_another_processor(name, *options):
    """A product whose orbit comes from a sensor that the schema does not know, and where that stands."""
    annotation = simulate(name, *options)
    content = annotation.read_text()
    changed = re.sub(r"(<orbitHeader>.*?<sensor>)[A-Z]+(</sensor>)", r"\1IGOR\2", content, count=1, flags=re.S)
    assert changed != content
    annotation.write_text(changed)
    before = changed[:changed.index(">IGOR<")]
    column = before.rindex("<") - before.rindex("\n")
    return annotation, f"{annotation}:{before.count(chr(10)) + 1}:{column}: {ORBIT_SENSOR}: {FOUND}"


def with_element(annotation, element, value):
    content = annotation.read_text()
    changed = re.sub(f"<{element}>[^<]*<", f"<{element}>{value}<", content, count=1)
    assert changed != content
    annotation.write_text(changed)


class Reading(unittest.TestCase):
    def test_is_offered_where_it_helps(self):
        annotation, fault = of_another_processor("offered")
        self.assertEqual(f"gridkit: {fault}; --lenient reads the product over it\n",
                         complaint(GRIDKIT, "info", annotation))
        with_element(annotation, "numberOfRows", "x")
        self.assertNotIn("--lenient", complaint(GRIDKIT, "info", annotation))

    def test_every_layer_and_every_sample_is_as_in_a_valid_product(self):
        for variant in ("SSC", "MGD", "GEC"):
            with self.subTest(variant):
                options = ("--variant", variant, "--polarisations", "HH,VV")
                valid = simulate("valid", *options)
                other, fault = of_another_processor("other", *options)
                layers = text(GRIDKIT, "layers", valid)
                listed = run(GRIDKIT, "layers", "--lenient", other)
                self.assertEqual(layers, listed.stdout.decode())
                lack = ("its data and its map are not there" if variant == "GEC" else
                        "its sensor model is made from the annotation, other data are not there")
                self.assertEqual([f"gridkit: warning: {fault}; passed over",
                                  f"gridkit: warning: {other}: read without its plug-in; {lack}"],
                                 listed.stderr.decode().splitlines())
                for layer in layers.split():
                    kind = "Int16" if "PHASE" in layer else "UInt16"
                    images = []
                    for product, lenient in ((valid, ()), (other, ("--lenient",))):
                        image = FOLDER / f"{variant}{layer}{len(lenient)}.tif"
                        run(GRIDKIT, "read", "-q", *lenient, product, layer, image)
                        images.append(pixels(image, kind))
                    self.assertEqual(*images)
                image = FOLDER / f"{variant}beta0.tif"
                run(GRIDKIT, "read", "-q", "--lenient", other, "VV", image, "--calibrate", "beta0")
                self.assertIn("CALIBRATION", metadata(image))
                if variant != "GEC":
                    points = [described(FOLDER / f"{variant}X_HH_MAGNITUDE_1{lenient}.tif")["gcps"]["gcpList"]
                              for lenient in (0, 1)]
                    self.assertEqual(*points)
                    self.assertEqual(*(text(GRIDKIT, "data", *lenient, product, ":RADAR_Generic_v2.2")
                                       for product, lenient in ((valid, ()), (other, ("--lenient",)))))
                for verb, output in (("quicklook", "picture.png"), ("report", "page.html")):
                    run(GRIDKIT, verb, "-q", "--lenient", other, FOLDER / (variant + output))

    def test_places_come_from_the_annotation(self):
        valid = simulate("valid")
        other, _ = of_another_processor("other")
        for call in ((100, 90), ("--check",), ("--rpc",)):
            self.assertEqual(text(GRIDKIT, "locate", valid, *call),
                             text(GRIDKIT, "locate", "--lenient", other, *call))
        for image in (other.parent / "IMAGEDATA").iterdir():
            image.unlink()
        placed = run(GRIDKIT, "locate", "--lenient", other, 100, 90)
        self.assertEqual(text(GRIDKIT, "locate", valid, 100, 90), placed.stdout.decode())
        self.assertIn("no such image file", placed.stderr.decode())

    def test_what_was_passed_over_is_among_the_warnings(self):
        other, fault = of_another_processor("other")
        self.assertIn(fault, json.loads(text(GRIDKIT, "info", "--json", "--lenient", other))["warnings"])

    def test_nothing_changes_for_a_valid_product(self):
        valid = simulate("valid")
        self.assertEqual(run(GRIDKIT, "info", "--json", valid).stdout,
                         run(GRIDKIT, "info", "--json", "--lenient", valid).stdout)
        self.assertEqual(b"", run(GRIDKIT, "info", "--lenient", valid).stderr)

    def test_what_pixels_need_is_refused(self):
        for element, value, found in (("productVariant", "RAW", '"RAW"'), ("imageDataFormat", "TIFF", '"TIFF"'),
                                      ("lookDirection", "UP", '"UP"'), ("numberOfRows", "many", '"many"'),
                                      ("numberOfColumns", "99999999999", '"99999999999"')):
            with self.subTest(element):
                other, _ = of_another_processor("other")
                with_element(other, element, value)
                refusal = complaint(GRIDKIT, "info", "--lenient", other)
                self.assertRegex(refusal, rf"^gridkit: {re.escape(str(other))}:\d+:\d+: \S*/{element}: .*{found}, "
                                          r"expected .*; --lenient does not pass over it\n$")

    def test_images_that_are_missing_are_told_as_ever(self):
        other, _ = of_another_processor("other")
        [image] = (other.parent / "IMAGEDATA").iterdir()
        image.unlink()
        self.assertIn(f"{image}: no such image file", run(GRIDKIT, "info", "--lenient", other, status=1).stderr.decode())


class Checking(unittest.TestCase):
    def test_warns_and_is_content(self):
        other, fault = of_another_processor("other")
        self.assertEqual(f"tsx-annotation: {fault}\n", complaint(ANNOTATION, "check", other))
        checked = run(ANNOTATION, "check", "--lenient", other)
        self.assertEqual(f"tsx-annotation: warning: {fault}; passed over\n", checked.stderr.decode())
        self.assertEqual(f"{other}: valid in schema 4.0, version text 4.1, but for what was passed over\n",
                         checked.stdout.decode())
        [result] = json.loads(text(ANNOTATION, "check", "--lenient", "--json", other))
        self.assertEqual((0, [ORBIT_SENSOR]), (result["error"], [fault["path"] for fault in result["faults"]]))

    def test_lists_faults_after_a_text_that_holds_an_element(self):
        other, fault = of_another_processor("other")
        with_element(other, "orbitCycle", "<b/>")
        told = complaint(ANNOTATION, "check", "--all", other).splitlines()
        self.assertEqual(2, len(told), told)
        self.assertIn("/missionInfo/orbitCycle: ", told[0])
        self.assertEqual(f"tsx-annotation: {fault}", told[1])

    def test_shows_what_is_there(self):
        valid = simulate("valid")
        other, _ = of_another_processor("other")
        complaint(ANNOTATION, "view", other)
        self.assertEqual(text(ANNOTATION, "view", valid), text(ANNOTATION, "view", "--lenient", other))


if __name__ == "__main__":
    main()
