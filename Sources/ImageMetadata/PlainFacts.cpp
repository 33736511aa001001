// SPDX-License-Identifier: Apache-2.0
// The facts of any file: its head is read, parsed, asked for each tag.
#include <optional>

#include "Foundation/FileServices.h"
#include "Foundation/HeadRead.h"
#include "ImageMetadata/FactReaders.h"
#include "ImageMetadata/FactTags.h"
#include "ImageMetadata/FileStamp.h"
#include "ImageMetadata/HeldTag.h"
#include "PlatformKit/Base/Boundary.h"

namespace fi {

namespace {

class FieldTags final : public FactTags {
public:
    explicit FieldTags(CIMAGETAG& field) : m_field(field) {}

    [[nodiscard]] const IMAGETAG_INFO* find(uint16_t slot, uint16_t tag) override {
        m_held.emplace(m_field, slot, tag);
        return *m_held ? &**m_held : nullptr;
    }

private:
    CIMAGETAG& m_field;
    std::optional<HeldTag> m_held;
};

/// What was parsed before an error counts.
ExifInformation factsOfHead(const CFData& head) {
    CIMAGETAG field;
    int16_t format = 0;
    uint32_t nextOffset = 0;
    uint32_t nextSize = 0;
    uint32_t error = kTagNoError;
    field.CreateField(nullptr, reinterpret_cast<const char*>(head.bytes().data()),
                      static_cast<uint32_t>(head.length()), &format, &nextOffset, &nextSize, &error);
    FieldTags tags(field);
    return factsOf(tags);
}

}  // namespace

void readFactsPlainly(CFStringRef path, ExifInformation& info) {
    // Asked before the file is read: when it changes meanwhile, it will be read again.
    const double modificationTime = modificationTimeAt(path->c_str()).value_or(0);
    const HeadRead head =
        guarded([&] { return readHead(path, ReadLimit::Head); }, HeadRead{kMemFullErr, nullptr, 0});
    if (head.code == kNoErr) {
        info = factsOfHead(*head.data);
        if (info.date == DateTimeRec{}) (void)modificationDate(path->c_str(), &info.date);
    }
    turnUpright(info);
    info.modificationTime = modificationTime;
}

}  // namespace fi
