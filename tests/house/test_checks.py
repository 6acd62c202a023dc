# SPDX-License-Identifier: Apache-2.0
"""test_checks.py NM CC CXX: the checks of this folder notice the faults that they are for, and tools that cannot run."""
import os
import subprocess
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
NM, CC, CXX = sys.argv[1:4]


def outcome(script, *arguments):
    done = subprocess.run([sys.executable, "-B", os.path.join(HERE, script), *arguments], check=False,
                          capture_output=True, text=True)
    return done.returncode, done.stdout


class Checks(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = folder.name

    def write(self, path, text):
        path = os.path.join(self.root, path)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8") as out:
            out.write(text)
        return path

    def library(self, body):
        source = self.write("library.c", "int XML_Parse(void); int other(const char*);\n" + body)
        library = os.path.join(self.root, "library.so")
        subprocess.run([CC, "-O2", "-w", "-fno-builtin", "-shared", "-fPIC", "-o", library, source], check=True)
        return library

    def assert_passes(self, script, *arguments):
        code, text = outcome(script, *arguments)
        self.assertEqual((code, text), (0, "passed\n"))

    def assert_fails(self, expected, script, *arguments):
        code, text = outcome(script, *arguments)
        self.assertEqual(code, 1, text)
        self.assertIn(expected, text)

    def test_manners_accepts_a_quiet_library(self):
        library = self.library("int ask(void) { return XML_Parse(); }")
        self.assert_passes("manners.py", NM, library)

    def test_manners_names_each_unmannerly_call(self):
        for name in ("printf", "__printf_chk", "puts", "perror", "abort", "exit", "__assert_fail", "pthread_create",
                     "pthread_mutex_lock", "pthread_rwlock_rdlock", "sem_wait", "__cxa_guard_acquire"):
            with self.subTest(name):
                library = self.library(f"int {name}(); int ask(void) {{ return XML_Parse() + {name}(); }}")
                self.assert_fails(name + ": ", "manners.py", NM, library)

    def test_manners_names_the_standard_streams(self):
        for name in ("stdout", "stderr", "_ZSt4cout", "_ZSt4cerr"):
            with self.subTest(name):
                library = self.library(f"extern void* {name}; void* ask(void) {{ XML_Parse(); return {name}; }}")
                self.assert_fails(name + ": ", "manners.py", NM, library)

    def test_manners_fails_when_it_cannot_look(self):
        library = self.library("int ask(void) { return XML_Parse(); }")
        self.assert_fails("did not start", "manners.py", os.path.join(self.root, "no-such-nm"), library)
        self.assert_fails("exited with", "manners.py", NM, os.path.join(self.root, "no-such-library"))
        self.assert_fails("printed nothing", "manners.py", "true", library)
        self.assert_fails("no use of XML_Parse", "manners.py", NM, self.library("int ask(void) { return other(0); }"))

    def test_symbols_compares_both_ways(self):
        library = self.library("int first(void) { return 1; } int second(void) { return 2; }")
        path = os.path.join(self.root, "list.txt")
        self.assert_passes("symbols.py", NM, library, path, "--write")
        self.assert_passes("symbols.py", NM, library, path)
        with open(path, encoding="utf-8") as lines:
            text = lines.read()
        self.write("list.txt", text.replace("second\n", ""))
        self.assert_fails("+second", "symbols.py", NM, library, path)
        self.write("list.txt", text + "third\n")
        self.assert_fails("-third", "symbols.py", NM, library, path)
        self.write("list.txt", text)
        self.assert_fails("printed nothing", "symbols.py", "true", library, path)
        self.assert_fails("did not start", "symbols.py", os.path.join(self.root, "no-such-nm"), library, path)

    def test_includes_accepts_the_right_direction(self):
        self.write("qv_camera/nuxo/query/A.cpp", "#include <nuxo/tree/ItemUID.h>\n#include <vector>\n")
        self.write("tools/nuxo/main.cpp", '#include "arguments.h"\n#include <nuxo/nuxo.h>\n')
        self.assert_passes("includes.py", self.root)

    def test_includes_names_the_wrong_direction(self):
        for path, include, fault in (
                ("qv_camera/nuxo/tree/A.h", "<nuxo/query/B.h>", "tree must not include"),
                ("qv_camera/nuxo/parser/A.h", "<nuxo/camera/B.h>", "parser must not include"),
                ("qv_camera/nuxo/tree/A.h", "<nuxo/nuxo.h>", "tree must not include"),
                ("qv_cipr/a.h", "<nuxo/NuxoStatus.h>", "qv_cipr must not include"),
                ("qv_camera/nuxo/tree/A.h", "<nuxo/elsewhere/B.h>", "elsewhere has no place"),
                ("qv_camera/nuxo/tree/A.h", '"B.h"', "includes its headers as")):
            with self.subTest(path + include):
                self.write(path, f"  #  include {include}\n")
                self.assert_fails(fault, "includes.py", self.root)
                os.remove(os.path.join(self.root, path))

    def test_includes_fails_when_it_finds_nothing(self):
        self.assert_fails("no #include line", "includes.py", self.root)

    def test_licence_names_files_without_it(self):
        self.assert_fails("no file found", "licence.py", self.root)
        self.write("good.h", "// SPDX-License-Identifier: Apache-2.0\n")
        self.assert_passes("licence.py", self.root)
        self.write("folder/bad.h", "#ifndef BAD_H\n")
        self.assert_fails("folder/bad.h", "licence.py", self.root)

    def test_readme_compares_program_and_sessions(self):
        program = self.write("program.cpp", "int main()\n{\n}\n")
        nuxo = self.write("bin/nuxo", "#!/bin/sh\necho answer to $1\necho finding >&2\n")
        cpp, console = "```cpp\nint main()\n{\n}\n```\n", "```console\n$ nuxo a | cat\nanswer to a\nfinding\n```\n"
        readme = self.write("README.md", "Text\n" + cpp + console)
        self.assert_fails("cannot be run", "readme.py", readme, program, nuxo)
        os.chmod(nuxo, 0o755)
        self.assert_passes("readme.py", readme, program, nuxo)
        self.write("README.md", cpp.replace("{", "{ ") + console)
        self.assert_fails("+{", "readme.py", readme, program, nuxo)
        self.write("README.md", cpp + console.replace("answer", "an answer"))
        self.assert_fails("+answer to a", "readme.py", readme, program, nuxo)
        self.assert_passes("readme.py", readme, program, nuxo, "--write")
        self.assert_passes("readme.py", readme, program, nuxo)
        self.write("README.md", cpp + console.replace("nuxo a", "no-such-nuxo a").replace(" | cat", ""))
        self.assert_fails("did not run", "readme.py", readme, program, nuxo)
        self.write("README.md", cpp)
        self.assert_fails("are expected", "readme.py", readme, program, nuxo)

    def test_readme_compares_functions_of_the_program(self):
        first = "// Says one.\nint first(int a,\n          int b)\n{\n    if (a) {\n    }\n}\n"
        program = self.write("examples/program.cpp", first + "\nint second()\n{\n    return first();\n}\n")
        tool = self.write("bin/program", "#!/bin/sh\nls\n")
        os.chmod(tool, 0o755)
        console = "```console\n$ program\nbin\ndocs\nexamples\n```\n"
        document = self.write("docs/use.md", "```cpp first\n" + first + "```\n" + console)
        self.assert_passes("readme.py", document, program, tool)
        self.write("docs/use.md", "```cpp second\n" + first + "```\n" + console)
        self.assert_fails("+    return first();", "readme.py", document, program, tool)
        self.assert_passes("readme.py", document, program, tool, "--write")
        self.assert_passes("readme.py", document, program, tool)
        self.write("docs/use.md", "```cpp third\n" + first + "```\n" + console)
        self.assert_fails("no function third", "readme.py", document, program, tool)

    def test_headers_names_those_that_do_not_stand_alone(self):
        self.assert_fails("no header found", "headers.py", CC, CXX, self.root)
        self.write("qv_tools/good.h", "#ifndef GOOD_H\n#define GOOD_H\nint good(void);\n#endif\n")
        self.assert_passes("headers.py", CC, CXX, self.root)
        self.write("qv_tools/guardless.h", "typedef struct { int member; } guardless;\n")
        self.assert_fails("qv_tools/guardless.h (-std=c99)", "headers.py", CC, CXX, self.root)
        self.write("qv_tools/guardless.h", "// one line comments are not C99's problem\nbool flag(void);\n")
        self.assert_fails("qv_tools/guardless.h (-std=c99)", "headers.py", CC, CXX, self.root)
        self.write("qv_tools/guardless.h", "size_type lost(void);\n")
        self.assert_fails("qv_tools/guardless.h (-std=c++17)", "headers.py", CC, CXX, self.root)
        self.assert_fails("did not start", "headers.py", "no-such-compiler", "no-such-compiler", self.root)


unittest.main(argv=[sys.argv[0]])
