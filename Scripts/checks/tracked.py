# SPDX-License-Identifier: Apache-2.0
"""What every check shares: the files of the checkout, and the way findings are told."""

import argparse
import pathlib
import subprocess
import sys

CPP = (".h", ".cpp")


def arguments(description, *extra):
    """The parsed command line: --root (the checkout), and what a check adds as (flag, options) pairs."""
    parser = argparse.ArgumentParser(description=description)
    here = pathlib.Path(__file__).resolve().parents[2]
    parser.add_argument("--root", type=pathlib.Path, default=here, help="the checkout")
    for flag, options in extra:
        parser.add_argument(flag, **options)
    return parser.parse_args()


def files(root):
    """Paths, relative to the root, of what git knows or would add; a file not yet added counts too."""
    listing = subprocess.run(
        ["git", "-C", str(root), "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
        check=True, capture_output=True).stdout.decode("utf-8", "surrogateescape")
    paths = {pathlib.PurePosixPath(name) for name in listing.split("\0") if name}
    return sorted(path for path in paths if (root / path).is_file() and not (root / path).is_symlink())


def lines(root, path):
    return (root / path).read_text(encoding="utf-8", errors="replace").splitlines()


def is_script(root, path):
    if path.suffix in (".sh", ".py"):
        return True
    with open(root / path, "rb") as file:
        return file.read(2) == b"#!"


def report(findings, looked_at):
    """Prints the findings, or how much was looked at; returns the exit status."""
    for finding in findings:
        print(finding)
    if not findings:
        print(looked_at)
    return 1 if findings else 0


def main(check):
    sys.exit(check())
