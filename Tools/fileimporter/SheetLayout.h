// SPDX-License-Identifier: Apache-2.0
// Where everything stands on a contact sheet. Whole pixels from the top left.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace fi {

class SheetLayout {
public:
    static constexpr uint32_t kLargestPicture = 160;  ///< sides of the square that a picture fits into
    static constexpr uint32_t kSmallestPicture = 48;
    static constexpr uint32_t kSmallestCaptioned = 96;  ///< below it, captions could not be read
    static constexpr uint32_t kLongestSide = 30'000;    ///< of the page
    /// Of the page, which is in memory twice while it is written: less than 150 MB in all.
    static constexpr uint64_t kMostPixels = 16'000'000;
    static constexpr uint32_t kMostColumns = 500;  ///< that can be asked for

    struct Place {
        uint32_t x = 0;
        uint32_t y = 0;
        friend bool operator==(const Place&, const Place&) = default;
    };

    /// A page for `photos`, at least one. `columns` 0 chooses as many as make the page about 4 wide to 3
    /// high. Pictures become smaller, and lose their captions, rather than that the page gets too large;
    /// more columns than asked for are taken when it would be too high otherwise. Nothing when even that
    /// does not do.
    static std::optional<SheetLayout> forPhotos(size_t photos, uint32_t columns);

    /// True for the size of some sheet's page; hardly ever for that of another picture.
    static bool isPageSize(int64_t width, int64_t height);

    [[nodiscard]] uint32_t columns() const { return m_columns; }
    [[nodiscard]] uint32_t rows() const { return m_rows; }
    [[nodiscard]] uint32_t pictureSide() const { return m_side; }
    [[nodiscard]] bool hasCaptions() const { return m_side >= kSmallestCaptioned; }
    /// Height of one line of a caption; 0 without captions.
    [[nodiscard]] uint32_t lineHeight() const;
    [[nodiscard]] uint32_t pageWidth() const { return static_cast<uint32_t>(width()); }
    [[nodiscard]] uint32_t pageHeight() const { return static_cast<uint32_t>(height()); }

    /// Top left of the square of the picture at a 0-based index.
    [[nodiscard]] Place picture(size_t index) const;
    /// Top left of a line of its caption, 0 or 1; as wide as the square.
    [[nodiscard]] Place captionLine(size_t index, uint32_t line) const;

private:
    SheetLayout(size_t photos, uint32_t columns, uint32_t side);
    static SheetLayout shapedLikeAPage(size_t photos, uint32_t side);
    static std::optional<SheetLayout> ofSmallest(size_t photos, uint32_t columns);

    [[nodiscard]] uint32_t gap() const;
    [[nodiscard]] uint32_t margin() const { return 2 * gap(); }
    [[nodiscard]] uint32_t cellWidth() const { return m_side + gap(); }
    [[nodiscard]] uint32_t cellHeight() const;
    [[nodiscard]] uint64_t width() const;
    [[nodiscard]] uint64_t height() const;
    [[nodiscard]] bool isTooLong() const { return width() > kLongestSide || height() > kLongestSide; }
    [[nodiscard]] bool hasTooManyPixels() const { return width() * height() > kMostPixels; }
    /// How far the page is from its best shape; 0 is best.
    [[nodiscard]] double misshape() const;

    size_t m_photos;
    uint32_t m_columns;
    uint32_t m_rows;
    uint32_t m_side;
};

}  // namespace fi
