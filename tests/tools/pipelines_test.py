"""The recipe for many products, run on a few of them, with GNU parallel and as a Slurm array."""
import csv
import json
import os
import re
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

from png import Png
from programs import BUILD, FOLDER, main, simulate

RECIPE = Path(sys.argv[3]) / "examples/pipelines"
ENVIRONMENT = {**os.environ, "PATH": f"{BUILD / 'bin'}:{os.environ['PATH']}"}

# Products by the folder that they are put into; one of them is damaged below.
SCENES = {
    "2008/first": ("SSC", "HH", 100, 140, "2008-03-12T05:17:46.250000"),
    "2008/second": ("MGD", "HH,VV", 120, 90, "2008-09-02T17:00:09.999999"),
    "2009/blank in name": ("GEC", "VV", 80, 150, "2009-12-31T23:59:59.000000"),
    "2009/damaged": ("GEC", "HH", 80, 80, "2009-01-01T00:00:00.000000"),
    "2009/fourth": ("EEC", "HH", 110, 130, "2009-07-08T09:10:11.123456"),
    "fifth": ("SSC", "HH,VV", 64, 64, "2012-02-29T12:00:00.500000"),
}


def recipe(script, *arguments, status=0, **variables):
    """What a script of the recipe prints; fails unless it exits with the status."""
    done = subprocess.run([str(RECIPE / script), *map(str, arguments)], capture_output=True, text=True,
                          env={**ENVIRONMENT, **variables})
    if done.returncode != status:
        raise AssertionError(f"{script} gave {done.returncode}: {done.stdout}{done.stderr}")
    return done.stdout


def table(output):
    with open(output / "table.csv", newline="") as file:
        return list(csv.DictReader(file))


class Archive(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.archive = FOLDER / "archive"
        cls.annotations = {}
        for i, (folder, (variant, polarisations, lines, samples, start)) in enumerate(SCENES.items()):
            cls.annotations[folder] = simulate(
                f"archive/{folder}", "--variant", variant, "--polarisations", polarisations, "--start", start,
                "--centre", f"{40 + i}.5,{-10 * i}.25", "--height", 100 * i, "--seed", i, lines=lines,
                samples=samples)
        damaged = cls.annotations["2009/damaged"]
        cls.whole = damaged.read_text()
        damaged.write_text(re.sub("<orbitCycle>[^<]*", "<orbitCycle>none", cls.whole))
        cls.good = [folder for folder in SCENES if folder != "2009/damaged"]

    def path(self, folder):
        return str(self.annotations[folder].relative_to(self.archive))

    def truth(self, folder):
        return json.loads((self.annotations[folder].parent / "truth.json").read_text())

    def check_table(self, output, folders):
        """The table has these products, in order, with what the simulator made them from."""
        rows = table(output)
        self.assertEqual([self.path(folder) for folder in folders], [row["product"] for row in rows])
        for folder, row in zip(folders, rows):
            with self.subTest(folder):
                variant, polarisations, lines, samples, start = SCENES[folder]
                truth = self.truth(folder)
                self.assertEqual((variant, polarisations.replace(",", " "), truth["look"].upper(), str(lines),
                                  str(samples), "0"),
                                 tuple(row[n] for n in ("variant", "polarisations", "look", "lines", "samples",
                                                        "findings")))
                self.assertEqual(start[:17], row["start"][:17])
                # Seconds are single precision, and the table has five decimals.
                self.assertAlmostEqual(float(start[17:]), float(row["start"][17:-1]), delta=1.2e-5)
                self.assertEqual(truth["averageHeight"], float(row["average_height_m"]))
                self.assertEqual("UTM" if variant in ("GEC", "EEC") else "", row["projection"])
                kinds = ["MAGNITUDE", "PHASE"] if variant == "SSC" else ["MAGNITUDE"]
                names = [f"X_{p}_{kind}" for p in polarisations.split(",") for kind in kinds]
                self.assertEqual([f"{name}_{i}" for i, name in enumerate(names, 1)], row["layers"].split())
                # The middle of the image is within a pixel or two of the scene's centre, which is in
                # the middle or, on a map, as near as its grid lets it be: 5 m, or 4.5e-5 degrees north.
                self.assertAlmostEqual(truth["centre"]["latitude"], float(row["latitude"]), delta=4.5e-5)
                self.assertAlmostEqual(truth["centre"]["longitude"], float(row["longitude"]), delta=7e-5)
                # A complex image's spacings are told in seconds: the range's is two-way.
                line, sample = truth["lineSpacing"], truth["sampleSpacing"]
                if variant == "SSC":
                    line, sample = line * truth["groundVelocity"], sample * 299792458 / 2
                self.assertAlmostEqual(1, float(row["line_spacing_m"]) / line, delta=1e-6)
                self.assertAlmostEqual(1, float(row["sample_spacing_m"]) / sample, delta=1e-6)
                quicklook = output / "quicklooks" / Path(row["product"]).with_suffix(".png")
                picture = Png(quicklook.read_bytes())
                self.assertLessEqual(max(picture.width, picture.height), 512)

    def check_refusal(self, output):
        [line] = (output / "refused.tsv").read_text().splitlines()
        product, reason = line.split("\t")
        self.assertEqual(self.path("2009/damaged"), product)
        self.assertIn('missionInfo/orbitCycle: the value is not of its type: found "none"', reason)

    def records(self, output):
        return {path: path.stat().st_mtime_ns for path in (output / "records").rglob("*.json")}

    def test_with_parallel(self):
        output = FOLDER / "parallel out"
        printed = recipe("run.sh", self.archive, output, 2)
        self.assertEqual("6 products: 5 in table.csv, 1 in refused.tsv, 0 in undone.txt\n", printed)
        self.check_table(output, self.good)
        self.check_refusal(output)

    def test_again_does_what_is_missing_and_nothing_else(self):
        output = FOLDER / "again"
        recipe("run.sh", self.archive, output, 2)
        before, rows = self.records(output), table(output)
        [record] = [path for path in before if "fifth" in str(path)]
        record.unlink()
        self.assertEqual(1, subprocess.run([RECIPE / "table.sh", output], capture_output=True).returncode)
        self.assertEqual([self.path("fifth")], (output / "undone.txt").read_text().splitlines())
        recipe("run.sh", self.archive, output, 2)
        after = self.records(output)
        self.assertEqual([record], [path for path in after if after[path] != before[path]])
        self.assertEqual(rows, table(output))

    def test_what_changed_is_done_anew(self):
        output, archive = FOLDER / "changed", FOLDER / "changing"
        shutil.copytree(self.archive, archive)
        damaged, good = (archive / self.path(folder) for folder in ("2009/damaged", "fifth"))
        recipe("run.sh", archive, output, 2)
        damaged.write_text(self.whole)
        good.write_text("<level1Product/>\n")
        recipe("run.sh", archive, output, 2)
        self.check_table(output, list(SCENES)[:-1])
        [line] = (output / "refused.tsv").read_text().splitlines()
        self.assertEqual(self.path("fifth"), line.split("\t")[0])
        self.assertFalse((output / "quicklooks" / self.path("fifth")).with_suffix(".png").exists())

    def test_a_product_that_something_else_than_a_refusal_stopped_is_undone(self):
        # A gridkit that ends like one killed for want of memory, for one product.
        killed, output = FOLDER / "killed", FOLDER / "stopped"
        killed.mkdir()
        (killed / "gridkit").write_text('#!/bin/sh\ncase "$*" in *2008/second*) kill -KILL $$ ;; esac\n'
                                        f'exec {BUILD}/bin/gridkit "$@"\n')
        (killed / "gridkit").chmod(0o755)
        printed = recipe("run.sh", self.archive, output, 2, status=1, PATH=f"{killed}:{ENVIRONMENT['PATH']}")
        self.assertEqual("6 products: 4 in table.csv, 1 in refused.tsv, 1 in undone.txt\n", printed)
        self.assertEqual([self.path("2008/second")], (output / "undone.txt").read_text().splitlines())
        self.check_table(output, [folder for folder in self.good if folder != "2008/second"])
        recipe("run.sh", self.archive, output, 2)
        self.check_table(output, self.good)
        self.assertEqual([], list((output / "work").iterdir()))

    def test_as_tasks_of_an_array(self):
        # Slurm's part is played by a loop that sets what Slurm sets.
        output = FOLDER / "array"
        output.mkdir()
        (output / "products.txt").write_text(recipe("list.sh", self.archive))
        shares = []
        for task in (1, 2, 3, 4):
            before = set(self.records(output))
            recipe("array.sbatch", self.archive, output, PIPELINES=str(RECIPE), SLURM_ARRAY_TASK_ID=str(task),
                   SLURM_ARRAY_TASK_COUNT="4")
            shares.append(len(set(self.records(output)) - before))
        # Of the six lines each task takes every fourth; the damaged one is the fourth.
        self.assertEqual([2, 2, 1, 0], shares)
        recipe("table.sh", output)
        self.check_table(output, self.good)
        self.check_refusal(output)

    def test_an_archive_without_products_gives_an_empty_table(self):
        empty, output = FOLDER / "empty", FOLDER / "empty out"
        empty.mkdir()
        self.assertEqual("0 products: 0 in table.csv, 0 in refused.tsv, 0 in undone.txt\n",
                         recipe("run.sh", empty, output))
        self.assertEqual([], table(output))

    def test_products_of_sister_satellites_are_taken(self):
        output = FOLDER / "family out"
        products = [simulate(f"family/{satellite}", "--satellite", satellite, lines=64, samples=64)
                    for satellite in ("PAZ-1", "TDX-1", "TSX-1")]
        self.assertEqual("3 products: 3 in table.csv, 0 in refused.tsv, 0 in undone.txt\n",
                         recipe("run.sh", FOLDER / "family", output))
        self.assertEqual([str(product.relative_to(FOLDER / "family")) for product in products],
                         (output / "products.txt").read_text().splitlines())

    def test_annotations_that_no_format_knows_are_counted(self):
        archive, output = FOLDER / "others", FOLDER / "others out"
        product = simulate("others/one", lines=64, samples=64)
        other = archive / "two" / product.name.replace("TSX1", "copy_of_TSX1")
        other.parent.mkdir()
        shutil.copy(product, other)
        (archive / "two" / "note.xml").write_text("<note>no level1Product</note>")
        self.assertEqual("1 products: 1 in table.csv, 0 in refused.tsv, 0 in undone.txt; other annotations, of no "
                         "format that is read: 1 in not_taken.txt\n", recipe("run.sh", archive, output))
        self.assertEqual([str(other.relative_to(archive))], (output / "not_taken.txt").read_text().splitlines())

    def test_names_that_a_list_cannot_hold_end_it(self):
        folder = FOLDER / "line feed"
        (folder / "a\nb").mkdir(parents=True)
        recipe("list.sh", folder, status=1)


main()
