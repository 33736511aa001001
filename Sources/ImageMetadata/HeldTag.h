// SPDX-License-Identifier: Apache-2.0
// A tag of a field, held for the length of a scope.
#pragma once

#include <cstdint>

#include "FileImporter/CIMAGETAG.h"

namespace fi {

/// The first record of a slot with that tag, if there is one. Its value is the field's: the scope ends
/// before the field is closed.
class HeldTag {
public:
    HeldTag(CIMAGETAG& tags, uint16_t slot, uint16_t tag) : m_tags(tags) {
        uint32_t error = kTagNoError;
        m_info = m_tags.GetInfo(slot, tag, &error);
    }
    ~HeldTag() { m_tags.ReleaseInfo(m_info); }
    HeldTag(const HeldTag&) = delete;
    HeldTag& operator=(const HeldTag&) = delete;

    explicit operator bool() const { return m_info != nullptr; }
    const IMAGETAG_INFO& operator*() const { return *m_info; }

private:
    CIMAGETAG& m_tags;
    IMAGETAG_INFO* m_info = nullptr;
};

}  // namespace fi
