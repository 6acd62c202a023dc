# SPDX-License-Identifier: Apache-2.0
"""manual.py MANUAL COMPLETION TOOL [--write]: the manual page and the completion script know what TOOL's help tells.

Both files have parts between the lines "begin: NAME" and "end: NAME" in comments. These are made of what `TOOL --help` and
`TOOL VERB --help` print: `./dev readme` makes them anew.
"""
import os
import re

import tools

REGION = re.compile(r"^(?P<begin>\S+ begin: (?P<name>\w+)\n)(?P<body>.*?)(?P<end>^\S+ end: (?P=name)$)",
                    re.MULTILINE | re.DOTALL)
SECTION = re.compile(r"^(Positionals|Options|Verbs|Examples|Exit codes):$")
OPTION = re.compile(r"^(?P<names>-[\w-]*(?:,-[\w-]+)*)(?: (?P<value>[A-Z]+)(?![A-Za-z]))?(?::\{(?P<choices>[^}]*)\})?"
                    r"(?:=(?P<default>\w+))?(?P<rest>.*)$")
LEFT = 28  # columns for the words of an entry; longer ones have their description on the next line


class Entry:
    """An option, positional or verb of the help."""

    def __init__(self, head, text):
        self.head = head
        self.text = text

    def option(self):
        found = OPTION.match(self.head)
        if found is None:
            raise tools.ToolFailed(f"not an option: {self.head}")
        return found

    def names(self):
        return self.option()["names"].split(",")

    def spellings(self):
        """The names, and what the text says can be typed in their place."""
        return self.names() + re.findall(r"\balso (-[\w-]+)", self.text)

    def choices(self):
        braces = re.search(r":\{([^}]*)\}", self.head)
        return braces[1].split(",") if braces else []


class Help:
    """What a help text holds."""

    def __init__(self, text):
        self.entries = {"Positionals": [], "Options": [], "Verbs": []}
        self.footer = []
        lines = text.rstrip("\n").split("\n")
        self.summary = lines[0]
        self.usage = lines[1].removeprefix("Usage: nuxo ")
        part = None
        for line in lines[2:]:
            heading = SECTION.match(line)
            if heading is not None:
                part = heading[1]
                if part not in self.entries:
                    self.footer.append(line)
            elif part in self.entries and line.startswith("  "):
                self.add(self.entries[part], line)
            elif part is not None:
                if line:
                    part = "footer"
                self.footer.append(line)

    @staticmethod
    def add(entries, line):
        if line.startswith(" " * LEFT):
            entries[-1].text = (entries[-1].text + " " + line.strip()).strip()
            return
        head, _, text = line[2:].partition("  ")
        entries.append(Entry(head.strip(), text.strip()))

    def options(self):
        return self.entries["Options"]

    def footer_part(self, heading):
        """The lines behind a heading of the footer up to the next empty line."""
        if heading + ":" not in self.footer:
            return []
        rest = self.footer[self.footer.index(heading + ":") + 1:]
        return rest[:rest.index("")] if "" in rest else rest

    def prose(self):
        """The footer up to its examples."""
        end = self.footer.index("Examples:") if "Examples:" in self.footer else len(self.footer)
        if "Exit codes:" in self.footer:
            end = min(end, self.footer.index("Exit codes:"))
        if "Example:" in self.footer:
            end = min(end, self.footer.index("Example:"))
        return [line for line in self.footer[:end] if line]

    def examples(self):
        return self.footer_part("Examples") + self.footer_part("Example")

    def arguments(self):
        """Names of the positionals in order; "..." behind one that may be repeated."""
        words = [word.strip("[]") for word in self.usage.split()[1:] if word != "[OPTIONS]"]
        return [re.sub(r"\(\d+x\)$", "...", word) for word in words]


def read_help(tool):
    main = Help(tools.run(tool, "--help"))
    verbs = {entry.head: Help(tools.run(tool, entry.head, "--help")) for entry in main.entries["Verbs"]}
    if not verbs:
        raise tools.ToolFailed(f"{tool} --help names no verbs")
    return main, verbs


# ---- the manual page

# Characters that groff would take for its own, or turn into others than those that are typed.
ROFF = {"\\": "\\e", "-": "\\-", "'": "\\(aq", "`": "\\(ga", "^": "\\(ha", "~": "\\(ti"}


def roff(text):
    text = "".join(ROFF.get(character, character) for character in text)
    return "\\&" + text if text.startswith(".") else text


def bold(text):
    return "\\fB" + roff(text) + "\\fR"


def italic(text):
    return "\\fI" + roff(text) + "\\fR"


def sentence(text):
    first = text.split()[0]
    start = first if "=" in first else first[:1].upper() + first[1:]
    return start + text[len(first):] + ("" if text.endswith(".") else ".")


def roff_option(entry):
    found = entry.option()
    head = ", ".join(bold(name) for name in entry.names())
    text = sentence(entry.text)
    if found["value"]:
        head += " " + italic(found["value"])
    if entry.choices():
        words = entry.choices()
        text += " One of " + ", ".join(words[:-1]) + " or " + words[-1]
        text += f", {found['default']} when left out." if found["default"] else "."
    if " REQUIRED" in found["rest"]:
        text += " Required."
    excluded = re.search(r"Excludes: (\S+)", found["rest"])
    if excluded:
        text += f" Not together with {excluded[1]}."
    return [".TP", head, roff(text)]


def roff_positional(entry):
    name = entry.head.split()[0]
    text = sentence(entry.text)
    if "REQUIRED" not in entry.head:
        text += " May be left out."
    return [".TP", italic(name), roff(text)]


def roff_prose(lines):
    """Lines at the margin are paragraphs; indented ones are terms, what they mean, and lines that go on with that."""
    out = [".PP"]
    in_terms = False
    after_term = False
    for line in lines:
        indent = len(line) - len(line.lstrip())
        if indent == 0:
            if in_terms:
                out.append(".PP")
            in_terms = False
            out.append(roff(line))
        elif indent == 2:
            term, _, text = line.strip().partition("  ")
            out += [".TQ" if after_term else ".TP", bold(term)]
            after_term = not text
            if text:
                out.append(roff(text.strip()))
            in_terms = True
        else:
            out.append(roff(line.strip()))
            after_term = False
    return out


def roff_examples(lines):
    return [".PP", ".EX", *(roff(line) for line in lines), ".EE"] if lines else []


def manual_options(main, _verbs):
    return [line for entry in main.options() for line in roff_option(entry)]


def manual_verbs(_main, verbs):
    out = []
    for verb, text in verbs.items():
        usage = re.sub(r"\(\d+x\)", "...", text.usage)
        out += [f'.SS "{roff(usage)}"', roff(sentence(text.summary))]
        for entry in text.entries["Positionals"]:
            out += roff_positional(entry)
        for entry in text.options():
            if "--help" not in entry.names():
                out += roff_option(entry)
        out += roff_prose(text.prose()) + roff_examples(text.examples())
    return out


def manual_exits(main, _verbs):
    out = []
    for line in main.footer_part("Exit codes"):
        code, text = line.split(maxsplit=1)
        out += [".TP", bold(code), roff(sentence(text))]
    if len(out) != 3 * 5:
        raise tools.ToolFailed("five exit codes are expected")
    return out


# ---- the completion script

def case(pattern, words):
    return f"    {pattern}) echo '{' '.join(words)}' ;;"


def cases_of(verb, text):
    out = [case(verb, [name for entry in text.options() for name in entry.spellings()])]
    for entry in text.options():
        found = entry.option()
        if not found["value"]:
            continue
        for name in entry.names():
            out.append(case(f"{verb}/{name}", entry.choices() or [found["value"]]))
    return out


def completion_words(main, verbs):
    out = ["_nuxo_words()", "{", '    case "$1" in', case("verbs", verbs)]
    out += cases_of("''", main)
    for verb, text in verbs.items():
        out += cases_of(verb, text)
        out.append(case(f"{verb}/arguments", text.arguments()))
        for entry in text.entries["Positionals"]:
            if entry.choices():
                out.append(case(f"{verb}/{entry.head.split()[0]}", entry.choices()))
    return [line.replace("''/", "/") for line in out] + ["    esac", "}"]


MAKERS = {
    "options": manual_options,
    "verbs": manual_verbs,
    "exits": manual_exits,
    "words": completion_words,
}


def check(arguments):
    manual, completion, tool = arguments[:3]
    main, verbs = read_help(tool)
    complaints = []
    for path, names in ((manual, ["options", "verbs", "exits"]), (completion, ["words"])):
        with open(path, encoding="utf-8") as text:
            found = text.read()
        regions = [match["name"] for match in REGION.finditer(found)]
        if regions != names:
            return [f"{path}: expected the parts {names}, found {regions}"]

        def made(match):
            return match["begin"] + "\n".join(MAKERS[match["name"]](main, verbs)) + "\n" + match["end"]

        wanted = REGION.sub(made, found)
        if "--write" in arguments:
            with open(path, "w", encoding="utf-8") as out:
                out.write(wanted)
        else:
            complaints += tools.difference(found, wanted, os.path.basename(path), "what the help says")
    return complaints + ["If the change is meant: ./dev readme"] if complaints else []


if __name__ == "__main__":
    tools.main(check)
