"""`gridkit report` from the outside: the page's markup, what it tells against the annotation, and what hostile
texts do to it.

    report_test.py BUILD FOLDER
"""
import base64
import json
import math
import re
import shutil
import sys
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

from png import Png
from programs import FOLDER, GRIDKIT, complaint, cut, run, simulate, text
from report_page import HOSTILE, Page, curves, hostile_product, report


def leaves_of(element):
    """Names, attributes and values of the annotation's elements without children, in order."""
    if len(element) == 0:
        yield element.tag, dict(element.attrib), " ".join((element.text or "").split())
    for child in element:
        yield from leaves_of(child)


def leaves_of_tree(page):
    [tree] = page.find("div", identity="tree")
    for leaf in tree.all("div"):
        [name], [value] = leaf.all("b"), leaf.all("span")
        attributes = dict(i.text().split("=", 1) for i in leaf.all("i"))
        unit = "".join(u.text() for u in leaf.all("u"))
        yield name.text(), attributes, value.text(), unit


def polynomial(element, at):
    """An annotation's polynomial at the share `at` of its validity."""
    low, high, reference = (float(element.find(n).text) for n in
                            ("validityRangeMin", "validityRangeMax", "referencePoint"))
    d = low + (high - low) * at - reference
    return sum(float(c.text) * d**int(c.get("exponent")) for c in element.findall("coefficient"))


class Markup(unittest.TestCase):
    def test_it_is_well_formed_and_links_to_itself_alone(self):
        for options in (("--variant", "SSC", "--polarisations", "HH,VV"), ("--variant", "MGD"), ("--variant", "GEC"),
                        ("--variant", "EEC", "--projection", "UPS", "--centre", "78,15"),
                        ("--mode", "scansar", "--profile", "maximal"), ("--profile", "minimal")):
            with self.subTest(options=options):
                page = report(simulate("markup", *options))
                identities = [n.attributes["id"] for n in page.find() if "id" in n.attributes]
                self.assertEqual(len(set(identities)), len(identities))
                for node in page.find():
                    for name, value in node.attributes.items():
                        if name in ("src", "href", "xlink:href", "action", "srcset", "data", "poster"):
                            self.assertTrue(value.startswith("data:") or value[1:] in identities, value[:80])
                        else:
                            self.assertNotRegex(value, r"(?i)https?:|//", (node.name, name))
                        self.assertFalse(name.startswith("on"), name)
                own = "".join(n.text() for n in page.find("style") + page.find("script"))
                self.assertNotRegex(own, r"(?i)https?:|url\(|@import|fetch\(|XMLHttpRequest|WebSocket|import\(")
                self.assertEqual(1, len(page.find("script")))

    def test_a_browser_is_told_to_load_nothing(self):
        [policy] = [n.attributes["content"] for n in report(simulate("policy")).find("meta")
                    if n.attributes.get("http-equiv") == "Content-Security-Policy"]
        self.assertIn("default-src 'none'; img-src data:;", policy)
        self.assertNotIn("unsafe", policy)


class Contents(unittest.TestCase):
    def test_the_tree_holds_the_whole_annotation(self):
        for options in (("--profile", "maximal"), ("--variant", "GEC", "--version-text", "3.5")):
            annotation = simulate("tree", *options)
            wanted = list(leaves_of(ElementTree.parse(annotation).getroot()))
            shown = list(leaves_of_tree(report(annotation)))
            self.assertGreater(len(wanted), 500)
            self.assertEqual(len(wanted), len(shown))
            for (name, attributes, value), (got_name, got_attributes, got_value, unit) in zip(wanted, shown):
                self.assertEqual((name, value), (got_name, got_value))
                if "units" in attributes:
                    self.assertEqual(attributes.pop("units"), unit)
                self.assertEqual(attributes, got_attributes)

    def test_numbers_have_their_units(self):
        units = {(name, unit) for name, _, _, unit in leaves_of_tree(report(simulate("units")))}
        for wanted in (("RSF", "Hz"), ("sceneAverageHeight", "m"), ("incidenceAngle", "°"), ("posX", "m"),
                       ("velX", "m/s"), ("firstPixel", "s"), ("rowSpacing", "s"), ("polLayer", ""),
                       ("numberOfRows", ""), ("dopplerAtMidRange", "Hz")):
            self.assertIn(wanted, units)

    def test_every_layer_has_its_picture_and_histogram(self):
        annotation = simulate("layers", "--polarisations", "HH,HV,VH,VV")
        page = report(annotation, "--size", 100)
        layers = [l["name"] for l in json.loads(text(GRIDKIT, "info", "--json", annotation))["layers"]]
        self.assertEqual(8, len(layers))
        pictures = list(page.section("layers").all("figure", "picture"))
        self.assertEqual(layers, [next(p.all("figcaption")).text() for p in pictures])
        for figure, layer in zip(pictures, layers):
            encoded = next(figure.all("img")).attributes["src"].removeprefix("data:image/png;base64,")
            inside = Png(base64.b64decode(encoded, validate=True))
            output = FOLDER / "same.png"
            run(GRIDKIT, "quicklook", annotation, layer, output, "--size", 100, "--overwrite")
            self.assertEqual(Png(output.read_bytes()).lines, inside.lines)
        histograms = list(page.section("histograms").all("figure", "plot"))
        self.assertEqual(layers, [next(h.all("figcaption")).text() for h in histograms])
        for figure in histograms:
            [points] = curves(figure)
            # Shares in percent of as many equal parts; the first 99.5 % for magnitudes.
            self.assertTrue(98 < sum(y for _, y in points) < 101, sum(y for _, y in points))

    def test_doppler_and_noise_are_the_annotations_polynomials(self):
        annotation = simulate("curves", lines=2000)
        root = ElementTree.parse(annotation).getroot()
        factor = float(root.find("calibration/calibrationConstant/calFactor").text)
        page = report(annotation)
        estimates = [e.find("combinedDoppler") for e in root.iterfind("processing/doppler/dopplerCentroid/dopplerEstimate")]
        noises = [e.find("noiseEstimate") for e in root.iterfind("noise/imageNoise")]
        for section, records, shown in (("doppler", estimates, lambda v: v),
                                        ("noise", noises, lambda v: 10 * math.log10(factor * v))):
            along, across = page.section(section).all("figure", "plot")
            [curve] = curves(along)
            self.assertEqual(len(records), len(curve))
            for (_, value), record in zip(curve, records):
                self.assertAlmostEqual(value, shown(polynomial(record, 0.5)), delta=0.05)
            wanted = [records[0], records[len(records) // 2], records[-1]]
            drawn = curves(across)
            self.assertEqual(3, len(drawn))
            for curve, record in zip(drawn, wanted):
                low, high = (1000 * float(record.find(n).text) for n in ("validityRangeMin", "validityRangeMax"))
                self.assertAlmostEqual(curve[0][0], low, delta=(high - low) * 0.005)
                self.assertAlmostEqual(curve[-1][0], high, delta=(high - low) * 0.005)
                for i, (_, value) in enumerate(curve):
                    self.assertAlmostEqual(value, shown(polynomial(record, i / (len(curve) - 1))), delta=0.05)
        labels = page.section("doppler").text() + page.section("noise").text()
        for label in ("Doppler centroid, Hz", "radar brightness, dB", "two-way range time, ms",
                      "time from the scene's start, s"):
            self.assertIn(label, labels)

    def test_the_footprint_meets_the_stated_corners(self):
        for options in (("--variant", "SSC"), ("--variant", "MGD", "--start-with", "LATEAZFARRG"),
                        ("--variant", "SSC", "--centre", "-16.5,179.99"), ("--variant", "SSC", "--centre", "81.5,-40")):
            with self.subTest(options=options):
                scene, _ = report(simulate("corners", *options)).section("place").all("figure", "map")
                [outline] = scene.all("path", "footprint")
                drawn = [(float(x), float(y)) for x, y in
                         re.findall(r"[ML](-?[\d.]+) (-?[\d.]+)", outline.attributes["d"])]
                stated = [(float(c.attributes["cx"]), float(c.attributes["cy"])) for c in scene.all("circle", "stated")]
                self.assertEqual((4, 4), (len(drawn), len(stated)))
                for corner in stated:
                    # Stated at pixel centres, in single precision: a metre of some hundreds.
                    self.assertLess(min(math.dist(corner, other) for other in drawn), 4)
                for corner in drawn:
                    self.assertTrue(78 <= corner[0] <= 448 and 12 <= corner[1] <= 354, corner)

    def test_the_satellite_stands_on_the_side_it_looks_from(self):
        for look, side in (("right", 1), ("left", -1)):
            for way, turn in (("descending", 1), ("ascending", -1)):
                _, overview = report(simulate("side", "--look", look, "--pass", way)).section("place").all("figure", "map")
                [nadir] = overview.all("circle", "nadir")
                [scene] = overview.all("path", "footprint")
                scene_x = float(re.match(r"M(-?[\d.]+)", scene.attributes["d"]).group(1))
                east = float(nadir.attributes["cx"]) - scene_x
                # Flying south and looking right the scene lies west of the track.
                self.assertGreater(side * turn * east, 50, (look, way))

    def test_tables_hold_the_published_records(self):
        annotation = simulate("records")
        records = report(annotation).section("records")
        rows = {}
        for row in records.all("tr"):
            cells = [c.text() for c in row.children if not isinstance(c, str)]
            rows[cells[0]] = cells[1:]
        for name in (":RADAR_Generic_v2.2", ":TSX_Beta0"):
            for field, value in json.loads(text(GRIDKIT, "data", "--json", annotation, name))["value"].items():
                with self.subTest(field=field):
                    shown = rows[field][0]
                    if isinstance(value, list):
                        self.assertTrue(shown.startswith(f"{len(value)} values"))
                    elif isinstance(value, str):
                        self.assertEqual(value, shown)
                    else:
                        self.assertLessEqual(abs(float(shown) - value), abs(value) * 1e-11)
        self.assertEqual("m", rows["wavelength"][1])
        factor = float(rows["calibration_factor"][0])
        self.assertAlmostEqual(10 * math.log10(factor), float(rows["in decibels"][0]), delta=0.0006)

    def test_images_without_data_and_lines_without_data_are_told(self):
        page = report(simulate("none", "--variant", "MGD", "--empty-images"))
        self.assertIn("No pixel holds data.", page.section("layers").text())
        self.assertIn("Nothing to draw.", page.section("histograms").text())
        output = FOLDER / "missing.html"
        run(GRIDKIT, "report", cut(simulate("missing", lines=293), 292), output, "--overwrite")
        page = Page(output.read_text(encoding="utf-8"))
        self.assertIn("Lines without data, in part or in whole: 292.", page.section("layers").text())

    def test_a_huge_annotation_is_cut_and_says_so(self):
        annotation = simulate("huge", "--size-mb", 12, lines=64, samples=64)
        page = report(annotation)
        [tree] = page.find("div", identity="tree")
        shown = len(list(tree.all("b")))
        self.assertEqual(100_000, shown)
        total = sum(1 for _ in ElementTree.parse(annotation).iter())
        self.assertIn(f"{total - shown} more elements are left out here", page.section("annotation").text())


class Hostile(unittest.TestCase):
    def test_texts_stay_texts(self):
        annotation = hostile_product()
        page = report(annotation)
        self.assertEqual(1, len(page.find("script")))
        for image in page.find("img"):
            self.assertTrue(image.attributes["src"].startswith("data:image/png;base64,"))
            self.assertNotIn("onerror", image.attributes)
        values = [value for _, _, value, _ in leaves_of_tree(page)]
        self.assertGreaterEqual(values.count(HOSTILE), 5)
        self.assertIn(HOSTILE, page.section("acquisition").text())
        [path] = page.find("footer")
        self.assertEqual(str(annotation), path.text())
        plain = report(simulate("plain", "--profile", "maximal"))
        self.assertEqual({n.name for n in plain.find()}, {n.name for n in page.find()})

    def test_bytes_that_are_no_text_are_replaced(self):
        plain = simulate("bytes")
        folder = Path(str(FOLDER) + "/\udcff\udcc3(")
        shutil.rmtree(folder, ignore_errors=True)
        shutil.copytree(plain.parent, folder)
        page = report(folder / plain.name)
        self.assertIn("/\ufffd\ufffd(/", page.find("footer")[0].text())


class Refusals(unittest.TestCase):
    def test_an_existing_file_is_kept_unless_told(self):
        output = FOLDER / "kept.html"
        output.write_text("mine")
        self.assertEqual(f"gridkit: {output}: exists already; --overwrite replaces it\n",
                         complaint(GRIDKIT, "report", simulate("kept"), output))
        self.assertEqual("mine", output.read_text())

    def test_a_product_that_cannot_be_read_leaves_no_file(self):
        product = simulate("gone")
        next((product.parent / "IMAGEDATA").glob("*.cos")).unlink()
        complaint(GRIDKIT, "report", product, FOLDER / "gone.html")
        self.assertEqual([], list(FOLDER.glob("gone.html*")))

    def test_wrong_use(self):
        run(GRIDKIT, "report", "a.xml", status=2)
        run(GRIDKIT, "report", "a.xml", "b.html", "--size", 4096, status=2)


if __name__ == "__main__":
    FOLDER.mkdir(parents=True, exist_ok=True)
    unittest.main(argv=sys.argv[:1])
