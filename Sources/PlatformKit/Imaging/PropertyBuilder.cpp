// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Imaging/PropertyBuilder.h"

#include <algorithm>
#include <utility>

#include "PlatformKit/ImageProperties.h"
#include "PlatformKit/Imaging/Failures.h"
#include "PlatformKit/Imaging/MetadataTags.h"
#include "PlatformKit/Imaging/MetadataValues.h"
#include "PlatformKit/Number.h"

namespace fi {

namespace {

using Entries = CFDictionary::Entries;

void set(Entries& entries, CFStringRef key, Ref<const NSObject> value) {
    if (value) entries.insert_or_assign(fi::retain(key), std::move(value));
}

CFStringRef nameOf(ColorModel model) {
    switch (model) {
        case ColorModel::Gray:
            return kCGImagePropertyColorModelGray;
        case ColorModel::RGB:
            return kCGImagePropertyColorModelRGB;
        case ColorModel::CMYK:
            return kCGImagePropertyColorModelCMYK;
        case ColorModel::Lab:
            return kCGImagePropertyColorModelLab;
    }
    return kCGImagePropertyColorModelRGB;
}

void setHeaderFacts(Entries& entries, const ImageHeader& header) {
    set(entries, kCGImagePropertyPixelWidth, CFNumber::create(int64_t{header.width}));
    set(entries, kCGImagePropertyPixelHeight, CFNumber::create(int64_t{header.height}));
    set(entries, kCGImagePropertyDepth, CFNumber::create(int64_t{header.bitsPerComponent}));
    set(entries, kCGImagePropertyColorModel, fi::retain(nameOf(header.model)));
    if (header.density) {
        set(entries, kCGImagePropertyDPIWidth, CFNumber::create(header.density->x));
        set(entries, kCGImagePropertyDPIHeight, CFNumber::create(header.density->y));
    }
}

const MetadataTag* findTag(std::span<const MetadataTag> table, uint16_t tag) {
    const auto found = std::lower_bound(table.begin(), table.end(), tag,
                                        [](const MetadataTag& entry, uint16_t t) { return entry.tag < t; });
    return found == table.end() || found->tag != tag ? nullptr : &*found;
}

/// Null when the directory holds none of the table's tags.
Ref<const CFDictionary> subDictionary(const std::vector<TiffField>& directory,
                                      std::span<const MetadataTag> table) {
    Entries entries;
    for (const TiffField& field : directory) {
        const MetadataTag* tag = findTag(table, field.tag);
        auto value = tag == nullptr ? nullptr : metadataValue(field, tag->kind);
        // The first of several fields with one tag counts, as everywhere.
        if (value) entries.try_emplace(CFString::create(tag->key), std::move(value));
    }
    return entries.empty() ? nullptr : CFDictionary::create(std::move(entries));
}

void setMetadata(Entries& entries, ImageReader& reader, uint32_t index) {
    if (const auto orientation = reader.orientation(index)) {
        set(entries, kCGImagePropertyOrientation, CFNumber::create(int64_t{*orientation}));
    }
    if (const auto* directory = reader.directory(index)) {
        set(entries, kCGImagePropertyTIFFDictionary, subDictionary(*directory, tiffTags()));
    }
    const TiffDirectorySet* all = reader.directories();
    // The Exif and GPS directories hang on the first picture.
    if (all == nullptr || index != 0) return;
    set(entries, kCGImagePropertyExifDictionary, subDictionary(all->exif, exifTags()));
    set(entries, kCGImagePropertyGPSDictionary, subDictionary(all->gps, gpsTags()));
}

}  // namespace

Ref<const CFDictionary> buildProperties(ImageReader& reader, uint32_t index, ImageFailure* failure) {
    const auto& header = reader.header(index);
    if (!header) {
        report(failure, header.reason());
        return nullptr;
    }
    Entries entries;
    setHeaderFacts(entries, *header);
    setMetadata(entries, reader, index);
    if (reader.lostMetadata()) {
        report(failure, readFailure());
        return nullptr;
    }
    return CFDictionary::create(std::move(entries));
}

}  // namespace fi
