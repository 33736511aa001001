// SPDX-License-Identifier: Apache-2.0
// The facts of an ordinary photo, for little more than what opening it and reading a page cost.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "Foundation/FileTypes.h"
#include "Foundation/HeadRead.h"
#include "ImageMetadata/FactReaders.h"
#include "ImageMetadata/FactTags.h"
#include "ImageMetadata/FileStamp.h"
#include "ImageMetadata/TagWalk.h"
#include "PlatformKit/Base/Calendar.h"
#include "PlatformKit/Base/Faults.h"
#include "PlatformKit/Files/FileSource.h"

namespace fi {

namespace {

/// Of the directories that cameras write, all lie in these bytes, or one of them far behind.
constexpr size_t kFirstStep = 3072;
/// Longer than any value that a fact is made of has a reason to be.
constexpr uint32_t kLongestValue = 64;

constexpr TagFilter kFactTags = {
    {kSlotOfIFD0, kMakerTag},           {kSlotOfIFD0, kOrientationTag},
    {kSlotOfExif, kExifVersionTag},     {kSlotOfExif, kDateOriginalTag},
    {kSlotOfExif, kDateDigitizedTag},   {kSlotOfExif, kPixelXDimensionTag},
    {kSlotOfExif, kPixelYDimensionTag}, {kSlotOfExif, kXResolutionTag},
    {kSlotOfExif, kYResolutionTag},     {kSlotOfExif, kColorSpaceTag},
};

/// Keeps the first of each tag that facts are made of.
class KeptTags final : public TagSink, public FactTags {
public:
    KeptTags() : TagSink(kFactTags) {}

    /// False once there was a tag that is beyond the ordinary.
    [[nodiscard]] bool allFitted() const { return m_allFitted; }

    [[nodiscard]] uint32_t take(uint16_t slot, const FoundTag& found) override {
        Kept* kept = placeOf(slot, found.tag());
        if (kept == nullptr || kept->isThere) return kTagNoError;
        keep(*kept, found);
        return m_allFitted ? kTagNoError : kTagNoMemory;
    }

    void release(int32_t from) override {
        for (Kept& kept : m_ofIFD0)
            kept.isThere = kept.isThere && from > kSlotOfIFD0;
        for (Kept& kept : m_ofExif)
            kept.isThere = kept.isThere && from > kSlotOfExif;
    }

    [[nodiscard]] const IMAGETAG_INFO* find(uint16_t slot, uint16_t tag) override {
        const Kept* kept = placeOf(slot, tag);
        return kept != nullptr && kept->isThere ? &kept->info : nullptr;
    }

private:
    struct Kept {
        bool isThere = false;
        IMAGETAG_INFO info;
        char value[kLongestValue];
    };

    /// Of the version its presence is the fact; a maker's text is never looked at.
    static bool isAskedForValue(const FoundTag& found) {
        return found.tag() != kExifVersionTag && !(found.tag() == kMakerTag && found.type() == kTagASCII);
    }

    void keep(Kept& kept, const FoundTag& found) {
        kept.info = {found.tag(), found.type(), kImageTagKindPlain, found.count(), kept.value, {}};
        kept.isThere = true;
        if (isAskedForValue(found)) m_allFitted = found.size() <= kLongestValue && found.copyTo(kept.value);
    }

    Kept* placeOf(uint16_t slot, uint16_t tag) {
        if (slot == kSlotOfIFD0)
            return tag == kMakerTag ? &m_ofIFD0[0] : tag == kOrientationTag ? &m_ofIFD0[1] : nullptr;
        if (slot != kSlotOfExif) return nullptr;
        switch (tag) {
            case kExifVersionTag:
                return &m_ofExif[0];
            case kDateOriginalTag:
                return &m_ofExif[1];
            case kDateDigitizedTag:
                return &m_ofExif[2];
            case kPixelXDimensionTag:
                return &m_ofExif[3];
            case kPixelYDimensionTag:
                return &m_ofExif[4];
            case kXResolutionTag:
                return &m_ofExif[5];
            case kYResolutionTag:
                return &m_ofExif[6];
            case kColorSpaceTag:
                return &m_ofExif[7];
            default:
                return nullptr;
        }
    }

    Kept m_ofIFD0[2];
    Kept m_ofExif[8];
    bool m_allFitted = true;
};

bool readTags(ByteSource& source, KeptTags& tags) {
    std::array<uint8_t, kFirstStep> first;
    TagData data(source, std::min<uint64_t>(source.size(), kHeadBytes), first);
    IMAGETAG_POSITION position;
    (void)walkHead(position, data, tags);  // what came before an error counts
    return tags.allFitted() && !data.cameShort();
}

bool isOrdinary(const struct stat& status) {
    return S_ISREG(status.st_mode) && status.st_size > 0 && status.st_size <= UINT32_MAX;
}

}  // namespace

bool readFactsQuickly(CFStringRef path, ExifInformation& info) {
    if (path == nullptr || isQALFile(path) || faultHappens(Fault::ShortRead, path->view())) return false;
    const int descriptor = open(path->c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
    if (descriptor < 0) return false;
    struct stat status {};
    const bool known = fstat(descriptor, &status) == 0;
    FileSource source(descriptor, static_cast<uint64_t>(status.st_size));
    KeptTags tags;
    if (!known || !isOrdinary(status) || !readTags(source, tags)) return false;
    info = factsOf(tags);
    // The file is no link: its own date is the one that links lead to.
    if (info.date == DateTimeRec{}) info.date = localDate(status.st_mtim.tv_sec, WeekDays::FromZero);
    turnUpright(info);
    info.modificationTime = modificationTimeOf(status);
    return true;
}

}  // namespace fi
