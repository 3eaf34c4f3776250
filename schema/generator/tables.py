"""Loads the schema tables and refuses what they must not hold."""
import re
from dataclasses import dataclass, field
from pathlib import Path

VERSIONS = ("3.4", "3.5", "4.0")
KINDS = ("attribute", "element", "choice", "text", "extends")
SIMPLE_TYPES = ("string", "dateTime", "double", "float", "int32", "uint32", "int64", "uint64",
                "uint8", "boolean", "any")
COLUMNS = ["class", "member", "kind", "type", "occurs", "facets", "versions"]
UNBOUNDED = None
OTHER_TABLES = ("valueSets.tsv", "enumeration.tsv", "globals.tsv")


class TableError(Exception):
    def __init__(self, place, text):
        super().__init__(f"{place}: {text}")


@dataclass
class Row:
    """One member of one class, as the table states it."""
    place: str          # file:line
    owner: str          # class
    name: str
    kind: str
    type: str
    occurs: dict        # version -> (minimum, maximum or UNBOUNDED)
    is_list: bool
    max_length: int
    values: str         # name of a value set, or ""
    bounds: tuple       # (lower, upper) as decimal texts, or None
    versions: tuple


@dataclass
class Schema:
    rows: list = field(default_factory=list)
    value_sets: dict = field(default_factory=dict)   # name -> [text]
    numbers: dict = field(default_factory=dict)      # text -> number
    globals: list = field(default_factory=list)      # [(class, "element" | "type")]


def _lines(path, columns):
    """The rows of a table below its head line, as (place, cells)."""
    head_seen = False
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        if not line.strip() or line.startswith("#"):
            continue
        place = f"{path.name}:{number}"
        cells = line.split("\t")
        if not head_seen:
            if cells != columns:
                raise TableError(place, f"columns {cells}, expected {columns}")
            head_seen = True
            continue
        if len(cells) != len(columns):
            raise TableError(place, f"{len(cells)} cells, expected {len(columns)}")
        yield place, cells


def _occurrence(place, text):
    single = re.fullmatch(r"(\d+)", text)
    if single:
        return int(text), int(text)
    pair = re.fullmatch(r"(\d+)\.\.(\d+|n)", text)
    if not pair:
        raise TableError(place, f"occurrence '{text}'")
    minimum = int(pair[1])
    maximum = UNBOUNDED if pair[2] == "n" else int(pair[2])
    if maximum is not UNBOUNDED and maximum < minimum:
        raise TableError(place, f"occurrence '{text}' has its ends exchanged")
    return minimum, maximum


def _occurs(place, text):
    if ":" not in text:
        return dict.fromkeys(VERSIONS, _occurrence(place, text))
    result = {}
    for part in text.split():
        version, _, occurrence = part.partition(":")
        if version not in VERSIONS or version in result:
            raise TableError(place, f"occurrence '{text}'")
        result[version] = _occurrence(place, occurrence)
    if len(result) != len(VERSIONS):
        raise TableError(place, f"occurrence '{text}' leaves out a version")
    return result


def _facets(place, text):
    facets = {"list": False, "max": 0, "values": "", "range": None}
    for part in text.split() if text != "-" else []:
        key, _, value = part.partition("=")
        if key == "list" and not value:
            facets["list"] = True
        elif key == "max" and value.isdigit() and int(value) > 0:
            facets["max"] = int(value)
        elif key == "values" and value:
            facets["values"] = value
        elif key == "range" and re.fullmatch(r"-?\d+\.\.-?\d+", value):
            facets["range"] = tuple(value.split(".."))
        else:
            raise TableError(place, f"facet '{part}'")
    return facets


def _rows(path):
    for place, cells in _lines(path, COLUMNS):
        owners, name, kind, type_name, occurs, facets, versions = cells
        if kind not in KINDS:
            raise TableError(place, f"kind '{kind}'")
        if not type_name.startswith("c_") and type_name not in SIMPLE_TYPES:
            raise TableError(place, f"type '{type_name}'")
        chosen = VERSIONS if versions == "-" else tuple(versions.split(","))
        if not set(chosen) <= set(VERSIONS):
            raise TableError(place, f"versions '{versions}'")
        facet = _facets(place, facets)
        for owner in owners.split(" "):
            if not re.fullmatch(r"c_\w+", owner):
                raise TableError(place, f"class '{owner}'")
            yield Row(place, owner, name, kind, type_name, _occurs(place, occurs), facet["list"],
                      facet["max"], facet["values"], facet["range"], chosen)


def _check(schema):
    seen = set()
    order = {"extends": 0, "attribute": 1, "element": 2, "choice": 2, "text": 2}
    last = {}
    for row in schema.rows:
        key = (row.owner, row.kind == "attribute", row.name)
        if key in seen:
            raise TableError(row.place, f"{row.owner} has '{row.name}' twice")
        seen.add(key)
        if order[row.kind] < last.get(row.owner, 0):
            raise TableError(row.place, f"{row.owner}: '{row.name}' stands after a later kind")
        last[row.owner] = order[row.kind]
        if row.values and row.values not in schema.value_sets:
            raise TableError(row.place, f"value set '{row.values}' is not in valueSets.tsv")
        if row.type.startswith("c_") and not any(r.owner == row.type for r in schema.rows):
            raise TableError(row.place, f"class '{row.type}' has no rows")
        if (row.values or row.is_list or row.max_length) and row.type != "string":
            raise TableError(row.place, f"'{row.name}' has a text facet but is a {row.type}")
        if row.kind in ("attribute", "text") and row.type.startswith("c_"):
            raise TableError(row.place, f"{row.kind} '{row.name}' cannot be of a class")


def load(folder):
    """The tables of a folder as a Schema, or TableError."""
    schema = Schema()
    for place, (name, values) in _lines(folder / "valueSets.tsv", ["set", "values"]):
        if name in schema.value_sets:
            raise TableError(place, f"value set '{name}' stands twice")
        schema.value_sets[name] = values.split(" ")
    for place, (number, text) in _lines(folder / "enumeration.tsv", ["number", "text"]):
        if text in schema.numbers or int(number) != len(schema.numbers) + 1:
            raise TableError(place, f"number {number} of '{text}' is out of order or stands twice")
        schema.numbers[text] = int(number)
    for name, values in schema.value_sets.items():
        for text in values:
            if text not in schema.numbers:
                raise TableError("valueSets.tsv", f"'{text}' of '{name}' is not in enumeration.tsv")
    for place, (class_name, role) in _lines(folder / "globals.tsv", ["class", "role"]):
        if role not in ("element", "type"):
            raise TableError(place, f"role '{role}'")
        schema.globals.append((class_name, role))
    for path in sorted(folder.glob("*.tsv")):
        if path.name not in OTHER_TABLES:
            schema.rows.extend(_rows(path))
    _check(schema)
    return schema
