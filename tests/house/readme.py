# SPDX-License-Identifier: Apache-2.0
"""readme.py README PROGRAM NUXO [--write]: what the README shows is what there is.

Its C++ block is the example program as the tests compile and run it, and its console blocks hold what their commands
print. Commands run in the README's folder with NUXO first in the search path.
"""
import os
import re
import subprocess

import tools

BLOCK = re.compile(r"^```(cpp|console)\n(.*?)^```$", re.MULTILINE | re.DOTALL)


def session(text, folder, nuxo):
    """The block with the output of its commands made anew; standard error follows standard output."""
    environment = dict(os.environ, PATH=os.path.dirname(nuxo) + os.pathsep + os.environ.get("PATH", ""), LC_ALL="C",
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
    readme, program, nuxo = arguments[:3]
    with open(program, encoding="utf-8") as text:
        source = text.read()
    with open(readme, encoding="utf-8") as text:
        found = text.read()
    shown = {kind for kind, _ in BLOCK.findall(found)}
    if shown != {"cpp", "console"}:
        return [f"{readme}: a C++ block and a console block are expected"]
    if not os.access(nuxo, os.X_OK):
        raise tools.ToolFailed(f"{nuxo} cannot be run")

    def expected(block):
        kind, text = block.groups()
        content = source if kind == "cpp" else session(text, os.path.dirname(os.path.abspath(readme)), nuxo)
        return f"```{kind}\n{content}```"

    wanted = BLOCK.sub(expected, found)
    if "--write" in arguments:
        with open(readme, "w", encoding="utf-8") as out:
            out.write(wanted)
        return []
    complaints = tools.difference(found, wanted, "README", "what there is")
    return complaints + ["If the change is meant: ./dev readme"] if complaints else []


tools.main(check)
