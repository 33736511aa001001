#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The files explain themselves to whoever has only this repository: every document and, in documents,
every path that is named is here, and nothing points at a ticket, a chapter of a paper elsewhere, or one
person's machine."""

import re

import tracked

TEXT = {"", ".h", ".cpp", ".c", ".md", ".py", ".sh", ".txt", ".cmake", ".in", ".json", ".map", ".1"}
DOCUMENT = re.compile(r"[\w./-]*\w\.md\b")
PLACE = re.compile(r"(?<![\w./-])((?:CMake|Docs|Fuzz|Include|Scripts|Sources|Tests|Tools)/[\w./-]*\w)")
# The brackets keep these patterns from finding themselves.
ELSEWHERE = [
    (re.compile(r"\bPart[ ]\d+(\.\d+)*\b"), "a chapter of a paper that is not here"),
    (re.compile(r"\b[Ii]ssue[ ]#?\d+\b"), "a ticket: say what it is about instead"),
    (re.compile(r"(?<![\w.])/(root|work)/[\w.]"), "a path of one machine"),
    (re.compile(r"(?<![\w.])/home/(?!user\b|someone\b|me\b)[a-z]"), "a path of one machine"),
    (re.compile(r"(?<![\w.])/tmp/[w]/"), "a path of one machine"),
    (re.compile(r"\b(TO[D]O|FIX[M]E)\b"), "a promise: keep it or leave it out"),
]


def is_here(name, known):
    name = name.removeprefix("../").removeprefix("./").removeprefix("/")
    return any(str(path) == name or str(path).endswith("/" + name) for path in known)


def missing_places(root, text):
    """Paths that a document names outside of its fenced blocks and that are not there."""
    fenced = False
    for number, line in enumerate(text, 1):
        if line.startswith("```"):
            fenced = not fenced
        for place in [] if fenced else PLACE.findall(line):
            if not (root / place).exists():
                yield f"{number}: {place} is not in the repository"


def findings_in(root, path, known):
    text = tracked.lines(root, path)
    for number, line in enumerate(text, 1):
        for pattern, what in ELSEWHERE:
            found = pattern.search(line)
            if found:
                yield f"{number}: '{found.group(0)}' is {what}"
        for name in DOCUMENT.findall(line):
            if not is_here(name, known):
                yield f"{number}: {name} is not in the repository"
    if path.suffix == ".md":
        yield from missing_places(root, text)


def check():
    root = tracked.arguments(__doc__).root
    known = tracked.files(root)
    findings, count = [], 0
    for path in known:
        if path.suffix in TEXT and path.name != "LICENSE":
            count += 1
            findings += [f"{path}:{finding}" for finding in findings_in(root, path, known)]
    return tracked.report(findings, f"{count} files")


if __name__ == "__main__":
    tracked.main(check)
