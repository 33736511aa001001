// SPDX-License-Identifier: Apache-2.0
// The page of a contact sheet: pictures with their captions, and tiles for photos that failed.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "Captions.h"
#include "PlatformKit/CGContext.h"
#include "SheetLayout.h"

namespace fi {

class SheetPage {
public:
    /// Nothing without memory for the page.
    static std::optional<SheetPage> create(const SheetLayout& layout);

    /// A picture that fits into the layout's square. `name` and `note` are UTF-8 for people.
    void drawPhoto(size_t index, const CGImage& picture, std::string_view name, std::string_view note);
    /// As drawPhoto() for a picture of which only a part could be read; `note` is shown as a warning.
    void drawDamagedPhoto(size_t index, const CGImage& picture, std::string_view name,
                          std::string_view note);
    /// A crossed-out tile; `note` says why.
    void drawFailure(size_t index, std::string_view name, std::string_view note);

    /// OWNED. The page as a picture; null without memory.
    [[nodiscard]] Ref<const CGImage> createImage() const { return m_context->createImage(); }

private:
    struct Area {
        SheetLayout::Place place;
        uint32_t width;
        uint32_t height;
    };

    SheetPage(const SheetLayout& layout, Ref<CGContext> context);
    [[nodiscard]] CGContextRect onPage(const Area& area) const;
    [[nodiscard]] Area centred(size_t index, uint32_t width, uint32_t height) const;
    void fill(const Area& area, CGContextColor color);
    void drawFramed(size_t index, const CGImage& picture);
    void drawCross(const Area& area);
    void drawCaption(size_t index, std::string_view name, std::string_view note, CGContextColor noteColor);
    void drawLine(size_t index, uint32_t line, std::string_view text, Captions::Shorten shorten,
                  CGContextColor color);

    SheetLayout m_layout;
    Ref<CGContext> m_context;
    std::unique_ptr<Captions> m_captions;  ///< null for a layout without captions
    std::vector<uint8_t> m_cross;          ///< coverage of a failure's tile, made for the first one
};

}  // namespace fi
