"""Checks the built site: no page makes a browser ask for anything outside, every link inside leads somewhere, and the
site and the reference inside it lead to each other.

    check_site.py SITE

An address that only a click follows may lead outside.
"""
import re
import sys
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote, urlsplit

OUTSIDE = re.compile(r"^\s*(https?:)?//", re.I)


class Page(HTMLParser):
    def __init__(self):
        super().__init__()
        self.fetched, self.links, self.anchors = [], [], set()

    def handle_starttag(self, tag, attributes):
        values = dict(attributes)
        self.anchors |= {values[name] for name in ("id", "name") if values.get(name)}
        for name in ("src", "href", "data", "poster", "action", "srcset"):
            if not values.get(name):
                continue
            if tag == "a" or (tag == "link" and values.get("rel") == "canonical"):
                self.links.append(values[name])
            elif not (tag == "form" and name == "action"):
                self.fetched.append(values[name])
        self.fetched += re.findall(r"url\(\s*['\"]?([^'\")]+)", values.get("style") or "")


def parse(file):
    page = Page()
    page.feed(file.read_text())
    return page


def faults(site):
    pages = {file.resolve(): parse(file) for file in site.rglob("*.html")}
    for file, page in pages.items():
        for address in page.fetched + page.links:
            parts = urlsplit(address)
            if OUTSIDE.match(address):
                if address in page.fetched:
                    yield f"{file}: asks for {address}"
                continue
            if parts.scheme or not parts.path:
                continue
            base = site if parts.path.startswith("/") else file.parent
            target = (base / unquote(parts.path).lstrip("/")).resolve()
            if not target.exists():
                yield f"{file}: {address} leads nowhere"
            elif parts.fragment and target in pages and unquote(parts.fragment) not in pages[target].anchors:
                yield f"{file}: {address} names no place of its page"
    for file in site.rglob("*.css"):
        for address in re.findall(r"(?:url\(\s*|@import\s+)['\"]?([^'\")\s]+)", file.read_text()):
            if OUTSIDE.match(address):
                yield f"{file}: asks for {address}"
    for file in site.rglob("*.js"):
        for address in re.findall(r"(?:fetch|open|importScripts|\.src\s*=|import)\s*\(?\s*['\"]((?:https?:)?//[^'\"]+)",
                                  file.read_text(errors="replace")):
            yield f"{file}: asks for {address}"


def missing_links(site):
    """Between the site and its reference, whose pages of search results stand in frames of others."""
    site = site.resolve()
    reference = site / "reference"
    entered = False
    for file in sorted(site.rglob("*.html")):
        if file.is_relative_to(reference / "search"):
            continue
        targets = {(file.parent / unquote(urlsplit(address).path)).resolve() for address in parse(file).links}
        if not file.is_relative_to(reference):
            entered |= any(target.is_relative_to(reference) for target in targets)
        elif site / "index.html" not in targets:
            yield f"{file}: does not lead back to the site"
    if not entered:
        yield f"{site}: no page leads to the reference"


def main():
    site = Path(sys.argv[1])
    if not (site / "index.html").is_file():
        sys.exit(f"check_site: no site in {site}")
    found = [*faults(site), *missing_links(site)]
    for fault in found:
        print(f"check_site: {fault}", file=sys.stderr)
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
