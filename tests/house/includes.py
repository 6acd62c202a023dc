# SPDX-License-Identifier: Apache-2.0
"""includes.py ROOT: includes go one way, from the folders on the right of LAYERS to those on their left.

Folders of one layer do not include each other, except that qv_tools and qv_cipr need one another. The umbrella header
includes everything below it and is included by none of the library's files.
"""
import os
import re

import tools

LAYERS = [
    {"qv_tools", "qv_cipr"},
    {"base"},
    {"tree", "records", "formats"},
    {"parser", "camera"},
    {"query", "isp"},
    {"histories"},
    {"analysis"},
    {"kernels"},
    {"frame_params", "simulation"},
    {"umbrella"},
    {"tool"},
]
ONE_LAYER = {"qv_tools", "qv_cipr"}
ROOTS = ("qv_tools", "qv_cipr", "qv_camera/nuxo", "tools/nuxo")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
OWN = ("qv_tools/", "qv_cipr/", "nuxo/")


def layer_number(folder):
    for number, folders in enumerate(LAYERS):
        if folder in folders:
            return number
    return None


def folder_of_include(path):
    """The layer's folder of an include path such as nuxo/tree/ItemUID.h."""
    parts = path.split("/")
    if parts[0] != "nuxo":
        return parts[0]
    if len(parts) == 2:
        return "umbrella" if parts[1] == "nuxo.h" else "base"
    return parts[1]


def folder_of_file(path):
    if path.startswith("tools/"):
        return "tool"
    return folder_of_include(path.removeprefix("qv_camera/"))


def complaint(path, number, delimiter, included):
    where = f"{path}:{number}: "
    user = folder_of_file(path)
    if delimiter == '"':
        return None if user == "tool" else where + f'"{included}": this project includes its headers as <folder/Header.h>'
    if not included.startswith(OWN):
        return None
    used = folder_of_include(included)
    for folder in (user, used):
        if layer_number(folder) is None:
            return where + f"folder {folder} has no place in the order of layers"
    if user == used or {user, used} <= ONE_LAYER or layer_number(used) < layer_number(user):
        return None
    return where + f"{user} must not include <{included}>"


def check(arguments):
    root = arguments[0]
    complaints = []
    includes = 0
    for path in tools.source_files(root):
        if not path.startswith(tuple(folder + "/" for folder in ROOTS)) or not path.endswith((".h", ".c", ".cpp")):
            continue
        with open(os.path.join(root, path), encoding="utf-8") as lines:
            for number, line in enumerate(lines, 1):
                match = INCLUDE.match(line)
                if match:
                    includes += 1
                    found = complaint(path, number, *match.groups())
                    if found:
                        complaints.append(found)
    if includes == 0:
        raise tools.ToolFailed(f"no #include line found below {root}")
    return complaints


tools.main(check)
