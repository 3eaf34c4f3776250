"""What all verbs of `gridkit` share: how a product is given, where output goes, how it exits.

    conventions_test.py BUILD FOLDER
"""
import json
import os
import pty
import shutil
import subprocess
import unittest

from programs import ANNOTATION, FOLDER, GRIDKIT, SIMULATE, complaint, main, run, simulate, text

VERBS = ("formats", "info", "layers", "read", "data", "locate")


def at_terminal(*command, **environment):
    """What a command writes when both its outputs are a terminal, as one text."""
    ours, theirs = pty.openpty()
    child = subprocess.Popen([str(c) for c in command], stdout=theirs, stderr=theirs,
                             env={**os.environ, "TERM": "xterm", **environment})
    os.close(theirs)
    seen = b""
    while True:
        try:
            part = os.read(ours, 4096)
        except OSError:  # the other end is closed
            break
        if not part:
            break
        seen += part
    os.close(ours)
    child.wait()
    return seen.decode()


class Help(unittest.TestCase):
    def test_names_values_and_tells_defaults(self):
        for command, line in (
                ((SIMULATE,), "  --variant SSC|MGD|GEC|EEC   Complex, ground range, or on a map: on the ellipsoid or on a "
                              "terrain model; default SSC\n"),
                ((SIMULATE,), "  --targets COUNT             Point targets, 0 to 400; default 9\n"),
                ((ANNOTATION, "check"), "  --schema 3.4|3.5|4.0        Bind to this schema, whatever the file says\n"),
                ((ANNOTATION, "check"), "Usage: tsx-annotation check [OPTIONS] PRODUCT...\n"),
                ((GRIDKIT, "quicklook"), "Usage: gridkit quicklook [OPTIONS] PRODUCT [LAYER] OUT.png\n"),
                ((GRIDKIT, "quicklook"), "  --size PIXELS               Most pixels on the longer side, 16 to 8192; "
                                         "default 1024\n"),
                ((GRIDKIT, "read"), "  --block ROW COLUMN          Row and column in the grid of blocks; needs --raw\n"),
                ((GRIDKIT, "read"), "  OUTPUT                      Image file to write, or -; not with --all, --raw\n")):
            self.assertIn(line, text(*command, "--help"))

    def test_words_to_choose_from_are_taken_in_any_case_and_no_others(self):
        for option, word in (("--variant", "Gec"), ("--projection", "ups"), ("--pass", "ASCENDING")):
            run(SIMULATE, option, word, FOLDER / ("words" + option), "--lines", 64, "--samples", 64)
        for word in ("0", "XYZ"):
            self.assertIn(f'"{word}" is none of SSC, MGD, GEC, EEC',
                          run(SIMULATE, FOLDER / "none", f"--variant={word}", status=2).stderr.decode())

    def test_a_list_ends_where_the_folder_stands(self):
        printed = text(SIMULATE, "--polarisations", "HH,VV", FOLDER / "list", "--lines", 64, "--samples", 64)
        self.assertTrue(printed.startswith(str(FOLDER / "list")))


class WrongUse(unittest.TestCase):
    def test_a_misspelt_verb_brings_a_suggestion(self):
        for misspelt, meant in (("inf", "info"), ("layer", "layers"), ("raed", "read"), ("Info", "info"),
                                ("format", "formats"), ("locat", "locate"), ("dta", "data")):
            self.assertEqual(f'gridkit: no verb "{misspelt}"; did you mean "{meant}"?\n'
                             "See `gridkit --help`.\n", complaint(GRIDKIT, misspelt, "x", status=2))

    def test_a_word_that_is_like_no_verb_brings_none(self):
        self.assertEqual('gridkit: no verb "xylophone"\nSee `gridkit --help`.\n',
                         complaint(GRIDKIT, "xylophone", status=2))

    def test_without_a_verb_they_are_listed(self):
        message = complaint(GRIDKIT, status=2)
        for verb in VERBS:
            self.assertIn(" " + verb, message)

    def test_what_is_missing_is_named_with_the_verbs_help(self):
        self.assertEqual("gridkit: info: PRODUCT is required\nSee `gridkit info --help`.\n",
                         complaint(GRIDKIT, "info", status=2))
        message = complaint(GRIDKIT, "info", "x", "--jsno", status=2)
        self.assertIn("--jsno", message)
        self.assertIn("See `gridkit info --help`.", message)

    def test_is_told_by_all_programs_in_the_same_words(self):
        for command, words in (
                ((ANNOTATION,), "a verb is missing; one of check view rewrite"),
                ((ANNOTATION, "chekc"), 'no verb "chekc"; did you mean "check"?'),
                ((SIMULATE,), "FOLDER or --images-for is required"),
                ((SIMULATE, "x", "--linse", 9), 'no option "--linse"; did you mean "--lines"?'),
                ((SIMULATE, "x", "--lines", "many"), '--lines: "many" is no number'),
                ((SIMULATE, "x", "--lines", 63), '--lines: "63" is not within 64 to 40000'),
                ((SIMULATE, "x", "--samples", 40001), '--samples: "40001" is not within 64 to 40000'),
                ((SIMULATE, "x", "--incidence", 61), '--incidence: "61" is not within 15 to 60'),
                ((SIMULATE, "x", "--targets=-1"), '--targets: "-1" is not within 0 to 400'),
                ((SIMULATE, "x", "--version-text", "2.0"), "no schema serves the version text 2.0"),
                ((SIMULATE, "x", "--start", "noon"), "not a UTC time such as 2008-03-10T13:32:20: noon")):
            program = command[0].name
            self.assertEqual(f"{program}: {words}\nSee `{program} --help`.\n", complaint(*command, status=2))
        for command, words in (
                ((ANNOTATION, "check", "x", "--schema", "3.6"), '--schema: "3.6" is none of 3.4, 3.5, 4.0'),
                ((ANNOTATION, "view"), "PRODUCT is required"),
                ((GRIDKIT, "quicklook", "x", "x.png", "--size", "large"), '--size: "large" is no number'),
                ((GRIDKIT, "quicklook", "x", "x.png", "--size", 15), '--size: "15" is not within 16 to 8192')):
            program, verb = command[0].name, command[1]
            self.assertEqual(f"{program}: {verb}: {words}\nSee `{program} {verb} --help`.\n",
                             complaint(*command, status=2))

    def test_every_verb_helps(self):
        overview = text(GRIDKIT, "--help")
        for verb in VERBS:
            self.assertIn(verb, overview)
            self.assertIn("Usage: gridkit " + verb, text(GRIDKIT, verb, "--help"))
            self.assertIn("\n  gridkit " + verb, text(GRIDKIT, verb, "--help"), "an example")


class Products(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.product = simulate("deliveries/one", lines=64, samples=64)

    def test_a_folder_stands_for_the_product_in_it(self):
        # The product's own folder, with GEOREF.xml below it, and those around it.
        for folder in (self.product.parent, str(self.product.parent) + "/", self.product.parent.parent):
            info = json.loads(text(GRIDKIT, "info", "--json", folder))
            self.assertEqual("TerraSAR-X", info["format"])
            self.assertTrue(os.path.samefile(self.product, info["file"]))

    def test_every_verb_takes_a_folder(self):
        folder = self.product.parent
        self.assertEqual("X_HH_MAGNITUDE_1\nX_HH_PHASE_2\n", text(GRIDKIT, "layers", folder))
        self.assertEqual(8, json.loads(text(GRIDKIT, "data", "--json", folder, ":TSX_Beta0"))["size"])
        self.assertEqual(5, len(json.loads(text(GRIDKIT, "locate", "--json", folder, "--check"))["points"]))
        self.assertEqual(8192, len(run(GRIDKIT, "read", "--raw", folder, "X_HH_PHASE_2", "--block", 0, 0,
                                       status=0).stdout))

    def test_several_products_are_listed(self):
        other = simulate("deliveries/two", "--variant", "GEC", lines=64, samples=64)
        try:
            message = complaint(GRIDKIT, "info", FOLDER / "deliveries")
            self.assertIn("holds several products; name one of\n", message)
            for product in (self.product, other):
                self.assertIn(f"\n  {product}", message)
        finally:
            shutil.rmtree(FOLDER / "deliveries/two")

    def test_of_more_than_ten_the_rest_is_counted(self):
        crowd = FOLDER / "crowd"
        crowd.mkdir()
        for i in range(12):
            shutil.copy(self.product, crowd / f"TSX1_{i:02}.xml")
        message = complaint(GRIDKIT, "info", crowd)
        self.assertEqual(12, message.count("\n"))
        self.assertIn("\n  and 2 more\n", message)

    def test_a_folder_without_products_tells_what_it_holds(self):
        folder = FOLDER / "strange"
        folder.mkdir()
        self.assertEqual(f"gridkit: {folder}: the folder holds no product\n",
                         complaint(GRIDKIT, "info", folder))
        (folder / "note.xml").write_text("<a/>")
        self.assertEqual(f"gridkit: {folder}: the folder holds no product; of none of the known formats "
                         f"are\n  {folder}/note.xml\n", complaint(GRIDKIT, "info", folder))

    def test_packed_products_are_told_as_that(self):
        packed = FOLDER / "it's packed"
        packed.mkdir()
        for ending, command in ((".tar.gz", "tar -xf"), (".tgz", "tar -xf"), (".tar", "tar -xf"), (".zip", "unzip"),
                                (".TAR.GZ", "tar -xf")):
            file = packed / f"TSX1{ending}"
            file.write_bytes(b"packed")
            quoted = str(file).replace("'", "'\\''")
            for program, *verb in ((GRIDKIT, "info"), (ANNOTATION, "view"), (ANNOTATION, "check")):
                self.assertEqual(f"{program.name}: {file}: still packed; unpack it first: {command} '{quoted}'\n",
                                 complaint(program, *verb, file))
            self.assertEqual(f"gridkit: {packed}: the folder holds no product that is unpacked; unpack one first\n"
                             f"  {command} '{quoted}'\n", complaint(GRIDKIT, "info", packed))
            file.unlink()

    def test_the_command_that_is_told_unpacks_the_product(self):
        folder = FOLDER / "unpacking"
        folder.mkdir()
        shutil.make_archive(folder / "one", "gztar", self.product.parent.parent)
        for given in (folder, folder / "one.tar.gz"):
            command = complaint(GRIDKIT, "info", given).strip().splitlines()[-1].split(": ")[-1].strip()
            subprocess.run(command, shell=True, check=True, cwd=folder)
            self.assertIn("TerraSAR-X", text(GRIDKIT, "info", folder))
            shutil.rmtree(folder / self.product.parent.name)

    def test_products_four_folders_deep_are_not_looked_for(self):
        deep = FOLDER / "deep/a/b/c"
        deep.mkdir(parents=True)
        shutil.copytree(self.product.parent, deep / "product")
        self.assertIn("holds no product", complaint(GRIDKIT, "info", FOLDER / "deep"))
        self.assertIn("TerraSAR-X", text(GRIDKIT, "info", FOLDER / "deep/a"))

    def test_neither_file_nor_folder(self):
        self.assertIn("not a regular file; give a product's annotation or its folder",
                      complaint(GRIDKIT, "info", "/dev/null"))
        self.assertEqual(f"gridkit: {self.product}/x: no such file\n",
                         complaint(GRIDKIT, "info", f"{self.product}/x"))

    def test_what_may_not_be_read_is_told_so(self):
        if os.geteuid() != 0:
            user = {}
        else:
            user = {"user": 65534, "group": 65534, "extra_groups": []}
        closed = FOLDER / "closed"
        closed.mkdir()
        shutil.copy(self.product, closed / "TSX1.xml")
        (closed / "TSX1.xml").chmod(0)
        try:
            done = subprocess.run([str(GRIDKIT), "info", str(closed / "TSX1.xml")], capture_output=True,
                                  **user)
        except PermissionError:
            self.skipTest("the build is closed to other users")
        self.assertEqual(1, done.returncode)
        # Where coverage is counted, its library adds that it may not write.
        self.assertIn(f"gridkit: {closed}/TSX1.xml: cannot be read: no permission",
                      done.stderr.decode().splitlines())


class Terminals(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.product = simulate("terminal", lines=128, samples=128)

    def test_colour_is_for_terminals(self):
        self.assertIn("\033[1mlayers\033[0m", at_terminal(GRIDKIT, "info", self.product))
        self.assertIn("\033[1;31mgridkit:\033[0m /x: no such file", at_terminal(GRIDKIT, "info", "/x"))
        self.assertNotIn("\033", text(GRIDKIT, "info", self.product))
        self.assertNotIn("\033", complaint(GRIDKIT, "info", "/x"))

    def test_there_is_none_when_asked_not_to(self):
        for environment in ({"NO_COLOR": "1"}, {"TERM": "dumb"}):
            self.assertNotIn("\033", at_terminal(GRIDKIT, "info", self.product, **environment))
            self.assertNotIn("\033", at_terminal(GRIDKIT, "info", "/x", **environment))
        self.assertIn("\033", at_terminal(GRIDKIT, "info", self.product, NO_COLOR=""))

    def test_a_bar_is_for_terminals_that_want_it(self):
        read = (GRIDKIT, "read", self.product, "X_HH_PHASE_2", FOLDER / "bar.tif", "--overwrite")
        self.assertIn("100%", at_terminal(*read))
        self.assertEqual("", at_terminal(*read, "-q"))
        self.assertEqual("", at_terminal(*read, "--quiet"))
        self.assertEqual(b"", run(*read).stderr)
        self.assertIn("100%", at_terminal(*read, "-f", "COG"))

    def test_output_that_does_not_arrive_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([str(GRIDKIT), "layers", str(self.product)], stdout=full,
                                  stderr=subprocess.PIPE)
        self.assertEqual(1, done.returncode)
        self.assertEqual(b"gridkit: standard output cannot be written: the disk is full\n", done.stderr)


if __name__ == "__main__":
    main()
