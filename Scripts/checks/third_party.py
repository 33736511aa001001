#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Each third-party header is included in its one room, and there in .cpp files alone, so that a
library can be exchanged by changing one folder."""

import re

import tracked

KIT = "Sources/PlatformKit"
# What an include names, and where it may be included: in files whose path begins like this.
ROOMS = [
    (r"(jpeglib|jerror|jconfig|jmorecfg|turbojpeg)\.h", [f"{KIT}/Codecs/Jpeg"]),
    (r"(tiffio|tiff|tiffconf)\.h", [f"{KIT}/Codecs/Tiff"]),
    (r"(png|pngconf)\.h", [f"{KIT}/Codecs/Png"]),
    (r"zlib\.h", [f"{KIT}/Codecs/Png"]),
    (r"zimg.*", [f"{KIT}/Drawing/Scaling"]),
    (r"pixman.*", [f"{KIT}/Drawing/"]),
    (r"lcms2.*", [f"{KIT}/Drawing/Color"]),
    (r"utf8proc\.h", [f"{KIT}/Text/"]),
    (r"iconv\.h", [f"{KIT}/Text/"]),
    (r"plist/.*", [f"{KIT}/Files/PropertyList"]),
    (r"libmount/.*", [f"{KIT}/Files/MountTable"]),
    (r"syslog\.h", [f"{KIT}/Base/"]),
    (r"libudev\.h", [f"{KIT}/Devices/"]),
    (r"poppler.*", ["Helpers/pdf/"]),
    (r"(CLI|nlohmann|fmt|pango|cairo|gio)/.*", ["Tools/fileimporter/", "Examples/"]),
    (r"(pango|cairo).*\.h", ["Tools/fileimporter/", "Examples/"]),
    (r"(gtest|gmock)/.*", ["Tests/"]),
    (r"umockdev.*", ["Tests/"]),
    (r"(benchmark|libexif|exiv2|vips)/.*", ["Bench/"]),
]
# A tool, an example or a test is nobody's foundation: its own headers may name what it uses.
HEADERS_MAY = ("Tools/", "Examples/", "Tests/", "Bench/")
# Tests and benchmarks may ask a library directly, for a second opinion on what the product did with it.
SECOND_OPINION = ("Tests/", "Bench/")
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]')
TABLE = [(re.compile(pattern), homes) for pattern, homes in ROOMS]


def fault(path, header):
    """What is wrong with `path` including `header`, or None."""
    place = str(path)
    for pattern, homes in TABLE:
        if not pattern.fullmatch(header):
            continue
        if place.startswith(SECOND_OPINION) and not homes[0].startswith(SECOND_OPINION):
            return None
        if not place.startswith(tuple(homes)):
            return f"<{header}> belongs into {' or '.join(homes)}"
        if path.suffix == ".h" and not place.startswith(HEADERS_MAY):
            return f"<{header}> in a header: only .cpp files of {homes[0]} may see it"
    return None


def check():
    root = tracked.arguments(__doc__).root
    findings, count = [], 0
    for path in tracked.files(root):
        if path.suffix not in tracked.CPP:
            continue
        count += 1
        for number, line in enumerate(tracked.lines(root, path), 1):
            include = INCLUDE.match(line)
            what = fault(path, include.group(1)) if include else None
            if what:
                findings.append(f"{path}:{number}: {what}")
    return tracked.report(findings, f"{count} files")


if __name__ == "__main__":
    tracked.main(check)
