# SPDX-License-Identifier: Apache-2.0
"""guide.py DOCUMENT TOOL EXAMPLES [--write]: the writer's guide tells of every element and attribute, and shows real files.

The text between its reference marks is what the schemas of the tool say. Each XML block stands in a file below EXAMPLES,
apart from indentation.
"""
import os
import re
import subprocess
import textwrap
import xml.etree.ElementTree as ElementTree

import tools

XS = "{http://www.w3.org/2001/XMLSchema}"
REFERENCE = re.compile(r"(?<=^<!-- reference -->\n).*?(?=^<!-- end of reference -->$)", re.MULTILINE | re.DOTALL)
XML_BLOCK = re.compile(r"^```xml\n(.*?)^```$", re.MULTILINE | re.DOTALL)
SETTINGS_GROUP = "settings_values"
TITLES = {"descriptor": "Elements of descriptors", "settings": "Elements of settings files"}


def cell(text):
    return text.replace("|", "\\|")


def documentation(element):
    found = element.find(f"{XS}annotation/{XS}documentation")
    return found.text.strip() if found is not None and found.text else ""


def value_text(attribute):
    """What the text of an attribute must be, in a few words."""
    restriction = attribute.find(f"{XS}simpleType/{XS}restriction")
    if restriction is None:
        return {"xs:string": "text", "part_name": "name", "format_name": "pixel format",
                "attribute_name": "attribute name"}.get(attribute.get("type"), attribute.get("type") or "text")
    choices = [choice.get("value") for choice in restriction.findall(f"{XS}enumeration")]
    if choices:
        return ", ".join(f"`{choice}`" for choice in choices)
    least, most = (restriction.find(XS + bound) for bound in ("minInclusive", "maxInclusive"))
    if restriction.get("base") == "xs:int":
        if least is None and most is None:
            return "integer"
        if most is None:
            return f"integer from {least.get('value')}"
        if least is None:
            return f"integer up to {most.get('value')}"
        return f"integer {least.get('value')} to {most.get('value')}"
    return {"xs:decimal": "number"}.get(restriction.get("base"), "text")


class Schema:
    """What an XML schema of the tool says."""

    def __init__(self, text, kind):
        try:
            self.root = ElementTree.fromstring(text)
        except ElementTree.ParseError as trouble:
            raise tools.ToolFailed(f"schema of {kind}: {trouble}") from trouble
        self.types = {found.get("name"): found for found in self.root.findall(f"{XS}complexType")}
        self.texts = {}
        self.names = {}
        for element in self.root.iter(f"{XS}element"):
            kind_name = element.get("type")
            if kind_name in self.types:
                self.names.setdefault(kind_name, []).append(element.get("name"))
                self.texts.setdefault(kind_name, documentation(element))
        if not self.types:
            raise tools.ToolFailed(f"schema of {kind} has no types")

    def attributes(self, kind_name):
        return [attribute for attribute in self.types[kind_name].iter(f"{XS}attribute") if attribute.get("name")]

    def takes_settings(self, kind_name):
        groups = self.types[kind_name].iter(f"{XS}attributeGroup")
        return any(group.get("ref") == SETTINGS_GROUP for group in groups)

    def children(self, kind_name):
        names = [child.get("name") for child in self.types[kind_name].iter(f"{XS}element")]
        names = [f"`{name}`" for name in dict.fromkeys(names)]
        if next(self.types[kind_name].iter(f"{XS}any"), None) is not None:
            names.append("elements named after nodes or what is in them")
        return ", ".join(names) or "-"

    def settings_attributes(self):
        for group in self.root.findall(f"{XS}attributeGroup"):
            if group.get("name") == SETTINGS_GROUP:
                return [attribute for attribute in group.iter(f"{XS}attribute") if attribute.get("name")]
        return []


def element_rows(schema):
    lines = ["| Element | Meaning | In it | Attributes |", "| --- | --- | --- | --- |"]
    for kind_name in schema.types:
        names = schema.names.get(kind_name)
        if names is None:
            continue
        attributes = []
        for attribute in schema.attributes(kind_name):
            name = f"`{attribute.get('name')}`"
            attributes.append(f"**{name}**" if attribute.get("use") == "required" else name)
        if schema.takes_settings(kind_name):
            attributes.append("all that settings can change")
        shown = ", ".join(f"`{name}`" for name in dict.fromkeys(names))
        lines.append(f"| {shown} | {cell(schema.texts[kind_name])} | {schema.children(kind_name)} | "
                     f"{', '.join(attributes) or '-'} |")
    return lines


def without_repetition(meanings):
    """Leaves out meanings without a place that another one repeats and completes."""
    for value, text in [key for key, places in meanings.items() if not places]:
        if any((value, text) != key and key[0] == value and key[1].startswith(text) for key in meanings):
            del meanings[(value, text)]


def attribute_rows(schemas):
    """A row for each meaning of an attribute, and the elements where it is meant so if there are several."""
    meanings = {}
    for schema in schemas:
        for kind_name, names in schema.names.items():
            for attribute in schema.attributes(kind_name):
                key = (value_text(attribute), documentation(attribute))
                places = meanings.setdefault(attribute.get("name"), {}).setdefault(key, [])
                places.extend(f"`{name}`" for name in names)
    settable = {}
    for schema in schemas:
        for attribute in schema.settings_attributes():
            settable.setdefault(attribute.get("name"), attribute)
    for name, attribute in settable.items():
        meanings.setdefault(name, {}).setdefault((value_text(attribute), documentation(attribute)), [])
    lines = ["| Attribute | In | Value | Settings | Meaning |", "| --- | --- | --- | --- | --- |"]
    for name in sorted(meanings):
        without_repetition(meanings[name])
        for (value, text), places in meanings[name].items():
            where = ", ".join(dict.fromkeys(places)) if len(meanings[name]) > 1 and places else "-"
            lines.append(f"| `{name}` | {where} | {value} | {'yes' if name in settable else 'no'} | {cell(text)} |")
    return lines


def reference(tool):
    schemas = {}
    for kind in TITLES:
        done = subprocess.run([tool, "schema", kind], check=False, capture_output=True, text=True)
        if done.returncode != 0:
            raise tools.ToolFailed(f"{tool} schema {kind}: {done.stderr.strip()}")
        schemas[kind] = Schema(done.stdout, kind)
    lines = []
    for kind, title in TITLES.items():
        lines += ["", f"### {title}", ""] + element_rows(schemas[kind])
    lines += ["", "### Attributes", "", "Where an attribute means different things in different elements, \"In\" tells "
              "them apart. \"Settings\" tells which ones settings", "can change, whatever element of the setting they "
              "stand in.", ""]
    lines += attribute_rows(list(schemas.values())) + ["", ""]
    return "\n".join(lines)


def without_indentation(text):
    return [line.strip() for line in textwrap.dedent(text).strip("\n").split("\n")]


def stands_in(block, files):
    wanted = without_indentation(block)
    for lines in files:
        for start in range(len(lines) - len(wanted) + 1):
            if lines[start:start + len(wanted)] == wanted:
                return True
    return False


def check(arguments):
    document, tool, examples = arguments[:3]
    if not os.access(tool, os.X_OK):
        raise tools.ToolFailed(f"{tool} cannot be run")
    with open(document, encoding="utf-8") as text:
        found = text.read()
    if REFERENCE.search(found) is None:
        return [f"{document}: the marks of the reference are missing"]
    files = []
    for name in sorted(os.listdir(examples)):
        with open(os.path.join(examples, name), encoding="utf-8") as text:
            files.append(without_indentation(text.read()))
    blocks = XML_BLOCK.findall(found)
    if not blocks:
        return [f"{document}: XML blocks are expected"]
    complaints = [f"{document}: a block that starts with {block.strip().splitlines()[0]} stands in no example"
                  for block in blocks if not stands_in(block, files)]
    text = reference(tool)
    wanted = REFERENCE.sub(lambda _: text, found)
    if "--write" in arguments:
        with open(document, "w", encoding="utf-8") as out:
            out.write(wanted)
        return complaints
    differences = tools.difference(found, wanted, os.path.basename(document), "what the schemas say")
    return complaints + differences + (["If the change is meant: ./dev readme"] if differences else [])


tools.main(check)
