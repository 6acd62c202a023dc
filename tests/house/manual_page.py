# SPDX-License-Identifier: Apache-2.0
"""manual_page.py PAGE GROFF TOOL: the manual page is set without a warning, and what the reader sees then names every verb
with its options, and every exit code."""
import re
import subprocess

import tools


def rendered(groff, page):
    """The page as plain text of unlimited width, and what groff warns of."""
    command = [groff, "-man", "-ww", "-Tascii", "-P-cbou", "-rLL=500n", "-rHY=0", page]
    try:
        done = subprocess.run(command, check=False, capture_output=True, text=True)
    except OSError as error:
        raise tools.ToolFailed(f"{groff} did not start: {error}") from error
    if done.returncode != 0 or not done.stdout.strip():
        raise tools.ToolFailed(f"{groff} exited with {done.returncode}: {done.stderr.strip()}")
    return done.stdout, done.stderr.splitlines()


def sections(text, indent):
    """What stands under each heading that starts at that column."""
    parts = re.split(rf"^ {{{indent}}}(?=\S)(.*)\n", text, flags=re.MULTILINE)
    return dict(zip(parts[1::2], parts[2::2]))


def options_of(text):
    """The names of options in a help text."""
    block = re.search(r"^Options:\n((?:  .*\n)*)", text, re.MULTILINE)
    if block is None:
        raise tools.ToolFailed("a help text has no options")
    names = re.findall(r"^  (-\S+)", block[1], re.MULTILINE)
    return {name for group in names for name in group.split(",")}


def check(arguments):
    page, groff, tool = arguments
    text, complaints = rendered(groff, page)
    parts = sections(text, 0)
    verbs = {heading.split()[0]: body for heading, body in sections(parts.get("VERBS", ""), 3).items()}
    help_text = tools.run(tool, "--help")
    listed = re.search(r"^Verbs:\n((?:  .*\n)+)", help_text, re.MULTILINE)
    if listed is None:
        raise tools.ToolFailed(f"{tool} --help names no verbs")
    expected = re.findall(r"^  (\S+)", listed[1], re.MULTILINE)
    if sorted(verbs) != sorted(expected):
        complaints.append(f"verbs of the page: {sorted(verbs)}; of the tool: {sorted(expected)}")
    shown = {"": parts.get("OPTIONS", ""), **verbs}
    for verb in ["", *expected]:
        words = set(re.findall(r"^ {7}(-.*)$", shown.get(verb, ""), re.MULTILINE))
        named = {name for line in words for name in re.findall(r"(?:^|, )(--?[\w-]+)", line)}
        wanted = options_of(tools.run(tool, *([verb] if verb else []), "--help"))
        if verb:
            wanted -= {"-h", "--help"}  # told of once
        if named != wanted:
            complaints.append(f"{verb or 'nuxo'}: options of the page: {sorted(named)}; of the tool: {sorted(wanted)}")
    codes = re.findall(r"^ {7}(\d)\s", parts.get("EXIT STATUS", ""), re.MULTILINE)
    if codes != list("01234"):
        complaints.append(f"exit codes of the page: {codes}")
    return complaints


tools.main(check)
