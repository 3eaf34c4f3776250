"""How a real browser shows the page of `gridkit report`.

    report_in_browser_test.py BUILD FOLDER
"""
import re
import sys
import unittest

from browser import Browser
from programs import BUILD, FOLDER, GRIDKIT, run, simulate
from report_page import HOSTILE, hostile_product


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
