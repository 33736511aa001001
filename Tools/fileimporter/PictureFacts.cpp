// SPDX-License-Identifier: Apache-2.0
#include "PictureFacts.h"

#include <cctype>
#include <utility>

#include "FileImporter/ExifFunctions.h"
#include "PlatformKit/AutoreleasePool.h"
#include "PlatformKit/ImageProperties.h"
#include "PlatformKit/ImageSource.h"
#include "PlatformKit/Number.h"

namespace fi {

namespace {

std::optional<int64_t> numberOf(const CFDictionary& properties, CFStringRef key) {
    const auto value = properties.copyValue(key->view());
    const auto* number = dynamic_cast<const CFNumber*>(value.get());
    return number != nullptr ? std::optional(number->int64Value()) : std::nullopt;
}

bool isLower(char c) {
    return std::islower(static_cast<unsigned char>(c)) != 0;
}

/// A sentence without the capital at its start and the full stop at its end.
std::string asClause(std::string_view sentence) {
    if (sentence.ends_with('.')) sentence.remove_suffix(1);
    std::string clause(sentence);
    // An abbreviation such as "JPEG" keeps its capitals.
    if (clause.size() > 1 && (isLower(clause[1]) || clause[1] == ' '))
        clause[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(clause[0])));
    return clause;
}

/// Whatever is no fault of the picture's counts as a read that failed.
OSErr codeOf(ImageError error) {
    switch (error) {
        case ImageError::None:
            return kNoErr;
        case ImageError::NotAnImage:
        case ImageError::NoSuchImage:
        case ImageError::Damaged:
        case ImageError::Unsupported:
        case ImageError::LimitExceeded:
            return kUnreadableImageErr;
        case ImageError::WriteFailed:
            return kGenericErr;
        default:
            return kMemFullErr;
    }
}

}  // namespace

PhotoFacts readPhotoFacts(const std::string& path) {
    const AutoreleasePool pool;
    PhotoFacts facts = readFileFacts(path);
    if (facts.error) return facts;
    facts.date = photoDate(facts);
    ImageFailure failure;
    const auto source = ImageSource::open(CFURL::createFromPath(path).get(), &failure);
    const auto properties = source ? source->copyProperties(0, &failure) : nullptr;
    if (properties) {
        addPictureFacts(facts, *properties);
    } else {
        facts.error = readError(path, failure);
        facts.ofUnknownKind = failure.code == ImageError::NotAnImage;
    }
    return facts;
}

std::optional<DateTimeRec> photoDate(const PhotoFacts& facts) {
    tCacheInfo info{};
    const OSErr code = ReadExifTagForZebFileManager(CFURL::createFromPath(facts.path).get(), &info);
    if (code != kNoErr || info.date == DateTimeRec{}) return facts.modified;
    return info.date;
}

void addPictureFacts(PhotoFacts& facts, const CFDictionary& properties) {
    facts.orientation = numberOf(properties, kCGImagePropertyOrientation);
    facts.width = numberOf(properties, kCGImagePropertyPixelWidth);
    facts.height = numberOf(properties, kCGImagePropertyPixelHeight);
    facts.exif = static_cast<bool>(properties.copyValue(kCGImagePropertyExifDictionary->view()));
}

PhotoError photoError(const ImageFailure& failure) {
    const OSErr code = codeOf(failure.code);
    return {code, failure.text ? asClause(failure.text->view()) : resultCodeText(code)};
}

PhotoError readError(const std::string& path, const ImageFailure& failure) {
    if (failure.code == ImageError::CannotOpen) {
        if (auto fault = faultOfOpening(path)) return *std::move(fault);
    }
    return photoError(failure);
}

PhotoError incompleteError() {
    return {kUnreadableImageErr, "a part of the picture is missing"};
}

}  // namespace fi
