// SPDX-License-Identifier: Apache-2.0
// Two small reads for each page, and a set of the places seen.
#include "PlatformKit/Codecs/TiffPages.h"

#include <unordered_set>

#include "PlatformKit/Codecs/SourceWindow.h"
#include "PlatformKit/Codecs/TiffLayout.h"
#include "PlatformKit/Limits.h"

namespace fi {

namespace {

/// The offset in the link behind a directory, 0 when there is none.
uint64_t nextDirectory(SourceWindow& window, const TiffLayout& layout, uint64_t offset) {
    const auto count = layout.readCount(window.view(offset, layout.countBytes()));
    // A table that is longer than the file has no link behind it; nor can the product wrap.
    if (!count || *count > window.size() / layout.entryBytes()) return 0;
    const uint64_t link = offset + layout.countBytes() + *count * layout.entryBytes();
    return layout.readOffset(window.view(link, layout.offsetBytes()), 0).value_or(0);
}

}  // namespace

std::vector<uint64_t> findTiffPages(ByteSource& source) {
    std::vector<uint64_t> pages;
    SourceWindow window(source);
    const auto layout = TiffLayout::parse(window.view(0, TiffLayout::kHeadBytes));
    if (!layout) return pages;
    std::unordered_set<uint64_t> seen;
    uint64_t offset = layout->firstDirectory;
    while (offset != 0 && offset < window.size() && pages.size() < decodeLimits().maximumPages) {
        if (!seen.insert(offset).second) break;
        pages.push_back(offset);
        offset = nextDirectory(window, *layout, offset);
    }
    return pages;
}

}  // namespace fi
