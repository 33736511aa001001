// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Imaging/ImageReader.h"

#include <utility>

#include "PlatformKit/Drawing/PlainPixels.h"
#include "PlatformKit/Imaging/Failures.h"

namespace fi {

namespace {

constexpr uint16_t kOrientationTag = 0x0112;

NSSize sizeOf(const std::optional<Density>& density) {
    return density ? NSSize{density->x, density->y} : NSSize{};
}

Ref<const CFData> profileData(const std::vector<uint8_t>& profile) {
    return profile.empty() ? nullptr : CFData::create(profile);
}

}  // namespace

CodecFailure readFailure() {
    return CodecFailure{CodecError::ReadFailed, "Reading the file failed."};
}

CodecResult<ImageHeader> ImageReader::readHeader(uint32_t index) {
    const bool failedBefore = m_source->failed();
    auto header = m_format.readHeader(*m_source, index);
    // A header that was read while the source failed may be whole but for what matters, a profile say.
    const bool harmed = !header || !failedBefore;
    if (m_source->failed() && harmed) return Failure{readFailure()};
    return header;
}

const CodecResult<ImageHeader>& ImageReader::header(uint32_t index) {
    if (!m_first) m_first.emplace(readHeader(0));
    if (index == 0) return *m_first;
    if (!m_other || m_other->index != index) {
        m_other.emplace(IndexedHeader{index, readHeader(index)});
    }
    return m_other->header;
}

uint32_t ImageReader::count() {
    const auto& first = header(0);
    return first ? first->pages : 0;
}

bool ImageReader::has(uint32_t index, ImageFailure* failure) {
    const auto& first = header(0);
    if (!first) {
        report(failure, first.reason());
    } else if (index >= first->pages) {
        report(failure, ImageError::NoSuchImage, "The file holds fewer pictures.");
    }
    return first && index < first->pages;
}

const TiffDirectorySet* ImageReader::directories() {
    if (!m_triedDirectories) {
        m_triedDirectories = true;
        const auto& first = header(0);
        const bool failedBefore = m_source->failed();
        if (first) m_directories = m_format.readDirectories(*m_source, *first);
        m_lostMetadata = m_source->failed() && !failedBefore;
    }
    return m_directories ? &*m_directories : nullptr;
}

const std::vector<TiffField>* ImageReader::directory(uint32_t index) {
    const TiffDirectorySet* set = directories();
    if (set == nullptr || index > 1) return nullptr;
    return index == 0 ? &set->ifd0 : &set->ifd1;
}

std::optional<uint16_t> ImageReader::orientation(uint32_t index) {
    const auto* fields = directory(index);
    const TiffField* field = fields == nullptr ? nullptr : findField(*fields, kOrientationTag);
    const auto value = field == nullptr ? std::nullopt : field->asUnsigned();
    if (!value || *value < 1 || *value > 8) return std::nullopt;
    return static_cast<uint16_t>(*value);
}

CodecResult<ReadPicture> ImageReader::decode(uint32_t index, SizeFloor floor) {
    const auto& facts = header(index);
    if (!facts) return facts.failure();
    auto decoded = m_format.decode(*m_source, index, floor);
    if (m_source->failed() && (!decoded || decoded->damaged)) return Failure{readFailure()};
    if (!decoded) return decoded.failure();
    auto pixels = plainPixels(std::move(decoded->pixels));
    if (!pixels)
        return Failure{CodecFailure{CodecError::NoMemory, "There is not enough memory for the picture."}};
    ReadPicture picture;
    picture.traits.colorSpace =
        pixels->layout() == PixelLayout::Gray8 ? CGColorSpace::DeviceGray : CGColorSpace::DeviceRGB;
    picture.traits.density = sizeOf(facts->density);
    picture.traits.tiffCompression = facts->tiffCompression;
    picture.traits.iccProfile = profileData(facts->iccProfile);
    picture.traits.damaged = decoded->damaged;
    picture.pixels = std::move(*pixels);
    return picture;
}

}  // namespace fi
