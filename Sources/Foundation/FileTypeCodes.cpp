// SPDX-License-Identifier: Apache-2.0
#include "FileImporter/FileTypeCodes.h"

namespace fi {

namespace {

constinit StringConstant s_jpeg("public.jpeg");
constinit StringConstant s_tiff("public.tiff");
constinit StringConstant s_pict("com.apple.pict");
constinit StringConstant s_pdf("com.adobe.pdf");
constinit StringConstant s_image("public.image");

}  // namespace

constinit const CFStringRef kUTTypeJPEG = s_jpeg.ref();
constinit const CFStringRef kUTTypeTIFF = s_tiff.ref();
constinit const CFStringRef kUTTypePICT = s_pict.ref();
constinit const CFStringRef kUTTypePDF = s_pdf.ref();
constinit const CFStringRef kUTTypeImage = s_image.ref();

}  // namespace fi
