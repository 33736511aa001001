// SPDX-License-Identifier: Apache-2.0
#include <libexif/exif-data.h>
#include <libexif/exif-loader.h>

#include <cstring>

#include "ImageMetadata/PeerExif.h"

namespace fi::bench {

namespace {

uint32_t numberOf(ExifData* data, ExifIfd directory, ExifTag tag, ExifByteOrder order) {
    const ExifEntry* entry = exif_content_get_entry(data->ifd[directory], tag);
    if (entry == nullptr || entry->components < 1) return 0;
    return entry->format == EXIF_FORMAT_LONG ? exif_get_long(entry->data, order)
                                             : exif_get_short(entry->data, order);
}

void take(ExifData* data, CameraFacts& facts) {
    const ExifByteOrder order = exif_data_get_byte_order(data);
    const ExifEntry* date = exif_content_get_entry(data->ifd[EXIF_IFD_EXIF], EXIF_TAG_DATE_TIME_ORIGINAL);
    if (date != nullptr && date->size >= sizeof facts.date)
        std::memcpy(facts.date, date->data, sizeof facts.date);
    facts.orientation = numberOf(data, EXIF_IFD_0, EXIF_TAG_ORIENTATION, order);
    facts.width = numberOf(data, EXIF_IFD_EXIF, EXIF_TAG_PIXEL_X_DIMENSION, order);
    facts.height = numberOf(data, EXIF_IFD_EXIF, EXIF_TAG_PIXEL_Y_DIMENSION, order);
    facts.isSRGB = numberOf(data, EXIF_IFD_EXIF, EXIF_TAG_COLOR_SPACE, order) == 1;
}

}  // namespace

// The loader, which reads no more than the Exif block, and data without the repairs and conversions that
// are made unless one asks for the file as it is: half the time of exif_data_new_from_file, the same facts.
bool readByLibexif(const char* path, CameraFacts& facts) {
    const unsigned char* block = nullptr;
    unsigned int size = 0;
    ExifLoader* loader = exif_loader_new();
    exif_loader_write_file(loader, path);
    exif_loader_get_buf(loader, &block, &size);
    ExifData* data = exif_data_new();
    exif_data_unset_option(data, EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
    exif_data_set_option(data, EXIF_DATA_OPTION_DONT_CHANGE_MAKER_NOTE);
    if (block != nullptr) {
        exif_data_load_data(data, block, size);
        take(data, facts);
    }
    exif_data_unref(data);
    exif_loader_unref(loader);
    return block != nullptr;
}

}  // namespace fi::bench
