// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/ImageProperties.h"

namespace fi {

namespace {

constinit const StringConstant kPixelWidthName("PixelWidth");
constinit const StringConstant kPixelHeightName("PixelHeight");
constinit const StringConstant kDepthName("Depth");
constinit const StringConstant kColorModelName("ColorModel");
constinit const StringConstant kDPIWidthName("DPIWidth");
constinit const StringConstant kDPIHeightName("DPIHeight");
constinit const StringConstant kOrientationName("Orientation");
constinit const StringConstant kRGBName("RGB");
constinit const StringConstant kGrayName("Gray");
constinit const StringConstant kCMYKName("CMYK");
constinit const StringConstant kLabName("Lab");
constinit const StringConstant kExifDictionaryName("{Exif}");
constinit const StringConstant kTIFFDictionaryName("{TIFF}");
constinit const StringConstant kGPSDictionaryName("{GPS}");
constinit const StringConstant kColorSpaceName("ColorSpace");
constinit const StringConstant kCustomRenderedName("CustomRendered");
constinit const StringConstant kDateTimeDigitizedName("DateTimeDigitized");
constinit const StringConstant kDateTimeOriginalName("DateTimeOriginal");
constinit const StringConstant kPixelXDimensionName("PixelXDimension");
constinit const StringConstant kPixelYDimensionName("PixelYDimension");
constinit const StringConstant kDateTimeName("DateTime");
constinit const StringConstant kMakeName("Make");
constinit const StringConstant kModelName("Model");
constinit const StringConstant kSoftwareName("Software");
constinit const StringConstant kLatitudeName("Latitude");
constinit const StringConstant kLatitudeRefName("LatitudeRef");
constinit const StringConstant kLongitudeName("Longitude");
constinit const StringConstant kLongitudeRefName("LongitudeRef");

}  // namespace

constinit const CFStringRef kCGImagePropertyPixelWidth = kPixelWidthName.ref();
constinit const CFStringRef kCGImagePropertyPixelHeight = kPixelHeightName.ref();
constinit const CFStringRef kCGImagePropertyDepth = kDepthName.ref();
constinit const CFStringRef kCGImagePropertyColorModel = kColorModelName.ref();
constinit const CFStringRef kCGImagePropertyDPIWidth = kDPIWidthName.ref();
constinit const CFStringRef kCGImagePropertyDPIHeight = kDPIHeightName.ref();
constinit const CFStringRef kCGImagePropertyOrientation = kOrientationName.ref();
constinit const CFStringRef kCGImagePropertyColorModelRGB = kRGBName.ref();
constinit const CFStringRef kCGImagePropertyColorModelGray = kGrayName.ref();
constinit const CFStringRef kCGImagePropertyColorModelCMYK = kCMYKName.ref();
constinit const CFStringRef kCGImagePropertyColorModelLab = kLabName.ref();
constinit const CFStringRef kCGImagePropertyExifDictionary = kExifDictionaryName.ref();
constinit const CFStringRef kCGImagePropertyTIFFDictionary = kTIFFDictionaryName.ref();
constinit const CFStringRef kCGImagePropertyGPSDictionary = kGPSDictionaryName.ref();
constinit const CFStringRef kCGImagePropertyExifColorSpace = kColorSpaceName.ref();
constinit const CFStringRef kCGImagePropertyExifCustomRendered = kCustomRenderedName.ref();
constinit const CFStringRef kCGImagePropertyExifDateTimeDigitized = kDateTimeDigitizedName.ref();
constinit const CFStringRef kCGImagePropertyExifDateTimeOriginal = kDateTimeOriginalName.ref();
constinit const CFStringRef kCGImagePropertyExifPixelXDimension = kPixelXDimensionName.ref();
constinit const CFStringRef kCGImagePropertyExifPixelYDimension = kPixelYDimensionName.ref();
constinit const CFStringRef kCGImagePropertyTIFFDateTime = kDateTimeName.ref();
constinit const CFStringRef kCGImagePropertyTIFFMake = kMakeName.ref();
constinit const CFStringRef kCGImagePropertyTIFFModel = kModelName.ref();
constinit const CFStringRef kCGImagePropertyTIFFOrientation = kOrientationName.ref();
constinit const CFStringRef kCGImagePropertyTIFFSoftware = kSoftwareName.ref();
constinit const CFStringRef kCGImagePropertyGPSLatitude = kLatitudeName.ref();
constinit const CFStringRef kCGImagePropertyGPSLatitudeRef = kLatitudeRefName.ref();
constinit const CFStringRef kCGImagePropertyGPSLongitude = kLongitudeName.ref();
constinit const CFStringRef kCGImagePropertyGPSLongitudeRef = kLongitudeRefName.ref();

}  // namespace fi
