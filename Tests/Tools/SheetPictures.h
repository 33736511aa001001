// SPDX-License-Identifier: Apache-2.0
// Looks at a finished contact sheet: are the right pictures in the right places, the right way up?
#pragma once

#include <string>

#include "SheetLayout.h"
#include "TestPictures.h"

namespace fi::test {

class SheetPictures {
public:
    /// Reads the sheet back from its file; the test fails when that cannot be done.
    SheetPictures(const std::string& path, const SheetLayout& layout);

    [[nodiscard]] const CGImage* page() const { return m_page.get(); }

    /// How far the cell at a 0-based index is from the upright test picture, from 0 to 255: the mean over
    /// a grid of blocks. `seenAs` looks at the picture as if its orientation were another one.
    [[nodiscard]] double differenceFrom(size_t index, const TestPicture& picture) const {
        return differenceFrom(index, picture, picture.orientation);
    }
    [[nodiscard]] double differenceFrom(size_t index, const TestPicture& picture, uint16_t seenAs) const;

    /// The part of a cell that is not paper, from 0 to 1.
    [[nodiscard]] double inkInCell(size_t index) const;

private:
    SheetLayout m_layout;
    Ref<const CGImage> m_page;
};

}  // namespace fi::test
