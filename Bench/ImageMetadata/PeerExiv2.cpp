// SPDX-License-Identifier: Apache-2.0
#include <cstring>
#include <exiv2/exiv2.hpp>

#include "ImageMetadata/PeerExif.h"

namespace fi::bench {

namespace {

/// Made once: a key is parsed from its name.
struct Keys {
    Exiv2::ExifKey date{"Exif.Photo.DateTimeOriginal"};
    Exiv2::ExifKey orientation{"Exif.Image.Orientation"};
    Exiv2::ExifKey width{"Exif.Photo.PixelXDimension"};
    Exiv2::ExifKey height{"Exif.Photo.PixelYDimension"};
    Exiv2::ExifKey colorSpace{"Exif.Photo.ColorSpace"};
};

const Keys& keys() {
    static const Keys all;
    return all;
}

uint32_t numberOf(const Exiv2::ExifData& data, const Exiv2::ExifKey& key) {
    const auto found = data.findKey(key);
    return found == data.end() ? 0 : static_cast<uint32_t>(found->toLong());
}

}  // namespace

void prepareExiv2() {
    Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
    (void)keys();
}

bool readByExiv2(const char* path, CameraFacts& facts) {
    const auto image = Exiv2::ImageFactory::open(path);
    image->readMetadata();
    const Exiv2::ExifData& data = image->exifData();
    const auto date = data.findKey(keys().date);
    if (date == data.end()) return false;
    const std::string text = date->toString();
    if (text.size() + 1 == sizeof facts.date) std::memcpy(facts.date, text.c_str(), sizeof facts.date);
    facts.orientation = numberOf(data, keys().orientation);
    facts.width = numberOf(data, keys().width);
    facts.height = numberOf(data, keys().height);
    facts.isSRGB = numberOf(data, keys().colorSpace) == 1;
    return true;
}

}  // namespace fi::bench
