"""What the programs print as JSON, against the schemas that tell its form."""
import copy
import json
import re
import sys
import unittest
from pathlib import Path

from jsonschema import Draft202012Validator, SchemaError

from programs import ANNOTATION, FOLDER, GRIDKIT, main, run, simulate, text

SCHEMAS = Path(sys.argv[3]) / "json"
VARIANTS = ("SSC", "MGD", "GEC", "EEC")
RADAR_MODEL, BETA0 = ":RADAR_Generic_v2.2", ":TSX_Beta0"


def schema(name):
    """In its newest version."""
    return json.loads(max(SCHEMAS.glob(f"v?/{name}.schema.json")).read_text())


def validator(name):
    return Draft202012Validator(schema(name))


def broken(document, fixed=lambda path: True):
    """Copies of a document, each with one fault, and where it is: a member missing, a member too many
    (both only in objects of a fixed form), or a value of a type that no member has there."""
    def at(path):
        copied = copy.deepcopy(document)
        place = copied
        for step in path[:-1]:
            place = place[step]
        return copied, place

    def walk(value, path):
        if path:
            copied, place = at(path)
            place[path[-1]] = [{}] if isinstance(value, dict) else {"no": "form"}
            yield copied, f"type of {path}"
        if isinstance(value, dict):
            for member in value:
                if fixed(path):
                    copied, place = at(path + (member,))
                    del place[member]
                    yield copied, f"without {path + (member,)}"
                yield from walk(value[member], path + (member,))
            if fixed(path):
                copied, place = at(path + ("surplus",))
                place["surplus"] = 1
                yield copied, f"surplus in {path}"
        elif isinstance(value, list):
            for i, entry in enumerate(value):
                yield from walk(entry, path + (i,))

    yield from walk(document, ())


class Forms(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.products = {v: simulate(v, "--variant", v, "--polarisations", "HH,VV", lines=120, samples=100)
                        for v in VARIANTS}

    def assert_form(self, name, document, fixed=lambda path: True):
        """The document has the form, and whatever is broken about it shows."""
        form = validator(name)
        self.assertEqual([], [f"{list(e.path)}: {e.message}" for e in form.iter_errors(document)])
        faults = 0
        for copied, what in broken(document, fixed):
            faults += 1
            self.assertFalse(form.is_valid(copied), f"{name}: {what}")
        self.assertGreater(faults, 0)
        return document

    def output(self, name, *command, status=0, fixed=lambda path: True):
        return self.assert_form(name, json.loads(text(*command, status=status)), fixed)

    def test_formats(self):
        formats = self.output("formats", GRIDKIT, "formats", "--json")
        self.assertEqual(["TerraSAR-X"], [f["title"] for f in formats])

    def test_info(self):
        for variant, product in self.products.items():
            with self.subTest(variant):
                info = self.output("info", GRIDKIT, "info", "--json", product)
                on_a_map = variant in ("GEC", "EEC")
                self.assertEqual([on_a_map] * len(info["layers"]), [layer["mapInfo"] is not None
                                                                    for layer in info["layers"]])

    def test_info_of_the_second_version_has_all_members_of_the_first(self):
        first, second = (json.loads((SCHEMAS / version / "info.schema.json").read_text()) for version in ("v1", "v2"))
        for name, form in first["properties"].items():
            self.assertEqual(form, second["properties"][name])
            self.assertIn(name, second["required"])
        for name in ("layer", "mapInfo"):
            self.assertEqual(first["$defs"][name], second["$defs"][name])

    def test_layers(self):
        for variant, product in self.products.items():
            with self.subTest(variant):
                layers = self.output("layers", GRIDKIT, "layers", "--json", product)
                self.assertEqual(4 if variant == "SSC" else 2, len(layers))

    def test_samples(self):
        for variant, product in self.products.items():
            with self.subTest(variant):
                images = self.output("samples", GRIDKIT, "samples", "--json", product)
                self.assertEqual("cs16" if variant == "SSC" else "u16", images[0]["type"])
                self.assertEqual(2, len(images))

    def test_data(self):
        def outside_value(path):
            return path[:1] != ("value",)  # whose members are the dictionary's

        for variant, product in self.products.items():
            for name, form in ((BETA0, "data-beta0"), (RADAR_MODEL, "data-radar-model")):
                if name == RADAR_MODEL and variant not in ("SSC", "MGD"):
                    continue
                with self.subTest(variant, name=name):
                    data = self.output("data", GRIDKIT, "data", "--json", product, name,
                                       fixed=outside_value)
                    self.assert_form(form, data)

    def test_fields_of_the_radar_model_are_those_of_its_dictionary(self):
        data = json.loads(text(GRIDKIT, "data", "--json", self.products["MGD"], RADAR_MODEL))
        design = re.search(f"^design {re.escape(data['type'])}\n(.*?)^end$", data["dictionary"], re.M | re.S)
        fields = [line.split()[1] for line in design[1].splitlines()]
        described = schema("data-radar-model")["properties"]["value"]
        self.assertEqual(fields, list(described["properties"]))
        self.assertEqual(fields, described["required"])

    def test_locate(self):
        for variant, product in self.products.items():
            with self.subTest(variant):
                place = self.output("locate", GRIDKIT, "locate", "--json", product, 60, 50)
                self.assertEqual(variant in ("GEC", "EEC"), place["height"] is None)
                self.output("locate", GRIDKIT, "locate", "--json", product, "--ground",
                            place["latitude"], place["longitude"], place["height"] or 0)

    def test_locate_check(self):
        for variant, product in self.products.items():
            with self.subTest(variant):
                checked = self.output("locate-check", GRIDKIT, "locate", "--check", "--json", product)
                self.assertEqual(5, len(checked["points"]))
                self.assertEqual(variant in ("GEC", "EEC"), checked["grid"] is None)

    def test_locate_rpc(self):
        for variant in ("SSC", "MGD"):
            self.output("locate-rpc", GRIDKIT, "locate", "--rpc", "--json", self.products[variant])

    def test_check_of_valid_annotations(self):
        results = self.output("check", ANNOTATION, "check", "--json", *self.products.values())
        self.assertEqual([0] * 4, [r["error"] for r in results])

    def test_check_for_every_fault(self):
        faulty = FOLDER / "faulty_twice.xml"
        whole = self.products["GEC"].read_text()
        faulty.write_text(re.sub("<(orbitCycle|absOrbit)>[^<]*", r"<\1>none", whole))
        results = self.output("check", ANNOTATION, "check", "--json", "--all", faulty, self.products["GEC"],
                              FOLDER / "missing.xml", status=1, fixed=lambda path: len(path) != 1)
        self.assertEqual([2, 0, 0], [len(r["faults"]) for r in results])
        first = results[0]["faults"][0]
        self.assertEqual(first, {name: results[0][name] for name in first})
        [strict] = self.output("check", ANNOTATION, "check", "--json", faulty, status=1)
        self.assertEqual(strict, {name: value for name, value in results[0].items() if name != "faults"})

    def test_check_of_images(self):
        results = self.output("check", ANNOTATION, "check", "--json", "--images", *self.products.values())
        self.assertEqual([2] * 4, [len(r["images"]) for r in results])

    def test_check_of_images_that_do_not_agree(self):
        product = simulate("cut", "--variant", "SSC")
        image = next((product.parent / "IMAGEDATA").iterdir())
        image.write_bytes(image.read_bytes()[:-4])
        [result] = self.output("check", ANNOTATION, "check", "--json", "--images", product, status=1)
        self.assertIn(True, [finding["serious"] for finding in result["findings"]])
        self.assertEqual([False], [image["agrees"] for image in result["images"]])

    def test_check_of_invalid_annotations(self):
        faulty, malformed, empty = (FOLDER / n for n in ("faulty.xml", "malformed.xml", "empty.xml"))
        whole = self.products["GEC"].read_text()
        faulty.write_text(re.sub("<orbitCycle>[^<]*", "<orbitCycle>none", whole))
        malformed.write_text(whole[:5000])
        empty.write_text("")
        results = self.output("check", ANNOTATION, "check", "--json", "--images", faulty, malformed, empty,
                              self.products["GEC"], FOLDER / "missing.xml", status=1)
        self.assertEqual([True, True, True, False, True], [r["error"] > 0 for r in results])
        self.assertEqual(["images" in r for r in results], [r["error"] == 0 for r in results])

    def test_a_fault_has_a_name_and_a_valid_file_none(self):
        [valid] = json.loads(text(ANNOTATION, "check", "--json", "--images", self.products["GEC"]))
        form = validator("check")
        for change in ({"error": 31}, {"name": "orbitCycle"}, {"error": 31, "name": "orbitCycle"}):
            self.assertFalse(form.is_valid([{**valid, **change}]), change)

    def test_view(self):
        for variant, product in self.products.items():
            with self.subTest(variant):
                view = self.output("view", ANNOTATION, "view", "--json", product)
                self.assertEqual(variant, view["productVariant"])

    def test_numbers_that_are_not_finite_are_null(self):
        product = simulate("endless", "--variant", "GEC")
        product.write_text(re.sub("<calFactor>[^<]*", "<calFactor>NaN", product.read_text()))
        view = self.output("view", ANNOTATION, "view", "--json", product)
        self.assertIsNone(view["calFactor"])
        data = self.output("data-beta0", GRIDKIT, "data", "--json", product, BETA0)
        self.assertIsNone(data["value"]["calibration_factor"])
        self.assertTrue(validator("data").is_valid(data))

    def test_truth(self):
        for variant, product in self.products.items():
            with self.subTest(variant):
                truth = self.assert_form("truth", json.loads((product.parent / "truth.json").read_text()))
                self.assertEqual(variant == "MGD", "slantToGround" in truth)
                self.assertEqual(variant in ("GEC", "EEC"), "map" in truth)
                self.assertEqual(variant == "SSC", "cosar" in truth)

    def test_truth_of_a_scene_with_terrain_and_bursts(self):
        product = simulate("terrain", "--bursts", 2, "--relief", 300, "--troposphere", 14)
        truth = self.assert_form("truth", json.loads((product.parent / "truth.json").read_text()))
        self.assertEqual(2, len(truth["cosar"]["bursts"]))
        self.assertEqual("terrain.tif", truth["terrain"]["file"])


class Schemas(unittest.TestCase):
    def test_each_is_valid_and_named_after_its_file(self):
        names = set()
        for file in SCHEMAS.glob("v?/*"):
            name, version = file.name.removesuffix(".schema.json"), file.parent.name
            names.add(name)
            with self.subTest(name, version=version):
                described = json.loads(file.read_text())
                Draft202012Validator.check_schema(described)
                self.assertEqual("https://json-schema.org/draft/2020-12/schema", described["$schema"])
                self.assertEqual(f"urn:gridkit:json:{version}:{name}", described["$id"])
        self.assertEqual(["check", "data", "data-beta0", "data-radar-model", "formats", "info", "layers",
                          "locate", "locate-check", "locate-rpc", "samples", "truth", "view"], sorted(names))

    def test_a_schema_that_is_none_is_told(self):
        for keyword in ({"type": "numeral"}, {"required": "name"}, {"properties": {"name": 1}},
                        {"$defs": {"name": []}}):
            with self.assertRaises(SchemaError):
                Draft202012Validator.check_schema(keyword)

    def test_every_object_has_a_fixed_form_but_the_fields_of_any_data(self):
        def objects(part, path):
            if isinstance(part, dict):
                if part.get("type") == "object":
                    yield path, part
                for key, inner in part.items():
                    yield from objects(inner, path + (key,))
            elif isinstance(part, list):
                for i, inner in enumerate(part):
                    yield from objects(inner, path + (i,))

        for file in SCHEMAS.glob("v?/*"):
            for path, part in objects(json.loads(file.read_text()), (file.name,)):
                if path == ("data.schema.json", "properties", "value"):
                    continue
                self.assertIs(False, part["additionalProperties"], path)

    def test_every_member_is_described(self):
        def members(part):
            if isinstance(part, dict):
                yield from (m for m in part.get("properties", {}).items() if m[1] is not False)
                for key, inner in part.items():
                    if key not in ("if", "then", "else"):
                        yield from members(inner)
            elif isinstance(part, list):
                for inner in part:
                    yield from members(inner)

        for file in SCHEMAS.glob("v?/*"):
            for name, member in members(json.loads(file.read_text())):
                self.assertTrue(member.get("description"), f"{file.name}: {name}")


main()
