// SPDX-License-Identifier: Apache-2.0
// Brings photos onto a contact sheet, one after the other.
#pragma once

#include <string>

#include "PhotoFacts.h"
#include "SheetPage.h"

namespace fi {

class SheetPainter {
public:
    /// The page must outlive the painter.
    SheetPainter(SheetPage& page, uint32_t pictureSide) : m_page(page), m_pictureSide(pictureSide) {}

    /// Draws the photo of a file, or what there is in its place; then tells what is wrong with it.
    std::optional<PhotoError> paint(size_t index, const std::string& path);

private:
    std::optional<PhotoError> paintPicture(size_t index, const PhotoFacts& facts, std::string_view name);
    std::optional<PhotoError> paintFailure(size_t index, std::string_view name, PhotoError error,
                                           std::string_view note);

    SheetPage& m_page;
    uint32_t m_pictureSide;
};

}  // namespace fi
