# SPDX-License-Identifier: Apache-2.0
"""licence.py ROOT: every file names its licence in its first lines, unless its format has no place for it."""
import os
from fnmatch import fnmatch

import tools

LINE = "SPDX-License-Identifier: Apache-2.0"
# Formats without comments, binary files, and inputs whose bytes are what is tested.
EXEMPT = (
    "LICENSE",
    "*.json",
    "*.gz",
    "*.png",
    "*.expected",
    "docs/images/*",
    "tests/fixtures/*",
    "tests/*/golden/*",
    "fuzz/corpus/*",
    "fuzz/regressions/*",
)


def check(arguments):
    root = arguments[0]
    complaints = []
    read = 0
    for path in tools.source_files(root):
        if any(fnmatch(path, pattern) for pattern in EXEMPT):
            continue
        read += 1
        with open(os.path.join(root, path), encoding="utf-8", errors="replace") as lines:
            if not any(LINE in line for _, line in zip(range(4), lines)):
                complaints.append(f"{path}: {LINE} is not among its first four lines")
    if read == 0:
        raise tools.ToolFailed(f"no file found below {root}")
    return complaints


tools.main(check)
