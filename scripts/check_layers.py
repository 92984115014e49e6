#!/usr/bin/env python3
"""Checks the includes of src/ against the layer table of docs/architecture.md.

A file may include files of its own folder and of the rows above its own in the table, nothing else of the project;
files must not include each other in a circle. Prints file:line and the reason for each include that doesn't fit.

Usage: check_layers.py [project folder]
"""

import re
import sys
from pathlib import Path

INCLUDE = re.compile(r'\s*#\s*include\s*([<"])([^>"]+)[>"]')
ROW = re.compile(r"\|\s*(\d+)\s*\|([^|]*)\|")


def layer_table(document):
    """{folder: layer} of the table's rows, e.g. {"runtime": 1, ..., "smb/wire": 3}."""
    rows = (ROW.match(line) for line in document.read_text().splitlines())
    return {folder.strip(): int(row[1]) for row in rows if row for folder in row[2].split(",")}


def folder_of(path, layers):
    """The folder of the table that holds the path (relative to src/), or None."""
    return next((str(parent) for parent in path.parents if str(parent) in layers), None)


def objection(path, target, quoted, src, layers):
    """Why `path` must not include `target`, or None. Both are relative to src/."""
    if ".." in Path(target).parts or not (src / target).is_file():
        # A system header, or something that src/ has no business with: a relative path, tests/, tools/.
        return "isn't a file below src/; includes are written from there" if quoted else None
    own, other = folder_of(path, layers), folder_of(Path(target), layers)
    if other is None or own == other or layers[other] < layers[own]:
        return None  # a target outside the table is reported at that file itself
    if layers[other] == layers[own]:
        return f"{own} and {other} are of one layer ({layers[own]}) and must not know each other"
    return f"{own} (layer {layers[own]}) must not know {other} (layer {layers[other]})"


def circles(graph):
    """Each circle of includes once, as (file, line, the files in order)."""
    found, done = [], set()

    def visit(file, trail):
        if file in trail:
            return
        for line, target in graph.get(file, []):
            if target in trail or target == file:
                start = (trail + [file]).index(target)
                found.append((file, line, (trail + [file])[start:] + [target]))
            elif target not in done:
                visit(target, trail + [file])
        done.add(file)

    for file in sorted(graph):
        if file not in done:
            visit(file, [])
    return found


def main():
    root = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).parent.parent)
    src = root / "src"
    layers = layer_table(root / "docs" / "architecture.md")
    if not layers:
        sys.exit("docs/architecture.md: no layer table (| layer | folders |) found")

    problems, graph, includes = [], {}, 0
    for file in sorted(p for p in src.rglob("*") if p.suffix in (".h", ".cpp", ".inc")):
        path = file.relative_to(src)
        if folder_of(path, layers) is None:
            problems.append(f"src/{path}:1: its folder isn't in the layer table of docs/architecture.md")
            continue
        edges = graph.setdefault(str(path), [])
        for number, line in enumerate(file.read_text(errors="replace").splitlines(), 1):
            include = INCLUDE.match(line)
            if not include:
                continue
            includes += 1
            edges.append((number, include[2]))
            reason = objection(path, include[2], include[1] == '"', src, layers)
            if reason:
                problems.append(f'src/{path}:{number}: "{include[2]}": {reason}')

    for file, line, files in circles(graph):
        problems.append(f"src/{file}:{line}: files include each other in a circle: {' -> '.join(files)}")
    print("\n".join(problems) if problems else f"{len(graph)} files, {includes} includes")
    sys.exit(1 if problems else 0)


if __name__ == "__main__":
    main()
