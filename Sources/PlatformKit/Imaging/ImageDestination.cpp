// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/ImageDestination.h"

#include <strings.h>

#include <array>
#include <optional>
#include <string>

#include "PlatformKit/Codecs/JpegWriter.h"
#include "PlatformKit/Codecs/TiffWriter.h"
#include "PlatformKit/Imaging/Failures.h"
#include "PlatformKit/Imaging/ImagePixels.h"
#include "PlatformKit/Imaging/ReplacementFile.h"

namespace fi {

namespace {

struct WriteOrder {
    const PixelBuffer& pixels;
    double quality;
    std::optional<Density> density;
};

using Writer = std::optional<CodecFailure> (*)(const WriteOrder& order, const ByteSink& sink);

std::optional<CodecFailure> writeJpeg(const WriteOrder& order, const ByteSink& sink) {
    return encodeJpeg(order.pixels, {order.quality, order.density}, sink);
}

std::optional<CodecFailure> writeTiff(const WriteOrder& order, const ByteSink& sink) {
    TiffOptions options;
    options.density = order.density;
    const auto bytes = encodeTiff(order.pixels, options);
    if (!bytes) return bytes.reason();
    if (sink(*bytes)) return std::nullopt;
    return CodecFailure{CodecError::WriteFailed, "The file cannot be written."};
}

struct WritableType {
    const char* name;
    Writer writer;
};

constexpr std::array kWritableTypes = {
    WritableType{"public.jpeg", writeJpeg},
    WritableType{"public.tiff", writeTiff},
};

Writer writerFor(CFStringRef type) {
    for (const WritableType& candidate : kWritableTypes) {
        if (type != nullptr && strcasecmp(type->c_str(), candidate.name) == 0) return candidate.writer;
    }
    return nullptr;
}

std::optional<Density> densityFor(const CGImage& image, const ImageWriteOptions& options) {
    const bool chosen = options.density.width > 0 && options.density.height > 0;
    const NSSize density = chosen ? options.density : image.density();
    if (!(density.width > 0 && density.height > 0)) return std::nullopt;
    return Density{density.width, density.height};
}

/// `text` and, behind a colon, the system's words where it said why.
void reportWriting(ImageFailure* failure, std::string text, const std::string& reason) {
    if (!reason.empty()) text += ": " + reason;
    report(failure, ImageError::WriteFailed, text + ".");
}

bool writeThrough(ReplacementFile& file, Writer writer, const WriteOrder& order, ImageFailure* failure) {
    const auto problem = writer(order, [&](std::span<const uint8_t> bytes) { return file.write(bytes); });
    if (!problem && file.commit()) return true;
    if (problem && file.reason().empty()) {
        report(failure, *problem);
    } else {
        reportWriting(failure, "The file cannot be written", file.reason());
    }
    return false;
}

}  // namespace

bool writeImage(const CGImage& image, CFURLRef url, CFStringRef type, const ImageWriteOptions& options,
                ImageFailure* failure) {
    return withoutExceptions(failure, [&]() -> bool {
        const Writer writer = writerFor(type);
        if (writer == nullptr) {
            report(failure, ImageError::Unsupported, "Files of this type are not written.");
            return false;
        }
        const CFStringRef path = url == nullptr ? nullptr : url->path();
        std::optional<ReplacementFile> file;
        if (path != nullptr) file.emplace(path->c_str());
        if (!file || !file->isOpen()) {
            reportWriting(failure, "No file can be written there", file ? file->reason() : "");
            return false;
        }
        const WriteOrder order{ImagePixels::of(image), options.quality, densityFor(image, options)};
        return writeThrough(*file, writer, order, failure);
    });
}

}  // namespace fi
