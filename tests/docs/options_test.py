"""The pages of the commands tell the options that the programs have, no more and no fewer.

    options_test.py BUILD FOLDER ROOT
"""
import json
import re
import shutil
import subprocess
import unittest

from pages import BUILD, COMMAND_PAGES, FOLDER, PAGES, ROOT, fences, name_of

VERBS = {"gridkit": ["formats", "info", "layers", "samples", "read", "quicklook", "data", "locate", "report"],
         "tsx-annotation": ["check", "view", "rewrite"]}


def help_text(*command):
    done = subprocess.run([BUILD / "bin" / command[0], *command[1:], "--help"], capture_output=True, text=True)
    assert done.returncode == 0, (command, done.stderr)
    return done.stdout


def listed(text, heading):
    """Entries under a heading of a help text: each with its further lines."""
    entries, inside = [], False
    for line in text.split("\n"):
        if line == heading:
            inside = True
        elif inside and not line:
            break
        elif inside and re.match(r"  \S", line):
            entries.append(line.strip())
        elif inside:
            entries[-1] += " " + line.strip()
    return entries


def options_of_help(text):
    """Names of the options, each with the values that it takes where they are enumerated or bounded."""
    options = {}
    for entry in listed(text, "Options:"):
        names, _, rest = entry.partition(" ")
        values = set()
        if choice := re.match(r"\S+\|\S+", rest):
            values = set(choice[0].split("|"))
        if bounds := re.search(r"\b(\d+) to (\d+)(;|$)", rest):
            values = set(bounds.groups()[:2])
        if default := re.search(r"; default (\S+)", rest):
            values.add(default[1])
        for name in names.split(","):
            options[name] = values
    return options


def sections(page):
    """Texts under the page's headings of the second level, by heading."""
    parts = re.split(r"^## (.*)$", page.read_text(), flags=re.M)
    return dict(zip(parts[1::2], parts[2::2]))


def options_of_page(text):
    """Names of the options that definitions stand for, each with its definition."""
    options = {}
    for term, definition in re.findall(r"^(`-.*)\n(:   (?:.*\n)(?:(?: {4}.*)?\n)*)", text, flags=re.M):
        for name in re.findall(r"`(--?[\w-]+)`", term):
            assert name not in options, f"{name} twice"
            options[name] = definition
    return options


def commands():
    """Each command with the text of its page that tells its options."""
    for page in COMMAND_PAGES:
        program, _, verb = page.stem.partition("-") if page.stem.startswith("gridkit") else (page.stem, "", "")
        if page.stem == "tsx-annotation":
            for one in VERBS[program]:
                yield (program, one), sections(page)[one]
        else:
            yield tuple(filter(None, (program, verb))), page.read_text()


class Options(unittest.TestCase):
    def test_of_each_command_are_those_of_its_page(self):
        seen = 0
        for command, text in commands():
            with self.subTest(" ".join(command)):
                expected = options_of_help(help_text(*command))
                told = options_of_page(text)
                self.assertEqual(set(expected), set(told))
                for name, values in expected.items():
                    seen += 1
                    for value in values:
                        self.assertRegex(told[name], rf"(?<![\w.]){re.escape(value)}(?![\w])", name)
        self.assertGreater(seen, 60)

    def test_named_in_a_page_exist(self):
        """Also in running text, where every option stands in backticks."""
        known = {name for command, _ in commands() for name in options_of_help(help_text(*command))}
        for page in COMMAND_PAGES:
            own = {name for command, text in commands() if command[0] == page.stem or "-".join(command) == page.stem
                   for name in options_of_help(help_text(*command))}
            plain = re.sub(r"^```.*?^```$", "", page.read_text(), flags=re.M | re.S)
            for name in re.findall(r"`(--[\w-]+)[^`]*`", plain):
                self.assertIn(name, own | options_of_help(help_text("gridkit")).keys(), name_of(page))
        for page in PAGES:
            for name in re.findall(r"^\$ (?:gridkit|tsx-\w+)\b.*? (--[a-z][\w-]*)", page.read_text(), re.M):
                self.assertIn(name, known | {"--plugins"}, name_of(page))

    def test_of_the_readme_are_those_of_the_verb(self):
        used = [line.partition(" # ")[0].split() for fence in fences(ROOT / "README.md") for line in fence.lines
                if re.match(r"(gridkit|tsx-annotation|tsx-simulate) ", line)]
        self.assertGreater(len(used), 10)
        for program, *words in used:
            verb = [next(word for word in words if not word.startswith("-"))] if program in VERBS else []
            self.assertLessEqual(set(verb), set(VERBS.get(program, [])))
            options = options_of_help(help_text(program, *verb))
            for word in words:
                if word.startswith("--"):
                    self.assertIn(word, options, (program, *verb))

    def test_of_the_synopsis_are_options_too(self):
        for page in COMMAND_PAGES:
            for name in re.findall(r"(?<![\w-])(--?[a-z][\w-]*)", sections(page)["Synopsis"]):
                self.assertIn(f"`{name}`", page.read_text().replace(sections(page)["Synopsis"], ""), name_of(page))


class Commands(unittest.TestCase):
    def test_have_a_page_each(self):
        wanted = {"gridkit", "tsx-annotation", "tsx-simulate"} | {f"gridkit-{verb}" for verb in VERBS["gridkit"]}
        self.assertEqual(wanted, {page.stem for page in COMMAND_PAGES})

    def test_are_those_that_the_programs_list(self):
        for program, verbs in VERBS.items():
            self.assertEqual(verbs, [entry.split()[0] for entry in listed(help_text(program), "Verbs:")])

    def test_are_named_by_the_page_of_the_program(self):
        page = (ROOT / "docs/commands/gridkit.md").read_text()
        for verb in VERBS["gridkit"]:
            self.assertIn(f"[gridkit-{verb}](gridkit-{verb}.md)", page)


class Fields(unittest.TestCase):
    def test_of_the_sensor_model_are_those_of_the_record(self):
        shutil.rmtree(FOLDER, ignore_errors=True)
        simulated = subprocess.run([BUILD / "bin/tsx-simulate", FOLDER, "--lines", "64", "--samples", "64"],
                                   check=True, capture_output=True, text=True).stdout.strip()
        data = subprocess.run([BUILD / "bin/gridkit", "data", "--json", simulated, ":RADAR_Generic_v2.2"],
                              check=True, capture_output=True, text=True).stdout
        table = (ROOT / "docs/data.md").read_text().split("## Fields of the sensor model")[1]
        told = [name for row in re.findall(r"^\| (`[^|]*) \|", table, re.M) for name in re.findall(r"`(\w+)`", row)]
        self.assertEqual(sorted(json.loads(data)["value"]), sorted(told))


class Navigation(unittest.TestCase):
    def test_of_the_site_names_every_page(self):
        named = re.findall(r"^ +- .*: (\S+\.md)$", (ROOT / "mkdocs.yml").read_text(), re.M)
        self.assertEqual(len(named), len(set(named)))
        self.assertEqual({name_of(page).removeprefix("docs/") for page in PAGES if page.name != "README.md"}, set(named))


if __name__ == "__main__":
    unittest.main(argv=["docs"])
