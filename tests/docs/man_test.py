"""The manual pages: they format without a warning, are found by name, and say what the site's pages say.

    man_test.py BUILD FOLDER ROOT
"""
import os
import re
import subprocess
import unittest

from pages import BUILD, COMMAND_PAGES, fences

MAN = BUILD / "man"
ENVIRONMENT = os.environ | {"LC_ALL": "C.UTF-8", "MANWIDTH": "100", "MANPAGER": "cat"}


def run(*command):
    done = subprocess.run([str(part) for part in command], capture_output=True, text=True, env=ENVIRONMENT)
    assert done.returncode == 0, (command, done.stderr)
    return done


def rendered(page):
    """The page as `man` shows it, without bold and underlined letters."""
    text = run("man", "--warnings", "-l", MAN / f"{page.stem}.1").stdout
    return re.sub(r".\x08|\x1b\[[\d;]*m", "", text)


class ManualPages(unittest.TestCase):
    def test_are_there_for_every_command(self):
        self.assertEqual({f"{page.stem}.1" for page in COMMAND_PAGES}, {file.name for file in MAN.iterdir()})

    def test_format_without_a_warning(self):
        for page in COMMAND_PAGES:
            with self.subTest(page.stem):
                file = MAN / f"{page.stem}.1"
                self.assertEqual("", run("groff", "-man", "-t", "-ww", "-Tutf8", "-z", file).stderr)
                self.assertEqual("", run("man", "--warnings", "-l", file).stderr)

    def test_are_found_by_name_and_summary(self):
        for page in COMMAND_PAGES:
            summary = page.read_text().split("\n")[2].removesuffix(".")
            self.assertRegex(run("lexgrog", MAN / f"{page.stem}.1").stdout,
                             rf'"{re.escape(page.stem)} - {re.escape(summary[:40])}')

    def test_say_what_the_pages_say(self):
        for page in COMMAND_PAGES:
            with self.subTest(page.stem):
                text = rendered(page)
                self.assertRegex(text, rf"^{page.stem.upper()}\(1\)")
                squeezed = " ".join(text.replace("‐\n", "-\n").split())
                for heading in re.findall(r"^## (.*)$", page.read_text(), re.M):
                    self.assertIn(f"\n{heading.upper()}\n", text)
                for line in (line for fence in fences(page) for line in fence.lines):
                    self.assertIn(" ".join(line.split()), squeezed)
                for option in re.findall(r"`(--[\w-]+)", page.read_text()):
                    self.assertIn(option, text)

    def test_hold_no_marks_of_the_source(self):
        for page in COMMAND_PAGES:
            text = rendered(page)
            for fence in fences(page):  # what programs print is their own
                for line in fence.lines:
                    text = text.replace(line, "") if line else text
            self.assertNotRegex(text, r"`|\]\(|\.md\b|(?m:^#)", page.stem)

    def test_refer_to_pages_that_are_there(self):
        for page in COMMAND_PAGES:
            for name in re.findall(r"((?:gridkit|tsx)[\w-]*)\(1\)", rendered(page)):
                self.assertTrue((MAN / f"{name}.1").is_file(), f"{page.stem}: {name}")


if __name__ == "__main__":
    unittest.main(argv=["docs"])
