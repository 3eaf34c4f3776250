"""Documents for the schema tests: any class by itself, with each member as the tables tell it."""
import sys
from pathlib import Path
from xml.sax.saxutils import escape, quoteattr

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "schema"))
from generator import model, tables  # noqa: E402

VALUES = {"string": "text", "any": "<bin>7</bin>", "double": "1.5", "float": "2.5", "int32": "3",
          "uint32": "4", "int64": "5", "uint64": "6", "uint8": "1", "boolean": "true",
          "dateTime": "2008-03-10T13:32:20.083162Z"}


class Element:
    """An element of a document: attributes as (name, text) pairs, and children or a text."""

    def __init__(self, name, attributes=(), children=(), text=""):
        self.name = name
        self.attributes = list(attributes)
        self.children = list(children)
        self.text = text    # markup, already escaped

    def write(self):
        attributes = "".join(f" {n}={quoteattr(t)}" for n, t in self.attributes)
        content = self.text + "".join(child.write() for child in self.children)
        return f"<{self.name}{attributes}>{content}</{self.name}>"


def value(schema, row):
    """A valid text of a simple type, as markup."""
    if row.values:
        texts = schema.value_sets[row.values]
        return " ".join(texts[:2]) if row.is_list else texts[0]
    return VALUES[row.type] if row.type == "any" else escape(VALUES[row.type])


class Builder:
    """Builds valid elements of a version: with every optional member, or with none."""

    def __init__(self, schema, version, maximal):
        self.schema = schema
        self.version = version
        self.maximal = maximal

    def _count(self, member):
        if member.row.kind == "choice":
            return 1
        if not self.maximal:
            return member.minimum
        return max(member.minimum, min(2, member.maximum or 2))

    def child(self, member):
        if member.is_object:
            return self.element(self.version.classes[member.row.type], member.name)
        return Element(member.name, text=value(self.schema, member.row))

    def attributes(self, cls):
        return [(m.name, value(self.schema, m.row)) for m in cls.attributes
                if m.is_required or self.maximal]

    def element(self, cls, name, chosen=0):
        made = Element(name, self.attributes(cls))
        if cls.text is not None:
            made.text = value(self.schema, cls.text.row)
        elif cls.is_choice:
            made.children = [self.child(cls.elements[chosen])]
        else:
            made.children = [self.child(m) for m in cls.elements for _ in range(self._count(m))]
        return made


def load():
    """The project's schema and its versions."""
    schema = tables.load(ROOT / "schema" / "level1Product")
    return schema, model.resolve_all(schema, tables.VERSIONS)
