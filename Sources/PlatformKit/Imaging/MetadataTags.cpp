// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Imaging/MetadataTags.h"

#include <array>

namespace fi {

namespace {

using enum MetadataKind;

constexpr auto kTiffTags = std::to_array<MetadataTag>({
    {0x0103, "Compression", Integer},
    {0x0106, "PhotometricInterpretation", Integer},
    {0x010D, "DocumentName", Text},
    {0x010E, "ImageDescription", Text},
    {0x010F, "Make", Text},
    {0x0110, "Model", Text},
    {0x0112, "Orientation", Integer},
    {0x011A, "XResolution", Real},
    {0x011B, "YResolution", Real},
    {0x0128, "ResolutionUnit", Integer},
    {0x0131, "Software", Text},
    {0x0132, "DateTime", Text},
    {0x013B, "Artist", Text},
    {0x013C, "HostComputer", Text},
    {0x013E, "WhitePoint", Real},
    {0x013F, "PrimaryChromaticities", Real},
    {0x8298, "Copyright", Text},
});

constexpr auto kExifTags = std::to_array<MetadataTag>({
    {0x829A, "ExposureTime", Real},
    {0x829D, "FNumber", Real},
    {0x8822, "ExposureProgram", Integer},
    {0x8824, "SpectralSensitivity", Text},
    {0x8827, "ISOSpeedRatings", Integer},
    {0x8828, "OECF", Bytes},
    {0x8830, "SensitivityType", Integer},
    {0x8831, "StandardOutputSensitivity", Integer},
    {0x8832, "RecommendedExposureIndex", Integer},
    {0x8833, "ISOSpeed", Integer},
    {0x8834, "ISOSpeedLatitudeyyy", Integer},
    {0x8835, "ISOSpeedLatitudezzz", Integer},
    {0x9000, "ExifVersion", Bytes},
    {0x9003, "DateTimeOriginal", Text},
    {0x9004, "DateTimeDigitized", Text},
    {0x9010, "OffsetTime", Text},
    {0x9011, "OffsetTimeOriginal", Text},
    {0x9012, "OffsetTimeDigitized", Text},
    {0x9101, "ComponentsConfiguration", Bytes},
    {0x9102, "CompressedBitsPerPixel", Real},
    {0x9201, "ShutterSpeedValue", Real},
    {0x9202, "ApertureValue", Real},
    {0x9203, "BrightnessValue", Real},
    {0x9204, "ExposureBiasValue", Real},
    {0x9205, "MaxApertureValue", Real},
    {0x9206, "SubjectDistance", Real},
    {0x9207, "MeteringMode", Integer},
    {0x9208, "LightSource", Integer},
    {0x9209, "Flash", Integer},
    {0x920A, "FocalLength", Real},
    {0x9214, "SubjectArea", Integer},
    {0x9286, "UserComment", Bytes},
    {0x9290, "SubsecTime", Text},
    {0x9291, "SubsecTimeOriginal", Text},
    {0x9292, "SubsecTimeDigitized", Text},
    {0xA000, "FlashPixVersion", Bytes},
    {0xA001, "ColorSpace", Integer},
    {0xA002, "PixelXDimension", Integer},
    {0xA003, "PixelYDimension", Integer},
    {0xA004, "RelatedSoundFile", Text},
    {0xA20B, "FlashEnergy", Real},
    {0xA20C, "SpatialFrequencyResponse", Bytes},
    {0xA20E, "FocalPlaneXResolution", Real},
    {0xA20F, "FocalPlaneYResolution", Real},
    {0xA210, "FocalPlaneResolutionUnit", Integer},
    {0xA214, "SubjectLocation", Integer},
    {0xA215, "ExposureIndex", Real},
    {0xA217, "SensingMethod", Integer},
    {0xA300, "FileSource", Bytes},
    {0xA301, "SceneType", Bytes},
    {0xA302, "CFAPattern", Bytes},
    {0xA401, "CustomRendered", Integer},
    {0xA402, "ExposureMode", Integer},
    {0xA403, "WhiteBalance", Integer},
    {0xA404, "DigitalZoomRatio", Real},
    {0xA405, "FocalLenIn35mmFilm", Integer},
    {0xA406, "SceneCaptureType", Integer},
    {0xA407, "GainControl", Integer},
    {0xA408, "Contrast", Integer},
    {0xA409, "Saturation", Integer},
    {0xA40A, "Sharpness", Integer},
    {0xA40B, "DeviceSettingDescription", Bytes},
    {0xA40C, "SubjectDistRange", Integer},
    {0xA420, "ImageUniqueID", Text},
    {0xA430, "CameraOwnerName", Text},
    {0xA431, "BodySerialNumber", Text},
    {0xA432, "LensSpecification", Real},
    {0xA433, "LensMake", Text},
    {0xA434, "LensModel", Text},
    {0xA435, "LensSerialNumber", Text},
    {0xA460, "CompositeImage", Integer},
    {0xA500, "Gamma", Real},
});

constexpr auto kGpsTags = std::to_array<MetadataTag>({
    {0x0000, "GPSVersion", Integer},    {0x0001, "LatitudeRef", Text},
    {0x0002, "Latitude", Degrees},      {0x0003, "LongitudeRef", Text},
    {0x0004, "Longitude", Degrees},     {0x0005, "AltitudeRef", Integer},
    {0x0006, "Altitude", Real},         {0x0007, "TimeStamp", ClockTime},
    {0x0008, "Satellites", Text},       {0x0009, "Status", Text},
    {0x000A, "MeasureMode", Text},      {0x000B, "DOP", Real},
    {0x000C, "SpeedRef", Text},         {0x000D, "Speed", Real},
    {0x000E, "TrackRef", Text},         {0x000F, "Track", Real},
    {0x0010, "ImgDirectionRef", Text},  {0x0011, "ImgDirection", Real},
    {0x0012, "MapDatum", Text},         {0x0013, "DestLatitudeRef", Text},
    {0x0014, "DestLatitude", Degrees},  {0x0015, "DestLongitudeRef", Text},
    {0x0016, "DestLongitude", Degrees}, {0x0017, "DestBearingRef", Text},
    {0x0018, "DestBearing", Real},      {0x0019, "DestDistanceRef", Text},
    {0x001A, "DestDistance", Real},     {0x001B, "ProcessingMethod", Bytes},
    {0x001C, "AreaInformation", Bytes}, {0x001D, "DateStamp", Text},
    {0x001E, "Differental", Integer},   {0x001F, "HPositioningError", Real},
});

}  // namespace

std::span<const MetadataTag> tiffTags() {
    return kTiffTags;
}
std::span<const MetadataTag> exifTags() {
    return kExifTags;
}
std::span<const MetadataTag> gpsTags() {
    return kGpsTags;
}

}  // namespace fi
