// SPDX-License-Identifier: Apache-2.0
// Writes small well-formed files for every fuzzer into FOLDER/<fuzzer>/, made by the product's own code.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <tuple>
#include <vector>

#include "PlatformKit/Codecs/JpegWriter.h"
#include "PlatformKit/Codecs/MakeBmp.h"
#include "PlatformKit/Codecs/MakeJpeg.h"
#include "PlatformKit/Codecs/MakePng.h"
#include "PlatformKit/Codecs/PictBytes.h"
#include "PlatformKit/Codecs/TiffBytes.h"
#include "PlatformKit/Codecs/TiffField.h"
#include "PlatformKit/Codecs/TiffWriter.h"
#include "PlatformKit/Drawing/MakeProfiles.h"

using namespace fi;
using namespace fi::test;

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;

fs::path g_folder;

void save(const char* fuzzer, const char* name, const Bytes& bytes) {
    fs::create_directories(g_folder / fuzzer);
    std::ofstream out(g_folder / fuzzer / name, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!out.flush()) std::exit(1);
}

PixelBuffer smallPicture(PixelLayout layout) {
    auto picture = PixelBuffer::create(20, 12, layout);
    if (!picture) std::exit(1);
    for (uint32_t y = 0; y < 12; ++y) {
        for (size_t i = 0; i < size_t{20} * bytesPerPixel(layout); ++i) {
            picture->row(y)[i] = static_cast<uint8_t>(i * 3 + y * 9);
        }
    }
    return std::move(*picture);
}

Bytes exifBlock(ByteOrder order, bool big) {
    TiffBytes tiff(order, big);
    const uint64_t date = tiff.addText(std::string_view("2024:05:06 07:08:09\0", 20));
    const uint64_t interop = tiff.addDirectory({{1, kTiffAscii, 4, tiff.inlineText("R98")}});
    const uint64_t exif =
        tiff.addDirectory({{0x9003, kTiffAscii, 20, date}, {0xA005, kTiffLong, 1, interop}});
    const uint64_t gps = tiff.addDirectory({{1, kTiffAscii, 2, tiff.inlineText("N")}});
    const uint64_t dots = tiff.addRational(300, 1);
    tiff.setFirst(tiff.addDirectory({{0x0112, kTiffShort, 1, tiff.inlineShort(6)},
                                     {0x011A, kTiffRational, 1, dots},
                                     {0x8769, kTiffLong, 1, exif},
                                     {0x8825, kTiffLong, 1, gps}}));
    return tiff.bytes();
}

/// Values stand behind their directories, as most programs write them; a second page follows.
Bytes movableTiff(ByteOrder order) {
    TiffBytes tiff(order);
    const uint64_t exif = tiff.here() + 3 + 30 + 6;
    tiff.addText("gap");
    tiff.setFirst(tiff.addDirectory({{0x010F, kTiffAscii, 6, exif - 6}, {0x8769, kTiffLong, 1, exif}}, 8));
    tiff.addText(std::string_view("Maker\0", 6));
    tiff.addDirectory({{0x9003, kTiffAscii, 20, exif + 30}, {0x829A, kTiffRational, 1, exif + 50}});
    tiff.addText(std::string_view("2024:05:06 07:08:09\0", 20));
    tiff.addRational(1, 250);
    return tiff.bytes();
}

Bytes withExif(const Bytes& jpeg) {
    const Bytes exif = exifBlock(ByteOrder::Big, false);
    const size_t length = exif.size() + 8;
    Bytes out = {0xFF,
                 0xD8,
                 0xFF,
                 0xE1,
                 static_cast<uint8_t>(length >> 8),
                 static_cast<uint8_t>(length & 0xFF),
                 'E',
                 'x',
                 'i',
                 'f',
                 0,
                 0};
    out.insert(out.end(), exif.begin(), exif.end());
    out.insert(out.end(), jpeg.begin() + 2, jpeg.end());
    return out;
}

/// One picture of 9 by 3 pixels for each way to store them.
void saveBmps() {
    const struct {
        const char* name;
        uint32_t headerBytes;
        uint16_t bits;
        uint32_t compression;
        Bytes pixels;
    } kinds[] = {
        {"core.bmp", 12, 8, 0, Bytes(36, 1)},
        {"os2.bmp", 64, 4, 0, Bytes(24, 0x21)},
        {"bits.bmp", 40, 1, 0, Bytes(12, 0x5A)},
        {"two.bmp", 40, 2, 0, Bytes(12, 0x1B)},
        {"words.bmp", 40, 16, 0, Bytes(60, 99)},
        {"bytes.bmp", 40, 24, 0, Bytes(84, 77)},
        {"fields.bmp", 40, 32, 3, Bytes(108, 9)},
        {"alpha.bmp", 124, 32, 3, Bytes(108, 55)},
        {"runs8.bmp", 40, 8, 1, {9, 1, 0, 0, 0, 2, 2, 1, 0, 5, 1, 2, 3, 4, 5, 0, 0, 1}},
        {"runs4.bmp", 40, 4, 2, {9, 0x12, 0, 0, 0, 2, 2, 1, 0, 5, 0x12, 0x34, 0x50, 0, 0, 1}},
    };
    for (const auto& kind : kinds) {
        BmpRecipe recipe;
        recipe.headerBytes = kind.headerBytes;
        recipe.width = 9;
        recipe.height = 3;
        recipe.bits = kind.bits;
        recipe.compression = kind.compression;
        recipe.pixels = kind.pixels;
        if (kind.bits == 1) recipe.palette = {{0, 0, 0}, {255, 255, 255}};
        if (kind.bits > 1 && kind.bits <= 8) recipe.palette = {{0, 0, 0}, {9, 9, 9}, {30, 20, 10}};
        if (kind.compression == 3) recipe.masks = {0x3FF00000, 0xFFC00, 0x3FF};
        if (kind.headerBytes == 124) recipe.masks = {0xFF0000, 0xFF00, 0xFF, 0xFF000000};
        if (kind.headerBytes == 124) recipe.profile = Bytes(20, 7);
        save("FuzzBmp", kind.name, makeBmp(recipe));
    }
}

void saveJpegs() {
    const PixelBuffer color = smallPicture(PixelLayout::RGBX32);
    JpegRecipe progressive;
    progressive.progressive = true;
    JpegRecipe inks;
    inks.cmyk = true;
    JpegRecipe restarts;
    restarts.restartRows = 1;
    restarts.halfColor = true;
    save("FuzzJpeg", "color.jpg", withExif(makeJpeg(color, {})));
    save("FuzzJpeg", "gray.jpg", makeJpeg(smallPicture(PixelLayout::Gray8), {}));
    save("FuzzJpeg", "progressive.jpg", makeJpeg(color, progressive));
    save("FuzzJpeg", "inks.jpg", makeJpeg(color, inks));
    save("FuzzJpeg", "restarts.jpg", makeJpeg(color, restarts));
    save("FuzzJpeg", "late-height.jpg", withLateHeight(makeJpeg(color, restarts)));
    save("FuzzJpeg", "scans.jpg", makeScanBomb(64, 64, 30));
}

void saveTiffs() {
    for (const bool lzw : {false, true}) {
        for (const PixelLayout layout : {PixelLayout::Gray8, PixelLayout::RGBX32}) {
            const auto bytes = encodeTiff(smallPicture(layout), TiffOptions{std::nullopt, lzw});
            if (!bytes) std::exit(1);
            const std::string name =
                std::string(layout == PixelLayout::Gray8 ? "gray" : "color") + (lzw ? "-lzw" : "");
            save("FuzzTiff", (name + ".tif").c_str(), *bytes);
        }
    }
}

void savePngs() {
    const std::pair<const char*, PngShape> files[] = {
        {"bits.png", {20, 12, 1, PngKind::Gray}},
        {"gray.png", {20, 12, 4, PngKind::Gray}},
        {"gray-words.png", {20, 12, 16, PngKind::Gray}},
        {"color.png", {20, 12, 8, PngKind::Color}},
        {"color-words.png", {20, 12, 16, PngKind::Color, true}},
        {"gray-alpha.png", {20, 12, 8, PngKind::GrayAlpha}},
        {"alpha-words.png", {20, 12, 16, PngKind::ColorAlpha, true}},
        {"interlaced.png", {20, 12, 2, PngKind::Gray, true}},
    };
    for (const auto& [name, shape] : files)
        save("FuzzPng", name, makePng(shape));
    Bytes facts = makePng({20, 12, 4, PngKind::Palette});
    facts = withPngChunk(facts, "IDAT", "tRNS", {0, 90});
    facts = withPngChunk(facts, "IDAT", "pHYs", {0, 0, 0x2E, 0x23, 0, 0, 0x2E, 0x23, 1});
    facts = withPngChunk(facts, "IDAT", "eXIf", exifBlock(ByteOrder::Little, false));
    Bytes profile(140);
    profile[3] = 140;
    facts = withPngChunk(facts, "PLTE", "iCCP", pngProfileData(profile));
    save("FuzzPng", "facts.png", facts);
}

void saveDirectories() {
    save("FuzzTiffDirectories", "little", exifBlock(ByteOrder::Little, false));
    save("FuzzTiffDirectories", "big-endian", exifBlock(ByteOrder::Big, false));
    save("FuzzTiffDirectories", "big", exifBlock(ByteOrder::Little, true));
    save("FuzzTiffDirectories", "big-big-endian", exifBlock(ByteOrder::Big, true));
}

/// A read of FuzzCardReads: 0 the next block, 1 a widened stretch, 2 a stretch, 3 where the file stands;
/// 128 more for offsets far behind the file.
struct CardRead {
    uint8_t kind;
    uint32_t offset;
    uint32_t length;
};

Bytes cardReads(uint16_t fileSize, uint16_t unit, uint16_t blockSize, const std::vector<CardRead>& reads) {
    Bytes out;
    const auto add = [&out](uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            out.push_back(static_cast<uint8_t>(value >> (8 * i)));
    };
    for (const uint16_t number : {fileSize, unit, blockSize})
        add(number, 2);
    for (const CardRead& read : reads) {
        add(read.kind, 1);
        add(read.offset, 4);
        add(read.length, 4);
    }
    return out;
}

void saveCardReads() {
    save("FuzzCardReads", "blocks",
         cardReads(1000, 512, 300, {{0, 0, 0}, {0, 0, 0}, {3, 9, 50}, {0, 0, 0}}));
    save("FuzzCardReads", "units",
         cardReads(3000, 512, 3000, {{1, 511, 600}, {1, 512, 1}, {1, 513, 9000}, {1, 0, 100}, {0, 0, 0}}));
    save("FuzzCardReads", "end",
         cardReads(
             1000, 512, 1000,
             {{1, 1000, 10}, {1, 1001, 10}, {1, 1024, 10}, {1, 1024, 0}, {2, 1000, 10}, {2, 1001, 1}}));
    save("FuzzCardReads", "huge",
         cardReads(1000, 65535, 10,
                   {{1, 0, 0xFFFFFFFF}, {129, 0xFFFFFFFF, 0xFFFFFFFF}, {130, 0xFFFFFFFF, 8}}));
    save("FuzzCardReads", "empty", cardReads(0, 1, 0, {{0, 0, 0}, {1, 0, 1}, {2, 0, 0}, {3, 0, 1}}));
}

/// Heads of every kind that the tag reader tells apart.
void saveTags() {
    JpegRecipe progressive;
    progressive.progressive = true;
    const PixelBuffer color = smallPicture(PixelLayout::RGBX32);
    const Bytes plain = makeJpeg(color, progressive);
    Bytes exifBehindJfif(plain.begin(), plain.begin() + 20);
    const Bytes exif = withExif(plain);
    exifBehindJfif.insert(exifBehindJfif.end(), exif.begin() + 2, exif.end());
    const std::pair<const char*, Bytes> files[] = {
        {"little", exifBlock(ByteOrder::Little, false)},
        {"big-endian", exifBlock(ByteOrder::Big, false)},
        {"exif.jpg", exif},
        {"exif-behind-jfif.jpg", exifBehindJfif},
        {"plain.jpg", plain},
    };
    for (const auto& [name, bytes] : files) {
        save("FuzzTagStructure", name, bytes);
        // A head of 16 bytes holds the header and no directory.
        Bytes resumed = {16, 0};
        resumed.insert(resumed.end(), bytes.begin(), bytes.end());
        save("FuzzResumedTags", name, resumed);
    }
}

void saveSegments() {
    save("FuzzExifSegment", "little.tif", movableTiff(ByteOrder::Little));
    save("FuzzExifSegment", "big.tif", movableTiff(ByteOrder::Big));
    const Bytes jpeg = withExif(makeJpeg(smallPicture(PixelLayout::Gray8), {}));
    save("FuzzExifSegment", "first.jpg", jpeg);
    Bytes second = {0xFF, 0xD8, 0xFF, 0xE0, 0, 7, 'J', 'F', 'I', 'F', 0};
    second.insert(second.end(), jpeg.begin() + 2, jpeg.end());
    save("FuzzExifSegment", "second.jpg", second);
}

/// The first byte of each says what is converted: see FuzzColorProfile.
void saveProfiles() {
    const std::tuple<const char*, uint8_t, Bytes> profiles[] = {
        {"curves", 0, makeWideProfile()},       {"curves-words-to-gray", 0xC0, makeWideProfile()},
        {"srgb", 0, makeSRGBProfile()},         {"grid", 0, makeGridProfile()},
        {"gray", 1, makeGrayProfile(1.8)},      {"gray-to-gray", 0x85, makeGrayProfile(1.8)},
        {"floating", 0, makeFloatingProfile()}, {"inks", 2, makeInkProfile()},
        {"inverted-inks", 5, makeInkProfile()},
    };
    for (const auto& [name, choice, profile] : profiles) {
        Bytes bytes = {choice};
        bytes.insert(bytes.end(), profile.begin(), profile.end());
        save("FuzzColorProfile", name, bytes);
    }
}

/// A map of every depth and packing, with 20 columns and four equal rows.
PictMapRecipe pictMap(uint16_t bits, uint16_t packType) {
    PictMapRecipe recipe;
    recipe.bounds = {0, 0, 4, 20};
    recipe.bits = bits;
    recipe.packType = packType;
    for (uint16_t i = 0; bits > 0 && bits <= 8 && i < 1U << bits; ++i)
        recipe.colors.insert(recipe.colors.end(), {i, static_cast<uint16_t>(i << 8), 0x8000, 0xFFFF});
    const size_t rowBytes = bits == 32 ? 60 : std::max<size_t>(bits, 1) * 20 / 8 + 2;
    std::vector<uint8_t> row(rowBytes - rowBytes % 4);
    for (size_t i = 0; i < row.size(); ++i)
        row[i] = static_cast<uint8_t>(i / 3 * 5);
    recipe.rows.assign(4, row);
    return recipe;
}

Bytes pictOf(uint32_t version, const PictMapRecipe& recipe) {
    PictBytes pict(version, recipe.bounds, false);
    if (version == 2) pict.extendedHeader(72 << 16, 72 << 16, recipe.bounds);
    return pict.map(recipe).end().bytes();
}

/// An image of QuickTime with the JPEG, and the text behind it.
Bytes pictWithJpeg() {
    const Bytes jpeg = makeJpeg(smallPicture(PixelLayout::RGBX32), {});
    PictBytes pict(2, {0, 0, 12, 20}, false);
    pict.opcode(0x8200).longWord(static_cast<uint32_t>(68 + 86 + jpeg.size())).word(0);
    for (const uint32_t element : {0x10000U, 0U, 0U, 0U, 0x10000U, 0U, 0U, 0U, 0x40000000U})
        pict.longWord(element);
    pict.longWord(0).rect({}).word(0).rect({0, 0, 12, 20}).longWord(0).longWord(0);
    pict.longWord(86).longWord(0x6A706567);
    for (int i = 0; i < 6; ++i)
        pict.longWord(0);
    pict.word(20).word(12).longWord(0).longWord(0).longWord(static_cast<uint32_t>(jpeg.size())).word(1);
    for (int i = 0; i < 8; ++i)
        pict.longWord(0);
    pict.word(24).word(0xFFFF).data(jpeg);
    return pict.opcode(7).word(0x00AE).word(2).opcode(0x38).end().bytes();
}

void savePicts() {
    save("FuzzPict", "bits-1", pictOf(1, pictMap(0, 0)));
    save("FuzzPict", "bits-2", pictOf(2, pictMap(0, 0)));
    for (const uint16_t bits :
         {uint16_t{1}, uint16_t{2}, uint16_t{4}, uint16_t{8}, uint16_t{16}, uint16_t{32}}) {
        for (const uint16_t packType : {uint16_t{0}, uint16_t{1}, uint16_t{2}}) {
            const std::string name = "map-" + std::to_string(bits) + "-" + std::to_string(packType);
            save("FuzzPict", name.c_str(), pictOf(2, pictMap(bits, packType)));
        }
    }
    PictMapRecipe masked = pictMap(8, 0);
    masked.mask = {0, 0, 4, 20, 0, 2, 9, 0x7FFF, 2, 2, 9, 12, 18, 0x7FFF, 0x7FFF};
    masked.target = PictRect{1, 1, 9, 41};
    masked.mode = 36;
    PictBytes pict(2, {0, 0, 10, 50}, false);
    pict.opcode(1)
        .word(10)
        .rect({0, 0, 8, 48})
        .opcode(0x0C)
        .word(1)
        .word(1)
        .opcode(0x30)
        .rect({1, 2, 3, 4});
    save("FuzzPict", "masked", pict.map(masked).map(pictMap(0, 0)).end().bytes());
    save("FuzzPict", "jpeg", pictWithJpeg());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    g_folder = argv[1];
    saveBmps();
    saveCardReads();
    saveJpegs();
    savePngs();
    saveProfiles();
    savePicts();
    saveTiffs();
    saveDirectories();
    saveTags();
    saveSegments();
    return 0;
}
