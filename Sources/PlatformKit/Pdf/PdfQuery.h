// SPDX-License-Identifier: Apache-2.0
// Which PDF files count as photos.
#pragma once

namespace fi {

/// Answers whether the file at a path is a PDF that the library lists and renders.
using PdfQuery = bool (*)(const char* path);

/// Asks the installed query. Without one the answer is no: this version renders no PDF.
[[nodiscard]] bool isListedPdf(const char* path);

/// Installs another query and returns the one before; null brings the default back. Any thread.
PdfQuery setPdfQuery(PdfQuery query);

}  // namespace fi
