// SPDX-License-Identifier: Apache-2.0
// Any bytes as a JPEG and as a TIFF file: a segment is whole, bounded, and can be read again.
#include <cstring>

#include "Contract.h"
#include "FileImporter/CIMAGETAG.h"
#include "ImageMetadata/ExifSegment.h"

using namespace fi;
using fi::fuzz::require;

namespace {

using Bytes = std::vector<uint8_t>;

/// Positions of a segment's parts.
constexpr size_t kTiffStart = 10;
constexpr size_t kDirectoryStart = kTiffStart + 8;

void requireSegment(const Bytes& segment) {
    const ByteView view(segment.data(), segment.size(), ByteOrder::Big);
    require(view.u16(0) == 0xFFE1, "a segment starts with its marker");
    require(view.u16(2) == segment.size() - 2, "the length is that of the segment");
}

void readAgain(const Bytes& segment) {
    Bytes jpeg = {0xFF, 0xD8};
    jpeg.insert(jpeg.end(), segment.begin(), segment.end());
    jpeg.insert(jpeg.end(), {0xFF, 0xD9, 0, 0});
    require(exifSegmentOfJpeg(ByteView(jpeg)) == segment, "a segment is found in a file");
    CIMAGETAG tags;
    int16_t format = 0;
    uint32_t offset = 0, size = 0, error = 0;
    (void)tags.CreateField(nullptr, reinterpret_cast<const char*>(jpeg.data()),
                           static_cast<uint32_t>(jpeg.size()), &format, &offset, &size, &error);
}

void asJpeg(ByteView file) {
    const Bytes segment = exifSegmentOfJpeg(file);
    if (segment.empty()) return;
    requireSegment(segment);
    require(segment.size() + 6 <= file.size(), "a segment lies in its file");
    readAgain(segment);
}

void asTiff(ByteView file) {
    const Bytes segment = exifSegmentOfTiff(file);
    if (segment.empty()) return;
    requireSegment(segment);
    require(segment.size() <= 65535, "a segment made of directories is bounded");
    require(std::memcmp(segment.data() + kTiffStart, file.data(), 4) == 0, "the header is the file's");
    const ByteOrder order = segment[kTiffStart] == 'M' ? ByteOrder::Big : ByteOrder::Little;
    const ByteView tiff = ByteView(segment).cut(kTiffStart).withOrder(order);
    require(tiff.u32(4) == 8U, "the first directory follows the header");
    const DirectoryExtent extent = measureDirectory(tiff.cut(8), 8);
    require(extent.span > 0, "values stand behind their directory");
    require(tiff.u32(8 + extent.size) == 0U, "there is no second page");
    require(!extent.exif || extent.exif->offset >= 8 + extent.size + 4, "the Exif directory is behind");
    Bytes moved(segment.begin() + kDirectoryStart, segment.end());
    const Bytes before = moved;
    moveDirectory(moved, order, 1000);
    moveDirectory(moved, order, -1000);
    require(moved == before, "moving there and back changes nothing");
    readAgain(segment);
    (void)exifSegmentOfTiff(tiff);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    asJpeg(ByteView(data, size));
    asTiff(ByteView(data, size));
    return 0;
}
