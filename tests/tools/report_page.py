"""Pages that `gridkit report` makes, for the tests: of products, also of a hostile one, and their elements."""
import html.parser
import re
import shutil

from programs import FOLDER, GRIDKIT, run, simulate

VOID = {"meta", "link", "input", "img", "br", "hr"}
HOSTILE = """<script>document.title="taken"</script>"><img src=x onerror="document.title='taken'">'{{script}}</div>"""


class Node:
    def __init__(self, name, attributes, parent):
        self.name, self.parent = name, parent
        self.attributes = {key: value or "" for key, value in dict(attributes).items()}
        self.children, self.own_text = [], ""

    def text(self):
        """All text inside, in order."""
        return "".join(c if isinstance(c, str) else c.text() for c in self.children)

    def all(self, name=None, kind=None):
        for child in self.children:
            if isinstance(child, str):
                continue
            kinds = child.attributes.get("class", "").split()
            if (name is None or child.name == name) and (kind is None or kind in kinds):
                yield child
            yield from child.all(name, kind)


class Page(html.parser.HTMLParser):
    """A page's elements; every start tag must have its end tag, in order."""

    def __init__(self, content):
        super().__init__(convert_charrefs=True)
        self.root = self.at = Node("", {}, None)
        self.feed(content)
        self.close()
        assert self.at is self.root, f"<{self.at.name}> is not ended"

    def handle_starttag(self, tag, attrs):
        assert len(dict(attrs)) == len(attrs), f"an attribute of <{tag}> stands twice"
        node = Node(tag, attrs, self.at)
        self.at.children.append(node)
        if tag not in VOID:
            self.at = node

    def handle_startendtag(self, tag, attrs):
        self.handle_starttag(tag, attrs)
        if tag not in VOID:
            self.at = self.at.parent

    def handle_endtag(self, tag):
        assert self.at.name == tag, f"</{tag}> ends <{self.at.name}>"
        self.at = self.at.parent

    def handle_data(self, data):
        self.at.children.append(data)

    def find(self, name=None, kind=None, identity=None):
        return [n for n in self.root.all(name, kind) if identity is None or n.attributes.get("id") == identity]

    def section(self, identity):
        [found] = self.find("section", identity=identity)
        return found


def report(annotation, *options):
    output = FOLDER / "report.html"
    done = run(GRIDKIT, "report", annotation, output, "--overwrite", *options)
    assert (done.stdout, done.stderr) == (b"", b""), done
    return Page(output.read_text(encoding="utf-8"))


def curves(figure):
    """A plot's curves in its own units, from the places of its axes' numbers."""
    def axis(anchor, coordinate):
        marks = []
        for label in figure.all("text"):
            if label.attributes.get("text-anchor") == anchor and "transform" not in label.attributes:
                try:
                    marks.append((float(label.attributes[coordinate]), float(label.text())))
                except ValueError:
                    pass
        (p0, v0), (p1, v1) = marks[0], marks[-1]
        offset = -3.5 if coordinate == "y" else 0  # numbers stand a little below their line
        return lambda p: v0 + (p - p0 - offset) * (v1 - v0) / (p1 - p0)
    x, y = axis("middle", "x"), axis("end", "y")
    result = []
    for curve in figure.all("g", "curve"):
        [path] = curve.all("path")
        points = re.findall(r"[ML](-?[\d.]+) (-?[\d.]+)", path.attributes["d"])
        result.append([(x(float(a)), y(float(b))) for a, b in points])
    return result


def hostile_product():
    """A product with markup in its folder's name, in texts and in attributes."""
    plain = simulate("hostile", "--profile", "maximal")
    folder = FOLDER / "<img src=x onerror=alert(1)>&'"
    shutil.rmtree(folder, ignore_errors=True)
    shutil.copytree(plain.parent, folder)
    annotation = folder / plain.name
    escaped = HOSTILE.replace("&", "&amp;").replace("<", "&lt;").replace('"', "&quot;")
    content = annotation.read_text()
    for element in ("copyrightInfo", "sceneID", "qualityRemark", "noiseModelID", "deliveryInfo"):
        content, count = re.subn(f"<{element}>[^<]*<", lambda _, e=element: f"<{e}>{escaped}<", content)
        assert count > 0, element
    content, count = re.subn(r'fileName="[^"]*"', lambda _: f'fileName="{escaped[:100]}"', content)
    assert count > 0
    annotation.write_text(content)
    return annotation
