"""Resolves the tables for one schema version: classes with their nesting, members, event numbers."""
import re
from dataclasses import dataclass, field

from .tables import TableError

FIRST_EVENT = 13


@dataclass
class Member:
    row: object
    minimum: int
    maximum: object     # int, or None for no upper bound
    event: int = 0
    owner: object = None    # Class
    target: object = None   # Class of an object, or None

    @property
    def name(self):
        return self.row.name

    @property
    def identifier(self):
        """The name as C++ can spell it: a hyphen becomes an underscore."""
        return re.sub(r"\W", "_", self.row.name)

    @property
    def is_object(self):
        return self.row.type.startswith("c_")

    @property
    def class_name(self):
        """The class of an object, as the owner's scope can name it."""
        visible = self.target.is_global or self.target.parent is self.owner
        return self.target.name if visible else self.target.qualified

    @property
    def is_required(self):
        return self.minimum > 0

    @property
    def form(self):
        """The storage form, as named in binding/description.h."""
        if self.row.kind == "choice":
            return "object"
        repeats = self.maximum is None or self.maximum > 1
        if self.is_object:
            return "object_list" if repeats else "object"
        if self.row.is_list:
            return "token_list"
        if repeats:
            return "string_list"
        return "raw" if self.row.type == "any" else "scalar"


@dataclass
class Class:
    name: str
    members: list
    place: str
    parent: object = None               # Class, or None directly in the namespace
    nested: list = field(default_factory=list)
    element: str = ""                   # the word that reports give
    is_global: bool = False
    has_document: bool = False          # a global element, with the document-level entry points
    may_be_empty: bool = True
    base: object = None                 # the named type whose elements it takes over

    @property
    def path(self):
        return self.parent.path + [self.name] if self.parent else [self.name]

    @property
    def file_path(self):
        """Folders and name of the class's file, without its ending. A nested class's file lies in the
        folder that bears the name of its parent's, beside the parent's file, and is called by its
        element: some classes bear their parent's whole name before their own."""
        if self.parent is None:
            return [self.name]
        return self.parent.file_path + ["c_" + re.sub(r"\W", "_", self.element)]

    @property
    def qualified(self):
        return "::".join(self.path)

    @property
    def attributes(self):
        return [m for m in self.members if m.row.kind == "attribute"]

    @property
    def elements(self):
        return [m for m in self.members if m.row.kind in ("element", "choice")]

    @property
    def text(self):
        return next((m for m in self.members if m.row.kind == "text"), None)

    @property
    def is_choice(self):
        return any(m.row.kind == "choice" for m in self.members)


@dataclass
class Version:
    text: str           # "3.4"
    classes: dict       # name -> Class, in order of first use
    globals: list       # Class, in the order of globals.tsv
    root_members: list  # (name, Class, event)
    event_count: int

    @property
    def digits(self):
        return self.text.replace(".", "")

    @property
    def namespace(self):
        return f"version{self.digits}"

    @property
    def tag(self):
        return f"level1bProduct{self.digits}"


def _members_of(schema, version):
    rows = {}
    for row in schema.rows:
        if version in row.versions:
            rows.setdefault(row.owner, []).append(row)
    return rows


def _make_class(name, rows):
    """A class with its members flattened: attributes first, then a named type's, then its own."""
    own = rows[name]
    base = next((r.type for r in own if r.kind == "extends"), None)
    own = [r for r in own if r.kind != "extends"]
    inherited = rows[base] if base else []
    flat = ([r for r in own if r.kind == "attribute"] + inherited
            + [r for r in own if r.kind != "attribute"])
    made = Class(name, [], rows[name][0].place, base=base)
    made.rows = flat
    return made


def resolve(schema, version):
    """The classes of one version that the global elements reach, or TableError."""
    rows = _members_of(schema, version)
    made = Version(version, {}, [], [], 0)
    global_names = [name for name, _ in schema.globals]
    events = {}

    def event_of(name, is_attribute):
        key = (name, is_attribute)
        return events.setdefault(key, FIRST_EVENT + len(events))

    def visit(name, user, element):
        known = made.classes.get(name)
        if known is None:
            if name not in rows:
                raise TableError("globals.tsv", f"class '{name}' has no rows")
            known = _make_class(name, rows)
            known.is_global = name in global_names
            known.element = name[2:] if known.is_global else element
            made.classes[name] = known
            for row in known.rows:
                minimum, maximum = row.occurs[version]
                member = Member(row, minimum, maximum, owner=known)
                known.members.append(member)
                if row.kind != "text":
                    member.event = event_of(row.name, row.kind == "attribute")
                if member.is_object:
                    member.target = visit(row.type, known, row.name)
                    if member.minimum > 0:
                        member.target.may_be_empty = False
            if not known.is_global:
                known.parent = user
                user.nested.append(known)
        elif not known.is_global and known.parent is not user and user.base is None:
            raise TableError(known.place, f"{name} is used in {known.parent.name} and {user.name}")
        return known

    for name, role in schema.globals:
        if role == "element":
            event = event_of(name[2:], False)
            known = visit(name, None, name[2:])
            known.has_document = True
            made.root_members.append((name[2:], known, event))
        else:
            visit(name, None, name[2:])
        made.globals.append(made.classes[name])
    for known in made.globals:
        known.may_be_empty = False
    made.event_count = len(events)
    return made


def resolve_all(schema, versions):
    """The classes of every version; a class that none of them reaches is refused."""
    made = [resolve(schema, version) for version in versions]
    for row in schema.rows:
        if not any(row.owner in version.classes for version in made):
            raise TableError(row.place, f"no class uses {row.owner}")
    return made
