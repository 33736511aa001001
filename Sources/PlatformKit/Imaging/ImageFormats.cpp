// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Imaging/ImageFormats.h"

#include <algorithm>
#include <array>

#include "PlatformKit/Codecs/JpegReader.h"
#include "PlatformKit/Codecs/TiffReader.h"

namespace fi {

namespace {

constexpr size_t kHeadBytes = 16;  // more than any format needs to be recognised

CodecResult<ImageHeader> readJpegHeaderAt(ByteSource& source, uint32_t) {
    return readJpegHeader(source);
}

CodecResult<DecodedPicture> decodeJpegAt(ByteSource& source, uint32_t, SizeFloor floor) {
    return decodeJpeg(source, floor);
}

std::optional<TiffDirectorySet> readJpegDirectories(ByteSource&, const ImageHeader& header) {
    if (header.exifBlock.empty()) return std::nullopt;
    MemorySource exif(header.exifBlock);
    return readTiffDirectories(exif);
}

std::optional<TiffDirectorySet> readTiffFileDirectories(ByteSource& source, const ImageHeader&) {
    return readTiffDirectories(source);
}

constexpr std::array kFormats = {
    ImageFormat{looksLikeJpeg, readJpegHeaderAt, decodeJpegAt, readJpegDirectories},
    ImageFormat{looksLikeTiff, readTiffHeader, decodeTiff, readTiffFileDirectories},
};

}  // namespace

const ImageFormat* recognisedFormat(ByteSource& source) {
    std::array<uint8_t, kHeadBytes> head = {};
    const ByteView view(head.data(), source.read(0, head));
    const auto* found = std::find_if(kFormats.begin(), kFormats.end(),
                                     [&](const ImageFormat& format) { return format.recognises(view); });
    return found == kFormats.end() ? nullptr : found;
}

}  // namespace fi
