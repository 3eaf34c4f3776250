"""Small helpers for emitted text."""

BANNER = "// Made by schema/generate.py from the tables in schema/level1Product; do not edit."


def indent(lines):
    return [f"  {line}" if line else line for line in lines]


def write_if_changed(path, lines):
    """Writes a file unless it already holds just this, so that nothing rebuilds without need."""
    text = "\n".join(lines) + "\n"
    if path.exists() and path.read_text(encoding="utf-8") == text:
        return
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text, encoding="utf-8")
