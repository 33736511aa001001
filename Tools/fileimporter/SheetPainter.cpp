// SPDX-License-Identifier: Apache-2.0
#include "SheetPainter.h"

#include <fmt/format.h>

#include "PictureFacts.h"
#include "PlatformKit/UprightImage.h"
#include "Text.h"

namespace fi {

namespace {

/// Why there is no picture, in as few words as fit under a tile.
std::string_view shortReason(ImageError error) {
    switch (error) {
        case ImageError::CannotOpen:
            return "cannot be opened";
        case ImageError::NotAnImage:
        case ImageError::NoSuchImage:
            return "not a picture";
        case ImageError::Unsupported:
            return "kind not supported";
        case ImageError::LimitExceeded:
            return "too large";
        case ImageError::NoMemory:
            return "not enough memory";
        case ImageError::Damaged:
            return "damaged";
        default:
            return "cannot be read";
    }
}

/// The same for a file that is not even opened as a picture.
std::string_view shortReason(const PhotoFacts& facts) {
    if (facts.bytes == 0U) return "empty file";
    return facts.error->code == kNotFoundErr ? "not there" : "cannot be opened";
}

/// "2004-05-01 18:03".
std::string dateCaption(const PhotoFacts& facts) {
    const auto date = photoDate(facts);
    if (!date) return {};
    return fmt::format("{:04}-{:02}-{:02} {:02}:{:02}", date->year, date->month, date->day, date->hour,
                       date->minute);
}

}  // namespace

std::optional<PhotoError> SheetPainter::paint(size_t index, const std::string& path) {
    const AutoreleasePool pool;
    const PhotoFacts facts = readFileFacts(path);
    const std::string name = printable(fileName(path));
    if (facts.error) return paintFailure(index, name, *facts.error, shortReason(facts));
    return paintPicture(index, facts, name);
}

std::optional<PhotoError> SheetPainter::paintPicture(size_t index, const PhotoFacts& facts,
                                                     std::string_view name) {
    ImageFailure failure;
    const auto source = ImageSource::open(CFURL::createFromPath(facts.path).get(), &failure);
    const auto picture =
        source ? createUprightImage(*source, 0, m_pictureSide, m_pictureSide, &failure) : nullptr;
    if (!picture)
        return paintFailure(index, name, readError(facts.path, failure), shortReason(failure.code));
    if (picture->isDamaged()) {
        m_page.drawDamagedPhoto(index, *picture, name, "incomplete");
        return incompleteError();
    }
    m_page.drawPhoto(index, *picture, name, dateCaption(facts));
    return std::nullopt;
}

std::optional<PhotoError> SheetPainter::paintFailure(size_t index, std::string_view name, PhotoError error,
                                                     std::string_view note) {
    m_page.drawFailure(index, name, note);
    return error;
}

}  // namespace fi
