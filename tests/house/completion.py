# SPDX-License-Identifier: Apache-2.0
"""completion.py SCRIPT BASH TOOL EXAMPLES: what bash offers behind each verb is what TOOL takes there."""
import os
import re
import subprocess
import sys
import tempfile
import unittest

import manual

SCRIPT, BASH, TOOL, EXAMPLES = (os.path.abspath(path) if os.path.exists(path) else path for path in sys.argv[1:5])

# Runs the function that the script registers for "nuxo", with the last word as the one to be completed.
DRIVER = """
source "$1" || exit 3
shift
registered=$(complete -p nuxo) || exit 4
function=${registered#*-F }
COMP_WORDS=("$@")
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
"${function% *}" || :
printf '%s\\n' "${COMPREPLY[@]}"
"""


class Completion(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.main, cls.verbs = manual.read_help(TOOL)

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = folder.name
        for name in ("a.xml", "b file.xml", "c.gz", "notes.txt"):
            with open(os.path.join(self.root, name), "w", encoding="utf-8"):
                pass
        os.mkdir(os.path.join(self.root, "folder"))

    def offered(self, *words):
        done = subprocess.run([BASH, "--norc", "--noprofile", "-c", DRIVER, "bash", SCRIPT, TOOL, *words], check=False,
                              capture_output=True, text=True, cwd=self.root, env={**os.environ, "LC_ALL": "C.UTF-8"})
        self.assertEqual((done.returncode, done.stderr), (0, ""), words)
        return [line for line in done.stdout.split("\n") if line]

    def assert_offers(self, expected, *words):
        self.assertEqual(sorted(self.offered(*words)), sorted(expected), words)

    def test_verbs(self):
        self.assert_offers(self.verbs, "")
        self.assert_offers(["dump", "draw", "diff"], "d")
        self.assert_offers(self.verbs, "--color", "never", "-v", "")
        self.assert_offers([], "no_such_verb", "")

    def test_options_of_every_verb(self):
        everywhere = {name for entry in self.main.options() for name in entry.names()}
        self.assertIn("--color", everywhere)
        self.assertEqual(set(self.offered("-")), everywhere)
        for verb, text in self.verbs.items():
            own = {name for entry in text.options() for name in entry.spellings()}
            self.assertIn("--help", own)
            self.assertEqual(set(self.offered(verb, "-")), own | everywhere, verb)
            for name in own:
                self.assertIn(name, self.offered(verb, name), verb)

    def test_other_spelling_of_an_option(self):
        self.assert_offers(["-W", "-Werror"], "check", "-W")
        self.assert_offers([], "fmt", "-We")

    def test_every_option_with_choices(self):
        counted = 0
        for verb, text in self.verbs.items():
            for entry in text.options():
                for name in entry.names() if entry.choices() else []:
                    counted += 1
                    self.assert_offers(entry.choices(), verb, name, "")
                    self.assert_offers(entry.choices(), verb, name, "=", "")
                    self.assert_offers(entry.choices(), verb, name, "=")
        self.assertGreater(counted, 10)
        self.assert_offers(["json"], "dump", "--format", "j")
        self.assert_offers(["auto", "always"], "--color", "a")
        self.assert_offers(["never"], "query", "--color", "=", "n")

    def test_numbers_have_no_choices(self):
        self.assert_offers([], "history", "--stream", "")
        self.assert_offers([], "formats", "Y_8", "--width", "")

    def test_files(self):
        files = ["a.xml", "b file.xml", "c.gz", "folder"]
        for verb in ("dump", "check", "query", "build", "explain", "diff", "fmt", "draw", "ports"):
            self.assert_offers(files, verb, "")
        self.assert_offers(["b file.xml"], "fmt", "b")
        self.assert_offers(files, "build", "--format", "json", "a.xml", "")
        self.assert_offers([], "build", "a.xml", "b file.xml", "")  # criteria
        self.assert_offers([], "dump", "a.xml", "")
        for verb in ("check", "fmt", "diff"):
            self.assert_offers(files, verb, "a.xml", "c.gz", "a.xml", "")

    def test_kinds_of_schema(self):
        self.assert_offers(["descriptor", "settings"], "schema", "")
        self.assert_offers(["a.xml"], "schema", "settings", "a")

    def test_rules(self):
        listed = manual.tools.run(TOOL, "check", "--list-rules")
        rules = re.findall(r"^([a-z][a-z0-9-]*) ", listed, re.MULTILINE)
        self.assertGreater(len(rules), 30)
        for option in ("-W", "-E", "--no", "--explain"):
            self.assert_offers(rules, "check", option, "")
        start = rules[0][:3]
        self.assert_offers([rule for rule in rules if rule.startswith(start)], "check", "--no", start)

    def test_keys_of_the_files(self):
        pair = [os.path.join(EXAMPLES, f"kva6_{part}.xml") for part in ("descriptor", "settings")]
        with open(pair[1], encoding="utf-8") as settings:
            keys = re.findall(r'<settings key="(\d+)"', settings.read())
        self.assertGreater(len(keys), 20)
        self.assert_offers(keys, "build", *pair, "--key", "")
        self.assert_offers(keys, "check", *pair, "--settings", "")
        self.assert_offers([key for key in keys if key.startswith("6011")], "build", *pair, "--key", "6011")
        self.assert_offers([], "build", pair[0], "--key", "")

    def test_names_of_formats(self):
        listed = manual.tools.run(TOOL, "formats")
        names = [line.split()[0] for line in listed.splitlines()[1:] if line]
        self.assertIn("YUV420_8_SP", names)
        self.assert_offers(names, "formats", "")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
