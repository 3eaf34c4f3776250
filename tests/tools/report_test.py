"""`gridkit report` from the outside: the page's markup, what it tells against the annotation, what hostile texts
do to it, and how a real browser shows it.

    report_test.py BUILD FOLDER
"""
import base64
import html.parser
import json
import math
import re
import shutil
import sys
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

from browser import Browser
from png import Png
from programs import BUILD, FOLDER, GRIDKIT, complaint, run, simulate, text

VOID = {"meta", "link", "input", "img", "br", "hr"}
HOSTILE = """<script>document.title="taken"</script>"><img src=x onerror="document.title='taken'">'{{script}}</div>"""


class Node:
    def __init__(self, name, attributes, parent):
        self.name, self.parent = name, parent
        self.attributes = {key: value or "" for key, value in dict(attributes).items()}
        self.children, self.own_text = [], ""

    def text(self):
        """All text inside, in order."""
        return "".join(c if isinstance(c, str) else c.text() for c in self.children)

    def all(self, name=None, kind=None):
        for child in self.children:
            if isinstance(child, str):
                continue
            kinds = child.attributes.get("class", "").split()
            if (name is None or child.name == name) and (kind is None or kind in kinds):
                yield child
            yield from child.all(name, kind)


class Page(html.parser.HTMLParser):
    """A page's elements; every start tag must have its end tag, in order."""

    def __init__(self, content):
        super().__init__(convert_charrefs=True)
        self.root = self.at = Node("", {}, None)
        self.feed(content)
        self.close()
        assert self.at is self.root, f"<{self.at.name}> is not ended"

    def handle_starttag(self, tag, attrs):
        assert len(dict(attrs)) == len(attrs), f"an attribute of <{tag}> stands twice"
        node = Node(tag, attrs, self.at)
        self.at.children.append(node)
        if tag not in VOID:
            self.at = node

    def handle_startendtag(self, tag, attrs):
        self.handle_starttag(tag, attrs)
        if tag not in VOID:
            self.at = self.at.parent

    def handle_endtag(self, tag):
        assert self.at.name == tag, f"</{tag}> ends <{self.at.name}>"
        self.at = self.at.parent

    def handle_data(self, data):
        self.at.children.append(data)

    def find(self, name=None, kind=None, identity=None):
        return [n for n in self.root.all(name, kind) if identity is None or n.attributes.get("id") == identity]

    def section(self, identity):
        [found] = self.find("section", identity=identity)
        return found


def report(annotation, *options):
    output = FOLDER / "report.html"
    done = run(GRIDKIT, "report", annotation, output, "--overwrite", *options)
    assert (done.stdout, done.stderr) == (b"", b""), done
    return Page(output.read_text(encoding="utf-8"))


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


def curves(figure):
    """A plot's curves in its own units, from the places of its axes' numbers."""
    def axis(anchor, coordinate):
        marks = []
        for label in figure.all("text"):
            if label.attributes.get("text-anchor") == anchor and "transform" not in label.attributes:
                try:
                    marks.append((float(label.attributes[coordinate]), float(label.text())))
                except ValueError:
                    pass
        (p0, v0), (p1, v1) = marks[0], marks[-1]
        offset = -3.5 if coordinate == "y" else 0  # numbers stand a little below their line
        return lambda p: v0 + (p - p0 - offset) * (v1 - v0) / (p1 - p0)
    x, y = axis("middle", "x"), axis("end", "y")
    result = []
    for curve in figure.all("g", "curve"):
        [path] = curve.all("path")
        points = re.findall(r"[ML](-?[\d.]+) (-?[\d.]+)", path.attributes["d"])
        result.append([(x(float(a)), y(float(b))) for a, b in points])
    return result


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
                    self.assertTrue(62 <= corner[0] <= 448 and 12 <= corner[1] <= 354, corner)

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
        page = report(simulate("missing", lines=293))
        self.assertIn("Lines without data, in part or in whole: 292.", page.section("layers").text())

    def test_a_huge_annotation_is_cut_and_says_so(self):
        annotation = simulate("huge", "--size-mb", 12, lines=64, samples=64)
        page = report(annotation)
        [tree] = page.find("div", identity="tree")
        shown = len(list(tree.all("b")))
        self.assertEqual(100_000, shown)
        total = sum(1 for _ in ElementTree.parse(annotation).iter())
        self.assertIn(f"{total - shown} more elements are left out here", page.section("annotation").text())


def hostile_product():
    """A product with markup in its folder's name, in texts and in attributes."""
    plain = simulate("hostile", "--profile", "maximal")
    folder = FOLDER / "<img src=x onerror=alert(1)>&'"
    shutil.rmtree(folder, ignore_errors=True)
    shutil.copytree(plain.parent, folder)
    annotation = folder / plain.name
    escaped = HOSTILE.replace("&", "&amp;").replace("<", "&lt;").replace('"', "&quot;")
    content = annotation.read_text()
    for element in ("copyrightInfo", "sceneID", "qualityRemark", "noiseModelID", "deliveryInfo"):
        content, count = re.subn(f"<{element}>[^<]*<", lambda _, e=element: f"<{e}>{escaped}<", content)
        assert count > 0, element
    content, count = re.subn(r'fileName="[^"]*"', lambda _: f'fileName="{escaped[:100]}"', content)
    assert count > 0
    annotation.write_text(content)
    return annotation


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


class InABrowser(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.page = FOLDER / "browser.html"
        product = simulate("browser", "--profile", "maximal", lines=1500, samples=1200)
        run(GRIDKIT, "report", product, cls.page, "--overwrite")
        cls.browser = cls.enterClassContext(Browser(FOLDER / "profile"))

    def setUp(self):
        self.browser.screen(1280, 900)
        self.browser.log("browser")
        self.browser.requests()
        self.browser.open(self.page)

    def assertQuiet(self):
        self.assertEqual([], [entry["message"] for entry in self.browser.log("browser")])

    def test_it_renders_without_a_word_on_the_console_and_asks_for_nothing(self):
        self.assertIn("SSC", self.browser.run("return document.title"))
        broken = self.browser.run("return [...document.images].filter(i => !i.complete || i.naturalWidth === 0).length")
        self.assertEqual(0, broken)
        self.assertEqual(3, self.browser.run("return document.images.length"))
        for kind in ("svg", ".picture", ".tree", "h1"):
            height = self.browser.run("return document.querySelector(arguments[0]).getBoundingClientRect().height", kind)
            self.assertGreater(height, 20, kind)
        self.assertTrue(self.browser.run(
            "return document.querySelector('image.draped').getAttribute('href') === "
            "document.getElementById('picture0').src"))
        self.assertQuiet()
        asked = {url for url in self.browser.requests() if not url.startswith("data:")}
        self.assertEqual({self.page.resolve().as_uri()}, asked)
        self.browser.screenshot(BUILD / "report.png")
        self.assertGreater((BUILD / "report.png").stat().st_size, 100_000)

    VISIBLE = ("return [...document.querySelectorAll('#tree div')].filter(e => e.checkVisibility())"
               ".map(e => e.querySelector('b').textContent)")

    def test_typing_filters_the_tree(self):
        total = self.browser.run("return document.querySelectorAll('#tree div').length")
        self.assertEqual(f"{total:,} values", self.browser.run("return document.getElementById('found').textContent"))
        self.assertEqual(0, len(self.browser.run(self.VISIBLE)))
        self.browser.type("#search", "calibration CALFACTOR")
        found = self.browser.wait_for("const t = document.getElementById('found').textContent; return t.includes(' of ') && t")
        visible = self.browser.run(self.VISIBLE)
        self.assertEqual(f"{len(visible)} of {total:,} values", found)
        self.assertIn("calFactor", visible)
        self.assertLess(len(visible), 10)
        # By what stands above it, its name and its value.
        self.browser.type("#search", "noise polLayer HH")
        self.browser.wait_for("return [...document.querySelectorAll('#tree .hit b')].some(e => e.textContent === 'polLayer')")
        self.assertEqual({"polLayer"}, set(self.browser.run(self.VISIBLE)))
        self.browser.type("#search", "nothing has this name")
        self.browser.wait_for("return document.getElementById('found').textContent.startsWith('0 of')")
        self.assertEqual([], self.browser.run(self.VISIBLE))
        self.browser.type("#search", "\ue00c")  # escape
        self.browser.wait_for("return !document.getElementById('found').textContent.includes('of')")
        self.assertEqual(0, self.browser.run("return document.querySelectorAll('#tree [hidden]').length"))
        self.browser.click("#expand")
        self.assertEqual(total, len(self.browser.run(self.VISIBLE)))
        self.assertQuiet()

    def test_a_phone_needs_no_sideways_scrolling(self):
        for width in (320, 390):
            self.browser.screen(width, 800, phone=True)
            self.browser.run("for (const d of document.querySelectorAll('details')) d.open = true")
            wide = self.browser.run(
                "return [document.documentElement.scrollWidth, document.body.scrollWidth, innerWidth]")
            self.assertEqual([width] * 3, wide)
            # Letters of the plots, as they are shown.
            height = self.browser.run("return document.querySelector('.plot text').getBoundingClientRect().height")
            self.assertGreater(height, 7)
        self.assertQuiet()

    def test_it_is_dark_where_the_reader_wants_it(self):
        def lightness():
            return [sum(map(int, re.findall(r"\d+", self.browser.run(
                f"return getComputedStyle(document.body).{p}"))[:3])) / 765 for p in ("backgroundColor", "color")]
        paper, ink = lightness()
        self.assertGreater(paper - ink, 0.7)
        self.browser.screen(1280, 900, dark=True)
        paper, ink = lightness()
        self.assertGreater(ink - paper, 0.7)

    def test_hostile_texts_do_nothing(self):
        page = FOLDER / "hostile.html"
        run(GRIDKIT, "report", hostile_product(), page, "--overwrite")
        self.browser.open(page)
        self.browser.type("#search", "copyrightInfo")
        self.browser.wait_for("return document.querySelectorAll('#tree .hit').length === 1")
        self.assertEqual([HOSTILE], self.browser.run(
            "return [...document.querySelectorAll('#tree .hit span')].map(e => e.textContent)"))
        self.assertNotEqual("taken", self.browser.run("return document.title"))
        self.assertEqual(1, self.browser.run("return document.scripts.length"))
        self.assertQuiet()


if __name__ == "__main__":
    FOLDER.mkdir(parents=True, exist_ok=True)
    unittest.main(argv=sys.argv[:1])
