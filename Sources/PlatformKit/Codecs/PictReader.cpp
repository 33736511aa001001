// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Codecs/PictReader.h"

#include <new>

#include "PlatformKit/Base/CheckedMath.h"
#include "PlatformKit/Codecs/PictPainter.h"
#include "PlatformKit/Limits.h"

namespace fi {

namespace {

Failure<CodecFailure> fail(CodecError code, const char* text) {
    return Failure{CodecFailure{code, text}};
}

std::optional<CodecFailure> checkLimits(const PictHead& head, PixelLayout layout) {
    const DecodeLimits& limits = decodeLimits();
    const auto tooMuch = [](const char* text) { return CodecFailure{CodecError::LimitExceeded, text}; };
    if (head.width > limits.maximumSide || head.height > limits.maximumSide) {
        return tooMuch("A side of the picture is longer than is allowed.");
    }
    if (uint64_t{head.width} * head.height > limits.maximumPixels) {
        return tooMuch("The picture has more pixels than is allowed.");
    }
    const auto rowBytes = checkedRoundUp(bytesOfRow(head.width, layout), 64);
    const auto bytes = rowBytes ? checkedMultiply<uint64_t>(*rowBytes, head.height) : std::nullopt;
    if (!bytes || *bytes > limits.maximumBytes) {
        return tooMuch("The picture needs more memory than is allowed.");
    }
    return std::nullopt;
}

/// Why there is nothing to see.
Failure<CodecFailure> failWithoutPixels(const PictContents& contents, const ByteSource& source) {
    if (source.failed()) return fail(CodecError::ReadFailed, "The file cannot be read.");
    if (contents.hasOtherImages) {
        return fail(CodecError::Unsupported, "The picture's image has a compression that is not read.");
    }
    if (contents.ending == PictWalk::Ending::Broken) {
        return fail(CodecError::Damaged, "The file is damaged in front of its pixels.");
    }
    if (contents.hasShapes) {
        return fail(CodecError::Unsupported,
                    "The picture consists of lines, texts and shapes only, which are not drawn.");
    }
    return fail(CodecError::Unsupported, "The picture is empty.");
}

CodecResult<DecodedPicture> decode(ByteSource& source) {
    const auto head = readPictHead(source);
    if (!head) return head.failure();
    const PictContents contents = surveyPict(source, *head);
    if (!contents.hasPixels) return failWithoutPixels(contents, source);
    if (auto refusal = checkLimits(*head, contents.layout)) return Failure{*refusal};
    auto canvas = PictCanvas::create(head->plane(), head->width, head->height, contents.layout);
    if (!canvas) return fail(CodecError::NoMemory, "There is not enough memory for the picture.");
    PictPainter painter(source, *canvas);
    PictWalk walk(source, *head, painter);
    const PictWalk::Ending ending = walk.run();
    if (!painter.hasDrawn()) {
        if (source.failed()) return fail(CodecError::ReadFailed, "The file cannot be read.");
        if (painter.failure()) return Failure{*painter.failure()};
        if (ending == PictWalk::Ending::Broken || painter.isDamaged()) {
            return fail(CodecError::Damaged, "None of the picture's pixels can be read.");
        }
    }
    const bool damaged = painter.isDamaged() || ending == PictWalk::Ending::Broken;
    return DecodedPicture{std::move(canvas->pixels()), damaged, walk.hasShapes() || walk.hasOtherImages()};
}

}  // namespace

bool looksLikePict(ByteView head) {
    return findPict(head).has_value();
}

CodecResult<ImageHeader> readPictHeader(ByteSource& source) {
    try {
        const auto head = readPictHead(source);
        if (!head) return head.failure();
        const PictContents contents = surveyPict(source, *head);
        ImageHeader header;
        header.width = head->width;
        header.height = head->height;
        header.density = head->density;
        const bool isGray = contents.layout != PixelLayout::RGBX32;
        header.model = isGray ? ColorModel::Gray : ColorModel::RGB;
        header.components = isGray ? 1 : 3;
        header.bitsPerComponent = contents.layout == PixelLayout::Gray1 ? 1 : 8;
        return header;
    } catch (const std::bad_alloc&) {
        return fail(CodecError::NoMemory, "Out of memory.");
    }
}

CodecResult<DecodedPicture> decodePict(ByteSource& source, SizeFloor) {
    try {
        return decode(source);
    } catch (const std::bad_alloc&) {
        return fail(CodecError::NoMemory, "Out of memory.");
    }
}

}  // namespace fi
