#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""No source file has more lines than a person reads in one sitting."""

import tracked

MOST_LINES = {".cpp": 1000, ".h": 500}


def check():
    root = tracked.arguments(__doc__).root
    findings, count = [], 0
    for path in tracked.files(root):
        most = MOST_LINES.get(path.suffix)
        if most is None:
            continue
        count += 1
        length = len(tracked.lines(root, path))
        if length > most:
            findings.append(f"{path}:{length}: {length} lines, at most {most}: split it by topic")
    return tracked.report(findings, f"{count} files")


if __name__ == "__main__":
    tracked.main(check)
