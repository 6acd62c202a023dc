# SPDX-License-Identifier: Apache-2.0
"""readme.py DOCUMENT PROGRAM TOOL [--write]: what a document shows is what there is.

Its C++ blocks show the example program as the tests compile and run it: all of it, or the function whose name follows
`cpp` on the opening line, with the comment above it. Its console blocks hold what their commands print. Commands run in
the folder that holds both document and program, with the folder of TOOL, or those of several joined by ':', first in the
search path. A document that shows no program is given a folder instead of one, in which commands then run.
"""
import os
import re
import subprocess

import tools

BLOCK = re.compile(r"^```(cpp|console)(?: (\w+))?\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def function(name, source, program):
    """The definition of a function: its signature and its braces start lines, what is inside does not."""
    definition = re.compile(rf"^(?://.*\n)*\w.*\b{name}\(.*\n(?: .*\n)*\{{\n(?:.*\n)*?\}}\n", re.MULTILINE)
    found = definition.search(source)
    if found is None:
        raise tools.ToolFailed(f"{program} has no function {name}")
    return found.group()


def session(text, folder, search_path):
    """The block with the output of its commands made anew; standard error follows standard output."""
    environment = dict(os.environ, PATH=os.pathsep.join(search_path + [os.environ.get("PATH", "")]), LC_ALL="C",
                       NO_COLOR="1")
    lines = []
    for command in re.findall(r"^\$ (.*)$", text, re.MULTILINE):
        done = subprocess.run(["sh", "-c", command], check=False, capture_output=True, text=True, cwd=folder,
                              env=environment)
        if done.returncode in (126, 127):
            raise tools.ToolFailed(f"{command} did not run: {done.stderr.strip()}")
        lines.append(f"$ {command}\n{done.stdout}{done.stderr}")
    return "".join(lines)


def check(arguments):
    document, program = arguments[:2]
    programs_to_run = arguments[2].split(os.pathsep)
    has_program = not os.path.isdir(program)
    source = ""
    if has_program:
        with open(program, encoding="utf-8") as text:
            source = text.read()
    with open(document, encoding="utf-8") as text:
        found = text.read()
    shown = {kind for kind, _, _ in BLOCK.findall(found)}
    if has_program and shown != {"cpp", "console"}:
        return [f"{document}: a C++ block and a console block are expected"]
    if not has_program and shown != {"console"}:
        return [f"{document}: a console block and no C++ block are expected"]
    for tool in programs_to_run:
        if not os.access(tool, os.X_OK):
            raise tools.ToolFailed(f"{tool} cannot be run")
    search_path = [os.path.dirname(tool) for tool in programs_to_run]
    folder = os.path.commonpath([os.path.dirname(os.path.abspath(path)) for path in (document, program)])
    if not has_program:
        folder = program

    def expected(block):
        kind, name, text = block.groups()
        if kind == "console":
            content = session(text, folder, search_path)
        else:
            content = function(name, source, program) if name else source
        return f"```{' '.join(filter(None, (kind, name)))}\n{content}```"

    wanted = BLOCK.sub(expected, found)
    if "--write" in arguments:
        with open(document, "w", encoding="utf-8") as out:
            out.write(wanted)
        return []
    complaints = tools.difference(found, wanted, os.path.basename(document), "what there is")
    return complaints + ["If the change is meant: ./dev readme"] if complaints else []


tools.main(check)
