#!/usr/bin/env python3
"""Holds every include of the product to the module graph the build declares.

    check-module-edges.py <source directory> <module-edges.txt written by the configuration>

A file of module M may include its own headers and those of the modules M declares with
DEPENDS, and nothing else of ours. The table in docs/architecture.md must draw exactly the
declared graph. Prints each offence and exits 1 if there is one.
"""
import pathlib
import re
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s*"([a-z]+)/', re.M)
# Module directories outside src/.
DIRECTORIES = {"fixtureproducer": "tools/fixtureproducer"}


def declared_edges(edges_file):
    edges = {}
    for line in edges_file.read_text().splitlines():
        name, _, dependencies = line.partition(":")
        edges[name.strip()] = set(dependencies.split())
    return edges


def documented_edges(document):
    """Rows of the module table: | `name` | what it holds | `dependency`, `dependency` |"""
    edges = {}
    for line in document.read_text().splitlines():
        cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
        if len(cells) < 3 or not re.fullmatch(r"`[a-z]+`", cells[0]):
            continue
        edges[cells[0].strip("`")] = set(re.findall(r"`([a-z]+)`", cells[-1]))
    return edges


def main():
    source = pathlib.Path(sys.argv[1])
    edges = declared_edges(pathlib.Path(sys.argv[2]))
    offences = []
    for module, dependencies in sorted(edges.items()):
        directory = source / DIRECTORIES.get(module, f"src/{module}")
        for path in sorted(directory.rglob("*")):
            if path.suffix not in (".hpp", ".cpp"):
                continue
            for included in INCLUDE.findall(path.read_text(encoding="utf-8")):
                if included in edges and included != module and included not in dependencies:
                    offences.append(f"{path.relative_to(source)}: includes {included}/, which {module} does not declare")
    documented = documented_edges(source / "docs" / "architecture.md")
    for module in sorted(set(edges) | set(documented)):
        if edges.get(module) != documented.get(module):
            offences.append(f"docs/architecture.md: {module} uses {sorted(documented.get(module, []))}, "
                            f"the build declares {sorted(edges.get(module, []))}")
    for offence in offences:
        print(offence)
    return 1 if offences else 0


if __name__ == "__main__":
    sys.exit(main())
