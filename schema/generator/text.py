"""Small helpers for emitted text: lines of C++ that fit the page."""
import textwrap

BANNER = "// Made by schema/generate.py from the tables in schema/level1Product; do not edit."
WIDTH = 100
BODY_WIDTH = WIDTH - 2  # of a line that will be indented once more


def indent(lines):
    return [f"  {line}" if line else line for line in lines]


def _breaks(line):
    """The places at which a line may be broken, outside of quoted texts: (index, preference)."""
    quoted = False
    for i, character in enumerate(line):
        if character == '"':
            quoted = not quoted
        elif quoted:
            continue
        elif line[i - 1:i + 1] == ", ":
            yield i + 1, 3
        elif character == "(" or line[i - 1:i + 1] == "::":
            yield i + 1, 2
        elif character == " ":
            yield i + 1, 1


def fold(line, width=BODY_WIDTH):
    """The line, broken where it is longer than `width`; what follows is indented by four more."""
    lines = []
    margin = " " * (len(line) - len(line.lstrip()) + 4)
    while len(line) > width:
        fitting = [place for place in _breaks(line) if len(margin) < place[0] <= width + 1]
        if not fitting:
            break
        late = [place for place in fitting if place[0] > width * 2 // 3]
        index, _ = max(late or fitting, key=lambda place: (place[1], place[0]))
        lines.append(line[:index].rstrip())
        line = margin + line[index:]
    return lines + [line]


def comment(text):
    """A comment of one sentence or more."""
    return textwrap.wrap(text, BODY_WIDTH, initial_indent="// ", subsequent_indent="// ",
                         break_long_words=False, break_on_hyphens=False)


def function(signature, *statements):
    """A function's definition, in one line where that fits."""
    whole = " ".join([signature, "{", *statements, "}"])
    if len(whole) <= BODY_WIDTH:
        return [whole]
    body = [line for statement in statements for line in fold(f"  {statement}")]
    return [*fold(f"{signature} {{"), *body, "}"]


def literal(text, width):
    """A text as a literal of C++, in parts of at most that many characters, cut after "::"."""
    parts = [""]
    for word in text.split("::"):
        parts[-1:] = ([parts[-1] + word + "::"] if len(parts[-1]) + len(word) + 2 <= width
                      else [parts[-1], word + "::"])
    parts[-1] = parts[-1].removesuffix("::")
    return [f'"{part}"' for part in parts]


def fill(opening, items, closing, width=BODY_WIDTH):
    """Items between an opening and a closing text, as many a line as fit, aligned below the first. An
    item of several parts, which is a list, may be broken between them."""
    parts = [item if isinstance(item, list) else [item] for item in items]
    pieces = [piece for item in parts for piece in [*item[:-1], item[-1] + ","]]
    pieces[-1] = pieces[-1].removesuffix(",") + closing
    lines = [opening + pieces[0]]
    for piece in pieces[1:]:
        if len(lines[-1]) + 1 + len(piece) <= width:
            lines[-1] += " " + piece
        else:
            lines.append(" " * len(opening) + piece)
    return lines


def write_if_changed(path, lines):
    """Writes a file unless it already holds just this, so that nothing rebuilds without need."""
    text = "\n".join(lines) + "\n"
    if path.exists() and path.read_text(encoding="utf-8") == text:
        return
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text, encoding="utf-8")
