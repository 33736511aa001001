// SPDX-License-Identifier: Apache-2.0
// Uses objects of the installed library and the whole of its headers; exit status 0 when they work.
#include <FileImporter/FileImporter.h>
#include <PlatformKit/URL.h>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const auto url = fi::CFURL::createFromPath(argv[1]);
    if (!url) return 1;
    const auto name = url->copyLastPathComponent();
    return name && name->length() > 0 ? 0 : 1;
}
