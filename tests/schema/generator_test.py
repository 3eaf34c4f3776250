"""The generator: a small golden example, and the tables that it refuses."""
import shutil
import sys
import tempfile
import unittest
from pathlib import Path

HERE = Path(__file__).parent
sys.path.insert(0, str(HERE.parents[1] / "schema"))
from generator import emit, model, tables, text  # noqa: E402

TABLES = HERE / "golden" / "tables"


class Golden(unittest.TestCase):
    def test_class_of_the_example_reads_as_kept(self):
        versions = model.resolve_all(tables.load(TABLES), tables.VERSIONS)
        with tempfile.TemporaryDirectory() as folder:
            emit.write_classes(versions[2], Path(folder))
            made = (Path(folder) / "level1bProduct40" / "c_scene.h").read_text()
        self.assertEqual((HERE / "golden" / "c_scene.h").read_text(), made)

    def test_event_numbers_follow_first_use_and_tell_attribute_from_element(self):
        version = model.resolve(tables.load(TABLES), "4.0")
        scene, point = version.classes["c_scene"], version.classes["c_point"]
        self.assertEqual([("scene", 13)], [(n, e) for n, _, e in version.root_members])
        self.assertEqual([14, 15, 16, 18], [m.event for m in scene.members])
        self.assertEqual(17, point.members[0].event)

    def test_a_row_of_one_version_is_absent_in_the_others(self):
        names = [[m.name for m in v.classes["c_scene"].members]
                 for v in model.resolve_all(tables.load(TABLES), tables.VERSIONS)]
        self.assertEqual([["name", "look", "point"], ["name", "look", "point"],
                          ["name", "look", "point", "height"]], names)


class Lines(unittest.TestCase):
    """How emitted lines are kept within the page."""

    def test_a_long_line_is_broken_where_a_reader_would(self):
        self.assertEqual(["void f(int first,", "    int second);"],
                         text.fold("void f(int first, int second);", 20))
        self.assertEqual(["const c_outer::", "    c_inner::s_x ="], text.fold("const c_outer::c_inner::s_x =", 20))
        self.assertEqual(['f(one,', '    "a, b :: (c)");'], text.fold('f(one, "a, b :: (c)");', 20), "not within a text")
        self.assertEqual(["short"], text.fold("short", 20))

    def test_items_fill_lines_and_stand_below_the_first(self):
        self.assertEqual(["{one, two,", " three};"], text.fill("{", ["one", "two", "three"], "};", 10))
        self.assertEqual(["{one, a =", " bcdefg};"], text.fill("{", ["one", ["a =", "bcdefg"]], "};", 10))

    def test_a_literal_is_cut_between_names(self):
        self.assertEqual(['"a::b::"', '"c::d"'], text.literal("a::b::c::d", 6))
        self.assertEqual(['"a::b"'], text.literal("a::b", 60))


class WholeSchema(unittest.TestCase):
    """Counts that follow from the project's own tables."""

    def setUp(self):
        self.schema = tables.load(HERE.parents[1] / "schema" / "level1Product")
        self.versions = model.resolve_all(self.schema, tables.VERSIONS)

    def test_event_numbers(self):
        # One number a name, told apart as attribute and as element, from 13 on.
        self.assertEqual([628, 633, 639], [v.event_count for v in self.versions])
        for version in self.versions:
            self.assertEqual([13, 28, 29, 35, 36, 37, 38, 39, 40],
                             [event for _, _, event in version.root_members])

    def test_event_maps(self):
        # One a class for attributes, one for elements but where a named type's is taken over, and
        # the root's.
        counts = [1 + sum(bool(c.attributes) + bool(c.elements and not c.base)
                          for c in v.classes.values()) for v in self.versions]
        self.assertEqual([239, 240, 242], counts)

    def test_no_line_is_longer_than_the_page(self):
        with tempfile.TemporaryDirectory() as folder:
            emit.write_all(self.versions, self.schema, Path(folder))
            files = [f for f in Path(folder).rglob("*") if f.suffix in (".h", ".inc", ".cpp")]
            long = [(f.name, line) for f in files for line in f.read_text().splitlines() if len(line) > 100]
        self.assertGreater(len(files), 600)
        self.assertEqual([], long)

    def test_fourteen_classes_stand_directly_in_each_namespace(self):
        for version in self.versions:
            self.assertEqual(14, sum(c.is_global for c in version.classes.values()))


class Refusals(unittest.TestCase):
    """Each case changes one thing in the example and expects a fault that names its place."""

    def refused(self, file, old, new):
        with tempfile.TemporaryDirectory() as folder:
            changed = Path(folder) / "tables"
            shutil.copytree(TABLES, changed)
            text = (changed / file).read_text()
            self.assertIn(old, text)
            (changed / file).write_text(text.replace(old, new, 1))
            with self.assertRaises(tables.TableError) as caught:
                model.resolve_all(tables.load(changed), tables.VERSIONS)
            return str(caught.exception)

    def test_unknown_column(self):
        self.assertIn("scene.tsv:1: columns", self.refused("scene.tsv", "facets", "checks"))

    def test_missing_cell(self):
        self.assertIn("scene.tsv:3: 6 cells",
                      self.refused("scene.tsv", "\t1\tmax=20\t-", "\t1\tmax=20"))

    def test_unknown_type(self):
        self.assertIn("scene.tsv:6: type 'real'", self.refused("scene.tsv", "\tfloat\t", "\treal\t"))

    def test_unknown_kind(self):
        self.assertIn("kind 'attr'", self.refused("scene.tsv", "name\tattribute", "name\tattr"))

    def test_unknown_facet(self):
        self.assertIn("facet 'min=20'", self.refused("scene.tsv", "max=20", "min=20"))

    def test_member_twice(self):
        self.assertIn("scene.tsv:5: c_scene has 'point' twice",
                      self.refused("scene.tsv", "c_scene\tlook\telement\tstring\t0..1\tvalues=look",
                                   "c_scene\tpoint\telement\tstring\t0..1\tvalues=look"))

    def test_attribute_after_an_element(self):
        self.assertIn("stands after a later kind",
                      self.refused("scene.tsv", "height\telement", "height\tattribute"))

    def test_dangling_class(self):
        self.assertIn("class 'c_place' has no rows",
                      self.refused("scene.tsv", "point\telement\tc_point", "point\telement\tc_place"))

    def test_dangling_value_set(self):
        self.assertIn("value set 'side' is not in valueSets.tsv",
                      self.refused("scene.tsv", "values=look", "values=side"))

    def test_value_without_a_number(self):
        self.assertIn("'UP' of 'look'", self.refused("valueSets.tsv", "RIGHT", "UP"))

    def test_numbers_out_of_order(self):
        self.assertIn("enumeration.tsv:3", self.refused("enumeration.tsv", "2\tRIGHT", "3\tRIGHT"))

    def test_exchanged_occurrence(self):
        self.assertIn("ends exchanged", self.refused("scene.tsv", "1..4", "4..1"))

    def test_occurrence_that_leaves_out_a_version(self):
        self.assertIn("leaves out a version",
                      self.refused("scene.tsv", "3.4:0..1 3.5:1 4.0:1", "3.4:0..1 4.0:1"))

    def test_class_that_nothing_uses(self):
        self.assertIn("no class uses c_lost",
                      self.refused("scene.tsv", "\nc_point\tnum", "\nc_lost\tx\telement\tfloat\t1\t-\t-"
                                   "\nc_point\tnum"))

    def test_text_facet_on_a_number(self):
        self.assertIn("has a text facet but is a float",
                      self.refused("scene.tsv", "range=-90..90", "max=20"))


if __name__ == "__main__":
    unittest.main()
