# SPDX-License-Identifier: Apache-2.0
"""headers.py CC CXX INCLUDE_DIR: every installed header compiles alone, those of the C interface also as C99.

INCLUDE_DIR is that of an installation, so that a header which needs one that is not installed does not compile.
"""
import os
import subprocess
import tempfile

import tools

WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Wconversion", "-Werror"]
C_FOLDERS = ("qv_cipr/", "qv_tools/")
C_PREFIXES = ("qv_", "nci_")  # of headers that other folders share with C


def is_c(header):
    return header.startswith(C_FOLDERS) or os.path.basename(header).startswith(C_PREFIXES)


def compile_alone(compiler, header, include_dir, source):
    with open(source, "w", encoding="utf-8") as out:
        # Twice, for a guard that does not guard.
        out.write(f"#include <{header}>\n#include <{header}>\nint nuxo_translation_unit;\n")
    try:
        done = subprocess.run([*compiler, *WARNINGS, "-fsyntax-only", "-I", include_dir, source], check=False,
                              capture_output=True, text=True)
    except OSError as error:
        raise tools.ToolFailed(f"{compiler[0]} did not start: {error}") from error
    return [] if done.returncode == 0 else [f"{header} ({compiler[1]}):\n{done.stderr}"]


def check(arguments):
    c_compiler, cxx_compiler, include_dir = arguments
    headers = [path for path in tools.source_files(include_dir) if path.endswith(".h")]
    if not headers:
        raise tools.ToolFailed(f"no header found below {include_dir}")
    complaints = []
    with tempfile.TemporaryDirectory() as folder:
        for header in headers:
            source = os.path.join(folder, "alone.cpp")
            complaints += compile_alone([cxx_compiler, "-std=c++17"], header, include_dir, source)
            if is_c(header):
                source = os.path.join(folder, "alone.c")
                complaints += compile_alone([c_compiler, "-std=c99"], header, include_dir, source)
    return complaints


tools.main(check)
