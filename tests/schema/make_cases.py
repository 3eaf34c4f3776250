#!/usr/bin/env python3
"""Writes one document per single fault of every row of the schema tables, with what must come of it.

    make_cases.py OUTPUT.jsonl

Each line holds: version, path of the class from a global element, kind of fault, row, document, code
and name. A document is one element of the class by itself, valid but for the one fault. The expected
code and name follow the rules of reading, stated here once more and independently of the reader:

- an element that is missing where its place is, or stands before its place, is told by the first
  required element that is not found there (21, that element's name);
- what is left over when the class's members are done is told as the class's own end missing (10);
- lists that came short are told with the class's name (21);
- attributes and values are told with the name of the element that holds them; whatever makes the
  text of a list or of a repeating string unreadable is 29.
"""
import json
import sys

import fragments
from fragments import Element

LIMITS = {"int32": ("-2147483648", "2147483647"), "uint32": ("0", "4294967295"),
          "int64": ("-9223372036854775808", "9223372036854775807"),
          "uint64": ("0", "18446744073709551615")}
FOREIGN = "notInTheSchema"


def walk(cls, names):
    """(code, name) of a class's strict walk over its children's names, all of them valid inside."""
    position = 0
    short = None
    for member in cls.elements:
        most = member.maximum if member.maximum is not None else len(names)
        count = 0
        while position < len(names) and names[position] == member.name and count < most:
            position += 1
            count += 1
        if count == 0 and member.minimum > 0:
            return 21, member.name
        if member.form in ("object_list", "string_list") and count < member.minimum:
            short = short or (21, cls.element)
    if short:
        return short
    return (10, None) if position < len(names) else (0, None)


def value_faults(schema, row):
    """(kind, text, code) for the checks of a simple type; the text is a plain string."""
    if row.type == "any":
        return
    if row.type == "string":
        if row.max_length and not row.values:
            yield "at the length limit", "x" * row.max_length, 0
            yield "at the length limit in letters of two bytes", "\u00e4" * row.max_length, 0
        if row.max_length:
            yield "too long", "x" * (row.max_length + 1), 19
        if row.values:
            texts = schema.value_sets[row.values]
            for text in texts:
                yield "each value", text, 0
            yield "outside the values", "notAValue", 38
            yield "value in another case", texts[0].swapcase(), \
                0 if texts[0].swapcase() in texts else 38
            if row.is_list:
                yield "list with blanks", f"  {texts[0]} \n {texts[-1]}\t", 0
                yield "list with one bad token", f"{texts[0]} notAValue", 38
                yield "empty list", "", 0
            else:
                yield "empty value", "", 38
                yield "value with a blank behind it", texts[0] + " ", 38
        elif not row.max_length:
            yield "any length", "x" * 5000, 0
        if not row.values:
            yield "empty value", "", 0
        return
    yield "lexically bad", "12x", 35
    yield "empty value", "", 35
    if row.type == "boolean":
        for text in ("true", "false", "1", "0", " true "):
            yield "each value", text, 0
        yield "value in another case", "True", 35
    elif row.type == "dateTime":
        for text in ("2008-03-10T13:32:20", "2008-02-29T23:59:59.999999Z", " 2008-03-10T13:32:20Z "):
            yield "each form", text, 0
        for text in ("2008-03-10", "2007-02-29T00:00:00", "2008-03-10 13:32:20"):
            yield "lexically bad", text, 35
    elif row.type in ("double", "float"):
        for text in ("-1.25E+01", " 7 ", "+.5"):
            yield "each form", text, 0
        yield "lexically bad", "0x10", 35
        if row.bounds:
            low, high = row.bounds
            yield "at the lower bound", low, 0
            yield "at the upper bound", high, 0
            yield "below the lower bound", f"{low}.5", 37
            yield "above the upper bound", f"{high}.5", 36
            yield "infinite", "INF", 36
            yield "infinite", "-INF", 37
            yield "not a number", "NaN", 37
        else:
            for text in ("INF", "-INF", "NaN", "1e300"):
                yield "each form", text, 0
    else:
        low, high = row.bounds or LIMITS[row.type]
        yield "at the lower bound", low, 0
        yield "at the upper bound", high, 0
        yield "at the upper bound with zeros before it", "000" + high, 0
        yield "below the lower bound", str(int(low) - 1), 37
        yield "above the upper bound", str(int(high) + 1), 36
        yield "far above the upper bound", "9" * 40, 36
        yield "collapsed blanks", f" \n{high}\t", 0
        yield "lexically bad", "1.0", 35


def is_strict_when_empty(cls, version):
    """Whether an empty element of the class is refused."""
    users = [m for c in version.classes.values() for m in c.elements if m.row.type == cls.name]
    return cls.is_global or any(m.minimum > 0 for m in users)


class Cases:
    def __init__(self, schema, version, out):
        self.schema, self.version, self.out = schema, version, out
        self.maximal = fragments.Builder(schema, version, True)
        self.minimal = fragments.Builder(schema, version, False)

    def put(self, cls, kind, row, element, code, name):
        document = element if isinstance(element, str) else element.write()
        self.out.write(json.dumps({
            "version": self.version.text, "class": cls.qualified, "kind": kind, "row": row,
            "document": document, "code": code, "name": name if code else None}) + "\n")

    def whole(self, cls):
        for builder, kind in ((self.minimal, "minimal"), (self.maximal, "maximal")):
            self.put(cls, kind, "", builder.element(cls, cls.element), 0, None)
        if cls.text is None:
            code = 32 if is_strict_when_empty(cls, self.version) else 0
            attributes = fragments.Element(cls.element, self.maximal.attributes(cls))
            closed = attributes.write().replace(f"></{cls.element}>", "/>")
            self.put(cls, "empty element", "", attributes, code, cls.element)
            self.put(cls, "self-closed element", "", closed, code, cls.element)
        element = self.maximal.element(cls, cls.element)
        element.attributes.append((FOREIGN, "1"))
        self.put(cls, "unknown attribute", "", element, 39, cls.element)
        # No document may have an attribute twice, so it is that before it is unknown.
        element.attributes.append((FOREIGN, "2"))
        self.put(cls, "unknown attribute twice", "", element, 3, cls.element)
        document = self.maximal.element(cls, cls.element).write()
        xsi = (f'<{cls.element} xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance" '
               'xsi:noNamespaceSchemaLocation="a.xsd"')
        self.put(cls, "xsi attribute", "", xsi + document[len(cls.element) + 1:], 0, None)

    def attribute(self, cls, member):
        name = member.name
        element = self.maximal.element(cls, cls.element)
        element.attributes = [a for a in element.attributes if a[0] != name]
        self.put(cls, "absent attribute", name, element, 25 if member.is_required else 0,
                 cls.element)
        element = self.maximal.element(cls, cls.element)
        element.attributes.reverse()
        self.put(cls, "attributes in another order", name, element, 0, None)
        element.attributes.append(next(a for a in element.attributes if a[0] == name))
        self.put(cls, "attribute twice", name, element, 3, cls.element)
        for kind, text, code in value_faults(self.schema, member.row):
            if kind == "value with a blank behind it" and member.row.is_list:
                continue
            element = self.maximal.element(cls, cls.element)
            element.attributes = [(n, text if n == name else t) for n, t in element.attributes]
            self.put(cls, kind, name, element, code, cls.element)

    def text(self, cls):
        for kind, text, code in value_faults(self.schema, cls.text.row):
            element = self.maximal.element(cls, cls.element)
            element.text = fragments.escape(text)
            self.put(cls, kind, cls.text.name, element, code, cls.element)
        element = self.maximal.element(cls, cls.element)
        element.children = [Element(FOREIGN)]
        self.put(cls, "child in a text", cls.text.name, element, 29, cls.element)

    def order(self, cls, kind, member, children):
        element = self.maximal.element(cls, cls.element)
        element.children = children
        code, name = walk(cls, [c.name for c in children])
        if not children:
            code, name = (32, None) if is_strict_when_empty(cls, self.version) else (0, None)
        self.put(cls, kind, member.name, element, code, name or cls.element)

    def child(self, cls, member):
        children = self.maximal.element(cls, cls.element).children
        own = [c for c in children if c.name == member.name]
        first = children.index(own[0])
        last = first + len(own) - 1
        self.order(cls, "absent element", member, children[:first] + children[last + 1:])
        if first > 0:
            before = children[:first - 1] + own[:1] + children[first - 1:first]
            self.order(cls, "out of order", member, before + children[first + 1:])
        if last + 1 < len(children):
            self.order(cls, "twice, apart", member,
                       children[:last + 2] + own[:1] + children[last + 2:])
        self.order(cls, "unknown element before", member,
                   children[:first] + [Element(FOREIGN)] + children[first:])
        self.order(cls, "unknown element behind", member,
                   children[:last + 1] + [Element(FOREIGN)] + children[last + 1:])
        if member.maximum is not None:
            for kind, count in (("as many as allowed", member.maximum),
                                ("too many", member.maximum + 1)):
                self.order(cls, kind, member, children[:first] + own[:1] * count
                           + children[last + 1:])
        if member.minimum > 1:
            self.order(cls, "too few", member, children[:first] + own[:1] * (member.minimum - 1)
                       + children[last + 1:])
        if member.is_object:
            self.child_attribute(cls, member, first)
        else:
            self.child_value(cls, member, first)

    def child_attribute(self, cls, member, first):
        """An attribute that stands twice is told with the name of its own element, wherever that is in its parent."""
        element = self.maximal.element(cls, cls.element)
        child = element.children[first]
        child.attributes += child.attributes[:1] or [(FOREIGN, "1"), (FOREIGN, "1")]
        self.put(cls, "attribute twice in a child", member.name, element, 3, member.name)

    def child_value(self, cls, member, first):
        for kind, text, code in value_faults(self.schema, member.row):
            element = self.maximal.element(cls, cls.element)
            element.children[first] = Element(member.name, text=fragments.escape(text))
            self.put(cls, kind, member.name, element, code, member.name)
        if member.row.type != "any":
            element = self.maximal.element(cls, cls.element)
            element.children[first] = Element(member.name, [(FOREIGN, "1")],
                                              text=element.children[first].text)
            code = 39 if member.form == "scalar" else 29
            self.put(cls, "attribute on a simple element", member.name, element, code, member.name)
        element = self.maximal.element(cls, cls.element)
        element.children[first].attributes = [(FOREIGN, "1"), (FOREIGN, "1")]
        code = 3 if member.form in ("scalar", "any") or member.row.type == "any" else 29
        self.put(cls, "attribute twice on a simple element", member.name, element, code, member.name)

    def choice(self, cls):
        for number, member in enumerate(cls.elements):
            element = self.maximal.element(cls, cls.element, number)
            self.put(cls, "each member of the choice", member.name, element, 0, None)
            element.children.append(self.maximal.child(member))
            self.put(cls, "too many", member.name, element, 10, cls.element)
        self.put(cls, "no member of the choice", "",
                 Element(cls.element, children=[Element(FOREIGN)]), 31, FOREIGN)

    def all(self):
        for cls in self.version.classes.values():
            self.whole(cls)
            for member in cls.attributes:
                self.attribute(cls, member)
            if cls.text is not None:
                self.text(cls)
            elif cls.is_choice:
                self.choice(cls)
            else:
                for member in cls.elements:
                    self.child(cls, member)


def main():
    schema, versions = fragments.load()
    with open(sys.argv[1], "w", encoding="utf-8") as out:
        for version in versions:
            Cases(schema, version, out).all()


if __name__ == "__main__":
    main()
