// SPDX-License-Identifier: Apache-2.0
#include "Foundation/PdfFile.h"

#include "PlatformKit/Pdf/PdfQuery.h"

namespace fi {

bool isListedPdfAt(CFURLRef url) {
    char path[2048] = {};
    if (url == nullptr || !url->fileSystemRepresentation(path, sizeof path) || path[0] == '\0')
        return false;
    return isListedPdf(path);
}

}  // namespace fi
