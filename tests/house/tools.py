# SPDX-License-Identifier: Apache-2.0
"""What the house checks share: running a tool, walking the source tree, reporting."""
import difflib
import os
import subprocess
import sys

SKIPPED_FOLDERS = {".git", "build", "__pycache__"}


class ToolFailed(Exception):
    """A check could not be made; that is a failure of the check, never a pass."""


def run(*command):
    """The standard output of a command that must succeed and must say something."""
    try:
        done = subprocess.run(command, check=False, capture_output=True, text=True)
    except OSError as error:
        raise ToolFailed(f"{command[0]} did not start: {error}") from error
    if done.returncode != 0:
        raise ToolFailed(f"{' '.join(command)} exited with {done.returncode}: {done.stderr.strip()}")
    if not done.stdout.strip():
        raise ToolFailed(f"{' '.join(command)} printed nothing")
    return done.stdout


def source_files(root):
    """Paths, relative to root, of all files that belong to the project."""
    for folder, folders, files in os.walk(root):
        if "CMakeCache.txt" in files and folder != root:
            folders.clear()
            continue
        folders[:] = sorted(name for name in folders if name not in SKIPPED_FOLDERS)
        for name in sorted(files):
            yield os.path.relpath(os.path.join(folder, name), root)


def difference(old, new, old_name, new_name):
    """The lines in which two texts differ."""
    return list(difflib.unified_diff(old.splitlines(), new.splitlines(), old_name, new_name, lineterm="", n=0))


def main(check):
    """Runs check(arguments) -> list of complaints and exits accordingly."""
    try:
        complaints = check(sys.argv[1:])
    except ToolFailed as error:
        complaints = [str(error)]
    for complaint in complaints:
        print(complaint)
    print("FAILED" if complaints else "passed")
    sys.exit(1 if complaints else 0)
