// SPDX-License-Identifier: Apache-2.0
// Pictures through libpng, chunks by hand.
#include "PlatformKit/Codecs/MakePng.h"

#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <stdexcept>
#include <string>

namespace fi::test {

namespace {

using Bytes = std::vector<uint8_t>;

void addWord(Bytes& bytes, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes.push_back(static_cast<uint8_t>(value >> shift));
}

void add(Bytes& bytes, const Bytes& more) {
    for (const uint8_t byte : more)
        bytes.push_back(byte);
}

uint32_t wordAt(const Bytes& bytes, size_t at) {
    return uint32_t{bytes.at(at)} << 24 | uint32_t{bytes.at(at + 1)} << 16 |
           uint32_t{bytes.at(at + 2)} << 8 | bytes.at(at + 3);
}

Bytes rowOf(const PngShape& shape, uint32_t y) {
    Bytes row(static_cast<size_t>(shape.storedRowBytes()));
    size_t bit = 0;
    for (uint32_t x = 0; x < shape.width; ++x) {
        for (uint32_t i = 0; i < shape.samples(); ++i) {
            const uint32_t value = pngSampleAt(shape, x, y, i);
            for (uint32_t left = shape.bits; left-- > 0; ++bit) {
                if ((value >> left & 1) != 0) row[bit / 8] |= static_cast<uint8_t>(0x80 >> bit % 8);
            }
        }
    }
    return row;
}

void writePalette(png_structp png, png_infop info, uint8_t bits) {
    std::vector<png_color> palette;
    for (uint32_t i = 0; i < 1U << bits; ++i) {
        const auto color = pngPaletteColor(i);
        palette.push_back({color[0], color[1], color[2]});
    }
    png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
}

}  // namespace

uint32_t pngSampleAt(const PngShape& shape, uint32_t x, uint32_t y, uint32_t sample) {
    // Noise that hardly packs, so that a part of the file holds the same part of the picture.
    uint32_t noise = x * 7919 + y * 104'729 + sample * 31'337 + 1;
    for (int i = 0; i < 2; ++i) {
        noise ^= noise >> 15;
        noise *= 2'654'435'761U;
    }
    return noise >> (32U - shape.bits);
}

std::array<uint8_t, 3> pngPaletteColor(uint32_t index) {
    return {static_cast<uint8_t>(index * 73 + 1), static_cast<uint8_t>(255 - index * 31),
            static_cast<uint8_t>(index * 17 + 5)};
}

Bytes makePng(const PngShape& shape) {
    Bytes file;
    const png_error_ptr fail = [](png_structp, png_const_charp words) { throw std::runtime_error(words); };
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, nullptr);
    png_infop info = png_create_info_struct(png);
    const png_rw_ptr write = [](png_structp to, png_bytep bytes, size_t count) {
        auto& out = *static_cast<Bytes*>(png_get_io_ptr(to));
        out.insert(out.end(), bytes, bytes + count);
    };
    png_set_write_fn(png, &file, write, [](png_structp) {});
    png_set_IHDR(png, info, shape.width, shape.height, shape.bits, static_cast<int>(shape.kind),
                 shape.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_BASE,
                 PNG_FILTER_TYPE_BASE);
    if (shape.kind == PngKind::Palette) writePalette(png, info, shape.bits);
    png_write_info(png, info);
    const int passes = png_set_interlace_handling(png);
    for (int pass = 0; pass < passes; ++pass) {
        for (uint32_t y = 0; y < shape.height; ++y)
            png_write_row(png, rowOf(shape, y).data());
    }
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return file;
}

Bytes pngChunk(std::string_view name, const Bytes& data) {
    Bytes chunk;
    addWord(chunk, static_cast<uint32_t>(data.size()));
    for (const char letter : name)
        chunk.push_back(static_cast<uint8_t>(letter));
    add(chunk, data);
    addWord(chunk, static_cast<uint32_t>(crc32(0, chunk.data() + 4, static_cast<uInt>(chunk.size() - 4))));
    return chunk;
}

size_t pngChunkAt(const Bytes& png, std::string_view name) {
    for (size_t at = kPngSignatureBytes; at + kPngChunkHeadBytes <= png.size();) {
        if (std::equal(name.begin(), name.end(), png.begin() + static_cast<long>(at + 4))) return at;
        at += kPngChunkHeadBytes + wordAt(png, at) + kPngChecksumBytes;
    }
    throw std::runtime_error("no chunk " + std::string(name));
}

size_t pngChecksumAt(const Bytes& png, std::string_view name) {
    const size_t at = pngChunkAt(png, name);
    return at + kPngChunkHeadBytes + wordAt(png, at);
}

Bytes withPngChunk(const Bytes& png, std::string_view before, std::string_view name, const Bytes& data) {
    Bytes changed = png;
    const Bytes chunk = pngChunk(name, data);
    const auto place = changed.begin() + static_cast<long>(pngChunkAt(png, before));
    changed.insert(place, chunk.begin(), chunk.end());
    return changed;
}

Bytes zlibPacked(const Bytes& bytes, int level) {
    Bytes packed(compressBound(static_cast<uLong>(bytes.size())));
    uLongf size = packed.size();
    if (compress2(packed.data(), &size, bytes.data(), static_cast<uLong>(bytes.size()), level) != Z_OK) {
        throw std::runtime_error("zlib");
    }
    packed.resize(size);
    return packed;
}

Bytes pngProfileData(const Bytes& profile) {
    Bytes data = {'n', 'a', 'm', 'e', 0, 0};
    add(data, zlibPacked(profile));
    return data;
}

Bytes pngOfPackedData(const PngShape& shape, const Bytes& packed) {
    Bytes head;
    addWord(head, shape.width);
    addWord(head, shape.height);
    add(head, {shape.bits, static_cast<uint8_t>(shape.kind), 0, 0, static_cast<uint8_t>(shape.interlaced)});
    Bytes file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    add(file, pngChunk("IHDR", head));
    add(file, pngChunk("IDAT", packed));
    add(file, pngChunk("IEND", {}));
    return file;
}

}  // namespace fi::test
