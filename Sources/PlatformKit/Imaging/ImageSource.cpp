// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/ImageSource.h"

#include <utility>

#include "PlatformKit/Files/FileSource.h"
#include "PlatformKit/Imaging/Failures.h"
#include "PlatformKit/Imaging/PropertyBuilder.h"
#include "PlatformKit/Imaging/SourceReader.h"

namespace fi {

namespace {

/// The bytes of a data object, kept alive by its reference.
class DataSource final : public ByteSource {
public:
    explicit DataSource(CFDataRef data) : m_data(fi::retain(data)), m_bytes(data->bytes()) {}

    [[nodiscard]] uint64_t size() const override { return m_bytes.size(); }
    [[nodiscard]] size_t read(uint64_t offset, std::span<uint8_t> out) override {
        return m_bytes.read(offset, out);
    }

private:
    Ref<const CFData> m_data;
    MemorySource m_bytes;
};

}  // namespace

ImageSource::ImageSource(std::unique_ptr<ImageReader> reader) : m_reader(std::move(reader)) {}
ImageSource::~ImageSource() = default;

Ref<ImageSource> SourceReader::makeSource(std::unique_ptr<ByteSource> bytes, ImageFailure* failure) {
    const ImageFormat* format = recognisedFormat(*bytes);
    if (format == nullptr && bytes->failed()) {
        report(failure, readFailure());
        return nullptr;
    }
    if (format == nullptr) {
        report(failure, ImageError::NotAnImage, "The content is not that of a known kind of picture.");
        return nullptr;
    }
    return adopt(new ImageSource(std::make_unique<ImageReader>(std::move(bytes), *format)));
}

Ref<ImageSource> ImageSource::open(CFURLRef url, ImageFailure* failure) {
    return withoutExceptions(failure, [&]() -> Ref<ImageSource> {
        const CFStringRef path = url == nullptr ? nullptr : url->path();
        auto file = path == nullptr ? nullptr : openFileSource(path->c_str());
        if (!file) {
            report(failure, ImageError::CannotOpen, "The file cannot be opened for reading.");
            return nullptr;
        }
        return SourceReader::makeSource(std::move(file), failure);
    });
}

Ref<ImageSource> ImageSource::openData(CFDataRef data, ImageFailure* failure) {
    return withoutExceptions(failure, [&]() -> Ref<ImageSource> {
        if (data == nullptr) {
            report(failure, ImageError::CannotOpen, "There are no bytes to read.");
            return nullptr;
        }
        return SourceReader::makeSource(std::make_unique<DataSource>(data), failure);
    });
}

uint32_t ImageSource::count() const {
    return withoutExceptions(nullptr, [&]() -> uint32_t { return m_reader->count(); });
}

Ref<const CFDictionary> ImageSource::copyProperties(uint32_t index, ImageFailure* failure) const {
    return withoutExceptions(failure, [&]() -> Ref<const CFDictionary> {
        if (!m_reader->has(index, failure)) return nullptr;
        return buildProperties(*m_reader, index, failure);
    });
}

Ref<const CGImage> ImageSource::createImage(uint32_t index, ImageFailure* failure) const {
    return createImage(index, 0, 0, failure);
}

Ref<const CGImage> ImageSource::createImage(uint32_t index, uint32_t atLeastWidth, uint32_t atLeastHeight,
                                            ImageFailure* failure) const {
    return withoutExceptions(failure, [&]() -> Ref<const CGImage> {
        if (!m_reader->has(index, failure)) return nullptr;
        auto picture = m_reader->decode(index, {atLeastWidth, atLeastHeight});
        if (!picture) {
            report(failure, picture.reason());
            return nullptr;
        }
        return ImagePixels::makeImage(std::move(picture->pixels), std::move(picture->traits));
    });
}

}  // namespace fi
