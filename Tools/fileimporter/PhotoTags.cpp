// SPDX-License-Identifier: Apache-2.0
#include "PhotoTags.h"

#include <array>
#include <cstdlib>
#include <memory>

#include "FileImporter/CFileImporterCocoa.h"
#include "PlatformKit/AutoreleasePool.h"

namespace fi {

namespace {

constexpr uint64_t kLargestReadWhole = uint64_t{256} << 20U;  // bytes of a TIFF file

struct TagType {
    std::string_view name;
    size_t unit;
};

constexpr std::array<TagType, 13> kTypes = {{
    {"", 0},
    {"BYTE", 1},
    {"ASCII", 1},
    {"SHORT", 2},
    {"LONG", 4},
    {"RATIONAL", 8},
    {"SBYTE", 1},
    {"UNDEFINED", 1},
    {"SSHORT", 2},
    {"SLONG", 4},
    {"SRATIONAL", 8},
    {"FLOAT", 4},
    {"DOUBLE", 8},
}};

struct Slot {
    std::string_view name;
    TagFamily family;
};

/// As CIMAGETAG numbers them.
constexpr std::array<Slot, 8> kSlots = {{
    {"IFD0", TagFamily::Image},
    {"Exif", TagFamily::Image},
    {"GPS", TagFamily::Gps},
    {"Interoperability", TagFamily::Interoperability},
    {"IFD1", TagFamily::Image},
    {"IFD1 Exif", TagFamily::Image},
    {"IFD1 GPS", TagFamily::Gps},
    {"IFD1 Interoperability", TagFamily::Interoperability},
}};

const TagType& typeOf(uint16_t type) {
    return kTypes[type < kTypes.size() ? type : 0];
}

/// Bytes of a file.
class FileBytes {
public:
    static constexpr uint8_t kWhole = 0;
    static constexpr uint8_t kHead = 1;

    FileBytes(CFURLRef url, uint8_t limit)
        : m_bytes(ReadFileAtURLCocoaWithLimit(url, &m_size, limit), &std::free) {}

    [[nodiscard]] bool areThere() const { return m_bytes != nullptr; }
    [[nodiscard]] const char* data() const { return static_cast<const char*>(m_bytes.get()); }
    [[nodiscard]] uint32_t size() const { return m_size; }

private:
    uint32_t m_size = 0;
    std::unique_ptr<void, decltype(&std::free)> m_bytes;
};

/// What one look at some bytes brought.
struct Parse {
    std::vector<TagDirectory> directories;
    int16_t format = 0;
    uint32_t error = kTagNoError;
    bool holdsTags = false;  ///< whether some were found or not
};

TagDirectory directoryOf(CIMAGETAG& reader, uint16_t slot) {
    TagDirectory directory = {kSlots[slot].name, kSlots[slot].family, {}};
    uint32_t size = 0;
    uint32_t error = kTagNoError;
    const auto release = [&reader](IMAGETAG_ARRAY* array) { reader.ReleaseArray(array); };
    const std::unique_ptr<IMAGETAG_ARRAY, decltype(release)> array(reader.GetArray(slot, &size, &error),
                                                                   release);
    if (!array) return directory;
    const IMAGETAG_INFO* const records = array->records;
    for (size_t i = 0; i < array->count; ++i)
        directory.tags.push_back(photoTag(records[i]));
    return directory;
}

Parse parse(const FileBytes& bytes) {
    CIMAGETAG reader;
    Parse result;
    uint32_t nextOffset = 0;
    uint32_t nextSize = 0;
    reader.CreateField(nullptr, bytes.data(), bytes.size(), &result.format, &nextOffset, &nextSize,
                       &result.error);
    for (size_t slot = 0; slot < kSlots.size(); ++slot) {
        TagDirectory directory = directoryOf(reader, static_cast<uint16_t>(slot));
        if (!directory.tags.empty()) result.directories.push_back(std::move(directory));
    }
    uint32_t error = kTagNoError;
    result.holdsTags = !result.directories.empty() || result.format == kImageTagFormatTIFF ||
                       reader.SearchExifMagicInAPP1(bytes.data(), bytes.size(), &error) == 1;
    return result;
}

/// A directory, or a value, lies behind the head.
bool needsWholeFile(const Parse& head, uint64_t fileSize) {
    return head.format == kImageTagFormatTIFF &&
           (head.error == kTagMoreNeeded || head.error == kTagBadData) && fileSize <= kLargestReadWhole;
}

}  // namespace

std::string_view tagTypeName(uint16_t type) {
    return typeOf(type).name;
}

size_t tagUnitSize(uint16_t type) {
    return typeOf(type).unit;
}

PhotoTag photoTag(const IMAGETAG_INFO& record) {
    PhotoTag tag = {record.tag, record.type, {}};
    if (record.count > 0 && record.value != nullptr)
        tag.value.assign(record.value, static_cast<size_t>(record.count) * tagUnitSize(record.type));
    return tag;
}

std::optional<PhotoTags> readPhotoTags(const PhotoFacts& facts) {
    if (!facts.bytes) return std::nullopt;
    const AutoreleasePool pool;
    const auto url = CFURL::createFromPath(facts.path);
    const FileBytes head(url.get(), FileBytes::kHead);
    if (!head.areThere()) return std::nullopt;
    Parse found = parse(head);
    if (needsWholeFile(found, *facts.bytes)) {
        const FileBytes whole(url.get(), FileBytes::kWhole);
        if (whole.areThere()) found = parse(whole);
    }
    const bool incomplete = found.error != kTagNoError && (found.holdsTags || facts.exif == true);
    return PhotoTags{std::move(found.directories), incomplete};
}

}  // namespace fi
