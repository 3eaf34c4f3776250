"""How a real browser shows the page of `gridkit report`.

    report_in_browser_test.py BUILD FOLDER
"""
import itertools
import re
import sys
import unittest

from browser import Browser
from programs import BUILD, FOLDER, GRIDKIT, run, simulate
from report_page import HOSTILE, hostile_product


def contains(box, other):
    return box[0] <= other[0] and box[1] <= other[1] and other[2] <= box[2] and other[3] <= box[3]


def meet(one, other):
    return one[0] < other[2] and other[0] < one[2] and one[1] < other[3] and other[1] < one[3]


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

    # Of every drawing: its caption, its own box, that of its map's frame or null, and the words of its texts with theirs.
    TEXTS = """
        const box = e => { const b = e.getBoundingClientRect(); return [b.left, b.top, b.right, b.bottom]; };
        return [...document.querySelectorAll('figure svg')].map(svg => ({
          caption: svg.closest('figure').querySelector('figcaption').textContent,
          box: box(svg), frame: svg.querySelector('.frame') && box(svg.querySelector('.frame')),
          texts: [...svg.querySelectorAll('text')].map(t =>
            ({words: t.textContent, box: box(t), inFrame: t.classList.contains('halo')}))}))"""

    def test_no_text_of_a_drawing_covers_another_or_leaves_it(self):
        page = FOLDER / "drawings.html"
        scenes = {f"{way}, {look}": ("--pass", way, "--look", look, "--profile", "minimal")
                  for way in ("ascending", "descending") for look in ("left", "right")}
        sizes = {"small": (64, 64), "long": (20000, 64), "wide": (64, 20000), "square": (4000, 4000)}
        products = [(f"{scene}, {size}", (*options, "--empty-images"), sizes[size])
                    for scene, options in scenes.items() for size in sizes]
        products += [(f"begins with {corner}", ("--variant", "MGD", "--start-with", corner, "--empty-images"), (900, 900))
                     for corner in ("EARLYAZNEARRG", "EARLYAZFARRG", "LATEAZNEARRG", "LATEAZFARRG")]
        products += [(f"on a map at {centre}", ("--variant", "GEC", "--projection", projection, "--centre", centre),
                      (shape, 500)) for centre, projection in (("48,11", "UTM"), ("-16.5,179.99", "UTM"), ("81.5,15", "UPS"))
                     for shape in (460, 200)]
        products += [(f"near a pole, {look}", ("--centre", centre, "--look", look, "--empty-images"), (3000, 3000))
                     for look, centre in (("left", "-83,-100"), ("right", "83,-100"))]
        for name, options, (lines, samples) in products:
            run(GRIDKIT, "report", simulate("drawings", *options, lines=lines, samples=samples), page, "--overwrite",
                "--size", 64)
            self.browser.open(page)
            drawings = self.browser.run(self.TEXTS)
            self.assertEqual(2, len([d for d in drawings if d["frame"]]))
            shown = [t["words"] for d in drawings for t in d["texts"]]
            for words in ("first pixel", "flight", "look", "satellite", "scene"):
                self.assertEqual(1, shown.count(words), (name, words))
            for drawing in drawings:
                texts = drawing["texts"]
                with self.subTest(name=name, caption=drawing["caption"]):
                    self.assertGreaterEqual(len([t for t in texts if re.search(r"° ?[NESW]?$", t["words"])]),
                                            4 if drawing["frame"] else 0)
                    for text in texts:
                        self.assertTrue(contains(drawing["box"], text["box"]), text)
                        if text["inFrame"]:
                            self.assertTrue(contains(drawing["frame"], text["box"]), text)
                    for one, other in itertools.combinations(texts, 2):
                        self.assertFalse(meet(one["box"], other["box"]), (one, other))

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


class Failures(unittest.TestCase):
    """Of the browser and its driver: what they said is told."""

    def fails(self, script):
        driver = FOLDER / "driver"
        driver.write_text(f"#!{sys.executable}\n{script}")
        driver.chmod(0o755)
        with self.assertRaises(AssertionError) as failure:
            with Browser(FOLDER / "failing", str(driver)):
                pass
        return str(failure.exception)

    def test_a_driver_that_does_not_start_is_quoted(self):
        self.assertIn("did not start. It said:\nno library x\n", self.fails("print('no library x')"))

    def test_a_driver_that_is_not_there_is_named(self):
        with self.assertRaisesRegex(AssertionError, "/none cannot be started: .*No such file"):
            with Browser(FOLDER / "failing", "/none"):
                pass

    def test_what_a_refusing_driver_answers_is_told_with_its_log(self):
        message = self.fails("""
import http.server, sys
log = next(a for a in sys.argv if a.startswith("--log-path=")).split("=", 1)[1]
class Refusal(http.server.BaseHTTPRequestHandler):
    def do_POST(self):
        self.rfile.read(int(self.headers["Content-Length"]))
        self.send_response(500)
        self.end_headers()
        self.wfile.write(b'{"value": {"message": "the browser crashed"}}')
    def log_message(self, *_):
        pass
server = http.server.HTTPServer(("127.0.0.1", 0), Refusal)
open(log, "w").write("missing: libnss3.so")
print("started successfully on port", server.server_port, flush=True)
server.handle_request()
""")
        for words in ("HTTP Error 500", "the browser crashed", "missing: libnss3.so"):
            self.assertIn(words, message)


if __name__ == "__main__":
    FOLDER.mkdir(parents=True, exist_ok=True)
    unittest.main(argv=sys.argv[:1])
