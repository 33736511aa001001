// SPDX-License-Identifier: Apache-2.0
#include "Support/CameraPhotos.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "Support/NoisePhotos.h"
#include "Support/PeerJpeg.h"
#include "Support/TiffBlock.h"

namespace fi::bench {

namespace {

using test::TiffDirectory;
using Bytes = std::vector<uint8_t>;

constexpr int kPhotosOfAFolder = 250;

constexpr uint16_t kUndefined = 7;  // type of a value that only its tag explains

bool isBigEndian(int number) {
    return number % 8 == 5;
}

size_t makerNoteBytes(int number) {
    const auto variation = static_cast<size_t>(number * 37 % 900);
    return number % 6 == 4 ? 4200 + variation : 600 + variation;
}

/// Bytes that look like something and compress badly.
Bytes someBytes(size_t count, int seed) {
    Bytes bytes(count);
    uint32_t state = static_cast<uint32_t>(seed) * 2654435761U + 1;
    for (uint8_t& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<uint8_t>(state >> 24U);
    }
    return bytes;
}

CameraFacts factsOf(int number) {
    constexpr uint32_t kOrientations[] = {1, 1, 6, 1, 8, 1, 3, 1};
    CameraFacts facts;
    std::snprintf(facts.date, sizeof facts.date, "20%02d:%02d:%02d %02d:%02d:%02d", number % 24,
                  1 + number % 12, 1 + number % 28, number % 24, number % 60, number * 7 % 60);
    facts.orientation = kOrientations[number % 8];
    facts.width = 4000 + static_cast<uint32_t>(number % 3) * 16;
    facts.height = 3000;
    facts.isSRGB = number % 5 != 0;
    return facts;
}

TiffDirectory interoperability() {
    TiffDirectory directory;
    directory.text(0x0001, "R98").bytes(0x0002, kUndefined, {'0', '1', '0', '0'});
    directory.shorts(0x1001, {4000}).shorts(0x1002, {3000});
    return directory;
}

TiffDirectory exposure(const CameraFacts& facts, int number) {
    TiffDirectory exif;
    exif.fractions(0x829A, {{1, 250}})
        .fractions(0x829D, {{56, 10}})
        .shorts(0x8822, {2})
        .shorts(0x8827, {200});
    exif.shorts(0x8830, {2}).longs(0x8832, {200});
    exif.bytes(0x9000, kUndefined, {'0', '2', '3', '2'}).text(0x9003, facts.date).text(0x9004, facts.date);
    exif.text(0x9010, "+01:00").text(0x9011, "+01:00").bytes(0x9101, kUndefined, {1, 2, 3, 0});
    exif.fractions(0x9102, {{4, 1}}).fractions(0x9202, {{497, 100}}).fractions(0x9205, {{36, 10}});
    exif.shorts(0x9207, {5}).shorts(0x9208, {0}).shorts(0x9209, {16}).fractions(0x920A, {{55, 1}});
    exif.bytes(0x927C, kUndefined, someBytes(makerNoteBytes(number), number));
    exif.bytes(0x9286, kUndefined, Bytes(44, ' ')).text(0x9290, "42").text(0x9291, "42").text(0x9292, "42");
    exif.bytes(0xA000, kUndefined, {'0', '1', '0', '0'});
    exif.shorts(0xA001, {static_cast<uint16_t>(facts.isSRGB ? 1 : 65535)});
    exif.longs(0xA002, {facts.width}).longs(0xA003, {facts.height}).directory(0xA005, interoperability());
    exif.fractions(0xA20E, {{4000000, 894}}).fractions(0xA20F, {{3000000, 597}}).shorts(0xA210, {2});
    exif.shorts(0xA217, {2}).bytes(0xA300, kUndefined, {3}).bytes(0xA301, kUndefined, {1});
    exif.shorts(0xA401, {0}).shorts(0xA402, {0}).shorts(0xA403, {0}).fractions(0xA404, {{1, 1}});
    exif.shorts(0xA405, {82})
        .shorts(0xA406, {0})
        .shorts(0xA408, {0})
        .shorts(0xA409, {0})
        .shorts(0xA40A, {0});
    exif.text(0xA431, "0123456789").fractions(0xA432, {{18, 1}, {55, 1}, {35, 10}, {56, 10}});
    return exif;
}

TiffDirectory mainDirectory(const CameraFacts& facts, int number) {
    TiffDirectory main;
    main.text(0x010E, "                               ").text(0x010F, "Some Camera Maker");
    main.text(0x0110, "Some Camera 4000 D").shorts(0x0112, {static_cast<uint16_t>(facts.orientation)});
    main.fractions(0x011A, {{72, 1}}).fractions(0x011B, {{72, 1}}).shorts(0x0128, {2});
    main.text(0x0131, "Version 1.10").text(0x0132, facts.date).text(0x013B, "").shorts(0x0213, {2});
    main.text(0x8298, "").directory(0x8769, exposure(facts, number));
    return main;
}

TiffDirectory thumbnailDirectory(const Bytes& thumbnail) {
    TiffDirectory directory;
    directory.shorts(0x0103, {6})
        .fractions(0x011A, {{72, 1}})
        .fractions(0x011B, {{72, 1}})
        .shorts(0x0128, {2});
    directory.block(0x0201, thumbnail).longs(0x0202, {static_cast<uint32_t>(thumbnail.size())});
    return directory;
}

Bytes smallPicture(uint32_t width, uint32_t height, double noise) {
    return encodePeerJpeg(noiseScene(width, height, noise, 1), width, height, 92);
}

/// An Exif block takes the place of the JFIF segment that the encoder wrote.
Bytes withCameraHead(const Bytes& jpeg, const Bytes& tiff) {
    const size_t length = 2 + 6 + tiff.size();
    const auto high = static_cast<uint8_t>(length >> 8U);
    const auto low = static_cast<uint8_t>(length);
    const uint8_t head[] = {0xFF, 0xD8, 0xFF, 0xE1, high, low, 'E', 'x', 'i', 'f', 0, 0};
    const size_t jfifEnd = size_t{4} + jpeg[4] * 256U + jpeg[5];
    Bytes file(sizeof head + tiff.size() + jpeg.size() - jfifEnd);
    auto out = std::copy(std::begin(head), std::end(head), file.begin());
    out = std::copy(tiff.begin(), tiff.end(), out);
    std::copy(jpeg.begin() + static_cast<ptrdiff_t>(jfifEnd), jpeg.end(), out);
    return file;
}

}  // namespace

std::vector<CameraPhoto> writeCameraPhotos(const std::string& folder, int count) {
    const Bytes picture = noiseJpeg(480, 368, 1);
    const Bytes thumbnails[] = {smallPicture(160, 120, 4), smallPicture(160, 120, 8),
                                smallPicture(160, 120, 12)};
    std::vector<CameraPhoto> photos;
    for (int number = 0; number < count; ++number) {
        const std::string place =
            folder + "/DCIM/" + std::to_string(100 + number / kPhotosOfAFolder) + "ABCDE";
        if (number % kPhotosOfAFolder == 0) std::filesystem::create_directories(place);
        const CameraFacts facts = factsOf(number);
        const Bytes tiff =
            test::tiffBlock({mainDirectory(facts, number), thumbnailDirectory(thumbnails[number % 3])},
                            isBigEndian(number) ? ByteOrder::Big : ByteOrder::Little);
        const Bytes file = withCameraHead(picture, tiff);
        const std::string path = place + "/IMG_" + std::to_string(1000 + number) + ".JPG";
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(file.data()), static_cast<std::streamsize>(file.size()));
        photos.push_back({path, facts});
    }
    return photos;
}

}  // namespace fi::bench
