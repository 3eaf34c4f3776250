"""Every command that the documents show is run, and prints what they show.

    commands_test.py BUILD FOLDER ROOT

The commands of a page's console blocks run in one shell and in a folder of the page's own, which is empty at its
beginning, with the programs of the build in the path. What they print, on standard error too, is compared line by line.
They succeed, unless the next one is `echo $?`, whose output tells that they do not.
"""
import os
import re
import shutil
import subprocess
import unittest
from pathlib import Path

from pages import BUILD, FOLDER, PAGES, ROOT, differs, fences, name_of, shown_commands

# Blocks in "sh" are not run here. The pages that may have them, and why.
NOT_RUN = {
    "docs/limits.md": "runs the tests themselves",
    "docs/performance.md": "benchmarks: their figures are of one machine",
    "docs/pipelines.md": "the recipe for an archive of one's own, run by tests/tools/pipelines_test.py, and a validator",
    "docs/start.md": "installs packages, or builds and installs from source",
    "docs/annotation-classes.md": "run by tests/packaging/install_test.py, with its console blocks, where the classes are installed",
    "docs/c-api.md": "run by tests/packaging/install_test.py, with its console blocks, where gridkit is installed",
    "docs/writing-a-plugin.md": "run by tests/packaging/install_test.py, with its console blocks, where gridkit is installed",
}
RUN_ELSEWHERE = dict.fromkeys(("docs/annotation-classes.md", "docs/c-api.md", "docs/writing-a-plugin.md"), "tests/packaging/install_test.py")
# Shows what real annotations give, in blocks in "text".
REAL = "docs/geometry.md"
# Kinds of blocks that show no command.
PLAIN = {"text", "c", "cpp", "cmake", "json", "python"}

LONGEST_SECONDS = 120


def setUpModule():
    shutil.rmtree(FOLDER, ignore_errors=True)
    FOLDER.mkdir(parents=True)


def run(commands, folder):
    """Output and exit status of commands that one shell runs in the folder."""
    outputs = folder.with_name(folder.name + ".outputs")
    outputs.mkdir(parents=True)
    folder.mkdir()
    script = "".join(f"{{ {command}\n}} >{outputs}/{i}.out 2>&1; status=$?; echo $status >{outputs}/{i}.status; (exit $status)\n"
                     for i, command in enumerate(commands))
    environment = {"PATH": f"{BUILD}/bin:{os.environ['PATH']}", "HOME": str(folder), "LC_ALL": "C.UTF-8"}
    subprocess.run(["bash", "--norc", "-c", script], cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                   timeout=LONGEST_SECONDS)
    for i in range(len(commands)):
        printed = (outputs / f"{i}.out").read_text().split("\n")
        if printed[-1] == "":
            printed.pop()
        yield printed, int((outputs / f"{i}.status").read_text())


class Pages(unittest.TestCase):
    maxDiff = None

    def test_commands_print_what_is_shown(self):
        count = 0
        for page in PAGES:
            if name_of(page) in RUN_ELSEWHERE:
                continue
            shown = shown_commands(page)
            count += len(shown)
            done = run([one.command for one in shown], FOLDER / name_of(page).replace("/", "-"))
            following = [one.command for one in shown[1:]] + [""]
            for one, (printed, status), next_command in zip(shown, done, following):
                with self.subTest(f"{name_of(page)}:{one.line}: $ {one.command}"):
                    difference = differs(one.output, printed)
                    if difference:
                        self.assertEqual(one.output, printed, difference)
                    if next_command != "echo $?":
                        self.assertEqual(0, status)
        self.assertGreater(count, 60)

    def test_what_is_not_run_is_known(self):
        for page in PAGES:
            if page == ROOT / "README.md":
                continue
            for fence in fences(page):
                with self.subTest(f"{name_of(page)}:{fence.line}"):
                    if fence.language in PLAIN and name_of(page) != REAL:
                        self.assertFalse([line for line in fence.lines if line.startswith("$ ")])
                    elif fence.language == "sh":
                        self.assertIn(name_of(page), NOT_RUN)
                        self.assertFalse([line for line in fence.lines if line.startswith("$ ")])
                    else:
                        self.assertIn(fence.language, PLAIN | {"console"})
        with_sh = {name_of(page) for page in PAGES if any(fence.language == "sh" for fence in fences(page))}
        self.assertEqual(set(), set(NOT_RUN) - with_sh)

    def test_what_is_run_elsewhere_is(self):
        for page, test in RUN_ELSEWHERE.items():
            self.assertIn(page, (ROOT / test).read_text())


class FirstScreen(unittest.TestCase):
    """The demo in README.md: it builds, so the commands that it then runs are run here in its place."""

    def test_shows_what_the_demo_prints(self):
        block, = (fence.lines for fence in fences(ROOT / "README.md") if fence.lines[0] == "$ scripts/demo")
        demo = (ROOT / "scripts/demo").read_text()
        simulate, = re.findall(r'"\$bin/(tsx-simulate)" "\$out/\$variant" --variant "\$variant" (.*)$', demo, re.M)
        self.assertIn('"$bin/gridkit" info "$1"', demo)
        _, (printed, status) = run([f"{simulate[0]} SSC --variant SSC {simulate[1]}", "gridkit info SSC"], FOLDER / "demo")
        self.assertEqual(0, status)
        pictures = [f"picture: out/demo/SSC_{name}.png" for name in ("X_HH_MAGNITUDE_1", "X_HH_PHASE_2")]
        self.assertIsNone(differs(block[1:], ["", *printed, *pictures, ""]))
        self.assertGreater(len(set(block) & set(printed)), 15)


REAL_ANNOTATIONS = os.environ.get("TSX_REAL_ANNOTATIONS")  # the folder of those that the page is about


@unittest.skipUnless(REAL_ANNOTATIONS, "no real annotations at hand")
class RealAnnotations(unittest.TestCase):
    maxDiff = None

    def test_give_what_is_shown(self):
        shown = shown_commands(ROOT / REAL, "text")
        self.assertEqual(2, len(shown))
        for one in shown:
            variant, = re.findall(r" (SSC|MGD)\.xml", one.command)
            annotation, = Path(REAL_ANNOTATIONS).glob(f"TSX1_SAR__{variant}_*.xml")
            prepare = f"tsx-simulate --images-for '{annotation}' images --empty-images; ln -s images/*.xml {variant}.xml; ln -s images/IMAGEDATA ."
            _, (printed, status) = run([prepare, one.command], FOLDER / f"real-{variant}")
            self.assertEqual(one.output, printed)
            self.assertEqual(0, status)


class Differences(unittest.TestCase):
    """The comparison itself."""

    def test_are_seen_line_by_line(self):
        self.assertIsNone(differs(["a", "b"], ["a", "b"]))
        self.assertIsNone(differs([], []))
        for printed in ([], ["a"], ["a", "b", "c"], ["a", "B"], ["a", "b "]):
            self.assertTrue(differs(["a", "b"], printed), printed)

    def test_dots_stand_for_lines_and_nothing_else_does(self):
        expected = ["a", "...", "c", "...", "e"]
        for printed in (["a", "c", "e"], ["a", "b", "c", "d", "d", "e"], ["a", "c", "c", "e"]):
            self.assertIsNone(differs(expected, printed), printed)
        for printed in (["a", "e"], ["a", "c"], ["b", "c", "e"], ["a", "c", "e", "f"], ["a", "bc", "e"]):
            self.assertTrue(differs(expected, printed), printed)
        self.assertTrue(differs(["a", "...", "a"], ["a"]))
        self.assertIsNone(differs(["..."], ["a"]))


if __name__ == "__main__":
    unittest.main(argv=["docs"])
