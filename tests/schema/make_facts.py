#!/usr/bin/env python3
"""Writes the documents of the facts stated by hand, in the form of make_cases.py.

    make_facts.py OUTPUT.jsonl
"""
import json
import sys

import facts
import fragments


def main():
    schema, versions = fragments.load()
    with open(sys.argv[1], "w", encoding="utf-8") as out:
        for fact in facts.all_facts():
            for version in versions:
                if version.text not in fact.versions:
                    continue
                cls = version.classes[fact.class_name]
                element = fragments.Builder(schema, version, True).element(cls, cls.element)
                fact.change(element)
                name = fact.name or cls.element
                out.write(json.dumps({
                    "version": version.text, "class": cls.qualified, "kind": fact.behaviour, "row": "",
                    "document": element.write(), "code": fact.code,
                    "name": name if fact.code else None}) + "\n")


if __name__ == "__main__":
    main()
