// SPDX-License-Identifier: Apache-2.0
// The way through a file's directories, and the rules (some of them odd, all relied on) by which it goes.
// Who walks decides what to keep. Positions are those of the file throughout.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>

#include "FileImporter/CIMAGETAG.h"
#include "ImageMetadata/FoundTag.h"
#include "ImageMetadata/TagData.h"

namespace fi {

/// Bytes that are asked for when a directory is not in hand.
inline constexpr uint32_t kStretchWanted = 20480;

/// The tags that a sink has a use for. It may let others through, but stops none of those.
class TagFilter {
public:
    struct Wanted {
        uint16_t slot;
        uint16_t tag;
    };

    /// Everything.
    constexpr TagFilter() {
        for (uint64_t& tags : m_tags)
            tags = ~uint64_t{0};
    }
    constexpr TagFilter(std::initializer_list<Wanted> wanted) {
        for (const auto& [slot, tag] : wanted)
            m_tags[slot] |= bitOf(tag);
    }
    [[nodiscard]] constexpr bool lets(uint32_t slot, uint16_t tag) const {
        return (m_tags[slot] & bitOf(tag)) != 0;
    }
    /// The bits of all tags that it lets through.
    [[nodiscard]] constexpr uint64_t bitsOf(uint32_t slot) const { return m_tags[slot]; }
    [[nodiscard]] static constexpr uint64_t bitOf(uint16_t tag) { return uint64_t{1} << (tag % 64U); }

private:
    uint64_t m_tags[8] = {};  ///< for each slot, a bit for tags with the same remainder
};
inline constexpr TagFilter kEveryTag;

/// Takes what a walk finds.
class TagSink {
public:
    /// Of the tags that lie where they should only those that the filter lets through are offered.
    [[nodiscard]] const TagFilter& filter() const { return m_filter; }

    /// A tag of a slot (0 to 7). 0, or the error code that ends the walk.
    [[nodiscard]] virtual uint32_t take(uint16_t slot, const FoundTag& tag) = 0;
    /// What was taken for the slots from `from` on has to go: it will come again.
    virtual void release(int32_t from) = 0;

protected:
    explicit TagSink(const TagFilter& filter = kEveryTag) : m_filter(filter) {}
    ~TagSink() = default;

private:
    const TagFilter& m_filter;
};

/// Of data that begin at the file's first byte: sets the format and the header position. 0, 4 or 5.
[[nodiscard]] uint32_t recogniseFile(IMAGETAG_POSITION& position, TagData& data);

/// A JPEG without Exif data, so far as the rules know: nothing is ever found in it.
[[nodiscard]] bool isPlainJfif(const IMAGETAG_POSITION& position);

/// Of the same data: reads the header, sets byte order and next IFD position. 0 when IFD0 lies in the data;
/// kTagNotRecognised, kTagMoreNeeded.
[[nodiscard]] uint32_t searchFirstIFD(IMAGETAG_POSITION& position, TagData& data);

/// Entries of the directory at an offset of the data; none when it is too large for them.
[[nodiscard]] std::optional<uint32_t> entriesThatFit(TagData& data, uint64_t offset, bool bigEndian);

/// Walks from the main directory at a position of the file, which is IFD0 or IFD1 as
/// position.currentMainIFD says. 0; kTagMoreNeeded with the next IFD position and the current main IFD
/// where to go on; else the error that ended it, what was taken before stays. `reader` may be null; it
/// brings values behind the data.
[[nodiscard]] uint32_t walkDirectories(IMAGETAG_POSITION& position, TagData& data, CMEMCARDFILE* reader,
                                       TagSink& sink, uint64_t directory);

/// All of it for one who has the head of a file and no more: `position` becomes that of a new parse.
/// 0 or an error code; whatever it is, what was taken and not released counts, unless data.cameShort().
[[nodiscard]] uint32_t walkHead(IMAGETAG_POSITION& position, TagData& data, TagSink& sink);

}  // namespace fi
