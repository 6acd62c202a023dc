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

    def test_readme_runs_sessions_of_a_document_without_program_in_a_folder(self):
        tool = self.write("bin/tool", "#!/bin/sh\nls\n")
        os.chmod(tool, 0o755)
        document = self.write("docs/guide.md", "```console\n$ tool\nbin\ndocs\n```\n")
        self.assert_passes("readme.py", document, self.root, tool)
        self.write("docs/guide.md", "```console\n$ tool\nbin\n```\n")
        self.assert_fails("+docs", "readme.py", document, self.root, tool)
        self.write("docs/guide.md", "nothing\n")
        self.assert_fails("are expected", "readme.py", document, self.root, tool)

    def test_readme_finds_commands_of_several_tools(self):
        one, other = self.write("a/one", "#!/bin/sh\necho 1\n"), self.write("b/other", "#!/bin/sh\necho 2\n")
        document = self.write("guide.md", "```console\n$ one\n1\n$ other\n2\n```\n")
        os.chmod(one, 0o755)
        self.assert_fails("other cannot be run", "readme.py", document, self.root, one + os.pathsep + other)
        os.chmod(other, 0o755)
        self.assert_passes("readme.py", document, self.root, one + os.pathsep + other)

    def test_guide_tells_of_what_schemas_have(self):
        document = self.write("guide.md", "<!-- reference -->\n<!-- end of reference -->\n"
                              "```xml\n    <port name=\"a\"/>\n```\n")
        self.write("examples/file.xml", "<nodes>\n  <port name=\"a\"/>\n</nodes>\n")
        schema = ('<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema"><xs:element name="port" type="port">'
                  "<xs:annotation><xs:documentation>A port.</xs:documentation></xs:annotation></xs:element>"
                  '<xs:complexType name="port"><xs:attribute name="ATTRIBUTE" type="xs:string"/></xs:complexType>'
                  "</xs:schema>")
        tool = self.write("bin/nuxo", f"#!/bin/sh\necho '{schema.replace('ATTRIBUTE', 'width')}'\n")
        examples = os.path.join(self.root, "examples")
        self.assert_fails("cannot be run", "guide.py", document, tool, examples)
        os.chmod(tool, 0o755)
        self.assert_fails("+| `width` |", "guide.py", document, tool, examples)
        self.assert_passes("guide.py", document, tool, examples, "--write")
        self.assert_passes("guide.py", document, tool, examples)
        with open(tool, "w", encoding="utf-8") as script:
            script.write(f"#!/bin/sh\necho '{schema.replace('ATTRIBUTE', 'height')}'\n")
        self.assert_fails("+| `height` |", "guide.py", document, tool, examples)
        self.assert_passes("guide.py", document, tool, examples, "--write")
        self.write("examples/file.xml", "<nodes/>\n")
        self.assert_fails("stands in no example", "guide.py", document, tool, examples)
        self.write("guide.md", "no marks\n")
        self.assert_fails("marks of the reference", "guide.py", document, tool, examples)

    def manual_tool(self, option="--any"):
        """A tool with one verb, which has that option."""
        main = "Does things.\nUsage: tool [OPTIONS] VERB\n\nOptions:\n  -h,--help                   Help\n\n" \
               "Verbs:\n  dump                        Show a file\n\nExit codes:\n" + \
               "".join(f"  {code}  meaning\n" for code in range(5))
        verb = "Show a file\nUsage: nuxo dump [OPTIONS] FILE\n\nPositionals:\n" \
               "  FILE REQUIRED               A file\n\nOptions:\n  -h,--help                   Help\n" \
               f"  {option} Excludes: --help\n" + " " * 28 + "What it does\n"
        self.write("main.txt", main)
        self.write("dump.txt", verb)
        tool = self.write("tool", f'#!/bin/sh\ncd {self.root}\n[ "$1" = dump ] && exec cat dump.txt\ncat main.txt\n')
        os.chmod(tool, 0o755)
        return tool

    def test_manual_takes_what_the_help_says(self):
        parts = ("options", "verbs", "exits")
        page = self.write("page", "".join(f"# begin: {part}\n# end: {part}\n" for part in parts))
        script = self.write("script", "# begin: words\n# end: words\n")
        tool = self.manual_tool()
        self.assert_fails("What it does. Not together with", "manual.py", page, script, tool)
        self.assert_passes("manual.py", page, script, tool, "--write")
        self.assert_passes("manual.py", page, script, tool)
        with open(script, encoding="utf-8") as text:
            self.assertIn("    dump) echo '-h --help --any' ;;\n    dump/arguments) echo 'FILE' ;;\n", text.read())
        self.assert_fails("+    dump) echo '-h --help --all' ;;", "manual.py", page, script, self.manual_tool("--all"))
        self.write("script", "no parts\n")
        self.assert_fails("expected the parts", "manual.py", page, script, tool)
        self.assert_fails("did not start", "manual.py", page, script, os.path.join(self.root, "no-such-tool"))

    def test_manual_page_names_what_is_missing(self):
        good = "OPTIONS\n       -h, --help  Help.\nVERBS\n   dump FILE\n       --any  What it does.\nEXIT STATUS\n" + \
               "".join(f"       {code}      Meaning.\n" for code in range(5))
        page = self.write("page", good)
        # What is set stands in the page already.
        groff = self.write("groff", '#!/bin/sh\nfor page; do :; done\n'
                                    'grep -q warned "$page" && echo a warning >&2\ncat "$page"\n')
        os.chmod(groff, 0o755)
        tool = self.manual_tool()
        self.assert_passes("manual_page.py", page, groff, tool)
        for old, new, fault in (("--any", "--none", "dump: options of the page: ['--none']"),
                                ("dump FILE", "show FILE", "verbs of the page: ['show']"),
                                ("-h, --help", "-h", "nuxo: options of the page: ['-h']"),
                                ("       3", "       5", "exit codes of the page"),
                                ("Meaning", "warned", "a warning")):
            with self.subTest(old):
                self.write("page", good.replace(old, new))
                self.assert_fails(fault, "manual_page.py", page, groff, tool)
        self.assert_fails("did not start", "manual_page.py", page, os.path.join(self.root, "no-such-groff"), tool)

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
