# SPDX-License-Identifier: Apache-2.0
"""symbols.py NM LIBRARY LIST [--write]: the library exports exactly the symbols of the committed list.

The list holds demangled names, sorted, each once: the variants of one constructor or destructor share a name.
"""
import tools

HEADER = ["# SPDX-License-Identifier: Apache-2.0", "# Symbols that libnuxo exports. Rewritten by `./dev symbols`."]


def exported(nm, library):
    names = set()
    for line in tools.run(nm, "-D", "-C", "--defined-only", library).splitlines():
        names.add(line.split(None, 2)[2])
    return sorted(names)


def check(arguments):
    nm, library, path = arguments[:3]
    found = "\n".join(HEADER + exported(nm, library)) + "\n"
    if "--write" in arguments:
        with open(path, "w", encoding="utf-8") as out:
            out.write(found)
        return []
    with open(path, encoding="utf-8") as lines:
        committed = lines.read()
    complaints = tools.difference(committed, found, "committed", "exported")
    return complaints + ["If the change is meant: ./dev symbols"] if complaints else []


tools.main(check)
