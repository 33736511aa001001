// SPDX-License-Identifier: Apache-2.0
// The tags of a JPEG or TIFF file, one list for each of its directories.
#pragma once

#include <cstdint>

#include "FileImporter/CMEMCARDFILE.h"
#include "PlatformKit/URL.h"

namespace fi {

/// Formats that CIMAGETAG tells apart.
inline constexpr int16_t kImageTagFormatJFIF = 1;
inline constexpr int16_t kImageTagFormatExif = 2;
inline constexpr int16_t kImageTagFormatTIFF = 3;

/// What a record's `parsed` holds.
inline constexpr uint16_t kImageTagKindPlain = 0;
inline constexpr uint16_t kImageTagKindDate = 1;         ///< year, month, day, hour, minute, second
inline constexpr uint16_t kImageTagKindExifVersion = 2;  ///< the version as a number, first
inline constexpr uint16_t kImageTagKindFlashpixVersion = 3;

/// One decoded tag. The field that it came from owns the value.
struct IMAGETAG_INFO {
    uint16_t tag;
    uint16_t type;  ///< of TIFF, 1 to 12
    uint16_t kind;  ///< kImageTagKind…
    int32_t count;  ///< the entry's count, its low 16 bits with their sign
    char* value;    ///< count x size of the type in host byte order, and two zero bytes after a text
    uint16_t parsed[6];
};

/// A directory: its records, the first of `count`.
struct IMAGETAG_ARRAY {
    uint16_t count;
    IMAGETAG_INFO records[1];
};

/// One directory of the file.
struct IMAGETAG_FIELD {
    uint16_t mainIFD;     ///< 0, or 1 for the thumbnail's
    uint16_t pointerTag;  ///< that leads to it from there; 0 for the main directory itself
    int16_t count;
    IMAGETAG_INFO* records;  ///< OWNED
};

/// Where the parse of a file stands; kept from one call to the next that brings more of it.
struct IMAGETAG_POSITION {
    uint32_t bufferStart;     ///< position in the file of the first byte in hand
    uint32_t headerPosition;  ///< 0, 12 or 30: where all offsets count from
    uint16_t bigEndian;
    uint16_t format;
    uint32_t currentMainIFD;  ///< 0 or 1
    uint32_t nextIFDPosition;
    uint8_t hasExifIFD;
};

/// Reads the directories of a file, or of the bytes of its head that a caller has, into eight slots: 0
/// IFD0, 1 its Exif, 2 its GPS, 3 its Interoperability directory, 4 IFD1, 5 to 7 likewise. Records keep the
/// file's order. What was read before an error 2 or 3 stays, and can be asked for. Nothing is thrown. One
/// thread at a time. The pointers that results go to may not be null.
///
/// Results are 1 or 0 with a code through `error` (kTag…), 2: an entry with a type that is none, or with a
/// value that is not to be had; 3: no memory, or a count from 32768 to 65535, which is taken for a negative
/// one; also values that share the file's bytes until they are 16 MiB larger than the data. kTagMoreNeeded
/// comes with a result of 1, with the position and the number of the bytes that are wanted next. Who goes
/// on ends when the same position is asked for twice.
class FI_EXPORT CIMAGETAG {
public:
    constexpr CIMAGETAG() = default;
    virtual ~CIMAGETAG();
    CIMAGETAG(const CIMAGETAG&) = delete;
    CIMAGETAG& operator=(const CIMAGETAG&) = delete;

    /// Parses a file (`url` not null; it is opened for writing, and CREATED when missing, see
    /// CMEMCARDFILE) or the `size` bytes at `data`, the file's first ones, which are never changed. Adds to
    /// the slots: CloseField() empties them before another file. `*format` is set once it is known,
    /// `*nextOffset` and `*nextSize` with error 10 only.
    /// 1, error 0: parsed. 1, error 10: stopped for more data, which a reader would have brought; also,
    /// with nothing in the slots, a JPEG that begins without Exif data. 0: error 1 (the file cannot be
    /// opened), 2, 3 (also: it cannot be read, or the rented reader has no file), 4 (neither JPEG nor TIFF)
    /// or 5 (not recognised, or the reader brought nothing new). After an error 10 or 5 a complete IFD0
    /// stays when IFD1 is what is not; else nothing does.
    uint8_t CreateField(CFURLRef url, const char* data, uint32_t size, int16_t* format,
                        uint32_t* nextOffset, uint32_t* nextSize, uint32_t* error);

    /// Goes on after an error 10: `data` are `length` bytes of the file from `position` on, which is where
    /// the directory stands that comes next. A value before `position` gives error 2, a directory there is
    /// left out. 1: error 0 or 10. 0: error 2 or 3.
    uint8_t PutExtraField(const char* data, uint32_t length, uint32_t position, uint32_t* nextOffset,
                          uint32_t* nextSize, uint32_t* error);

    /// The format of the file that begins with these bytes. 0: error 4 (neither JPEG nor TIFF) or 5 (fewer
    /// than 12 bytes; a first application segment of another kind).
    uint8_t CheckFormat(const char* data, uint32_t size, int16_t* format, uint32_t* error);

    /// 1 when the first APP1 segment holds Exif data. 0: error 4, 5 (too short, or another APP1) or 10 (no
    /// APP1 in these bytes).
    uint8_t SearchExifMagicInAPP1(const char* data, uint32_t size, uint32_t* error);

    /// Reads the header at the header position: byte order, and the next IFD position. 1 and error 0 when
    /// IFD0's entries lie in the data; 0: error 5 (no header) or 10 (they do not).
    uint8_t SearchFirstIFD(const char* data, uint32_t size, uint32_t* error);

    /// 1 when a directory with its entries fits into the `remaining` bytes at `ifd`; 0: error 10. A count
    /// above 2730 never fits.
    uint8_t CheckIFDSize(const char* ifd, uint32_t remaining, uint32_t* error);

    /// Parses from the next IFD position, `data` being the bytes from the buffer start on. Results as
    /// above.
    uint8_t SetTiffInfo(const char* data, uint32_t length, uint32_t* nextOffset, uint32_t* nextSize,
                        uint32_t* error);

    /// Gives slot 0 the sizes (tags 256 and 257) of a JPEG's frame. The lengths of the segments that were
    /// passed and the frame's sizes are left SWAPPED in `data`. 1, error 0; 1, error 10: no frame in these
    /// bytes, `*nextOffset` 0. 0: error 3.
    uint8_t SetJfifInfo(char* data, uint32_t size, uint32_t* nextOffset, uint32_t* nextSize,
                        uint32_t* error);

    /// Turns the 12 bytes of an entry into host order, in place, when the last header was big-endian.
    void FixUpEntry(char* entry);

    /// Fills a record from an entry in host order, `data` being the bytes from the buffer start on;
    /// `record->value` is OWNED (free, or PushChain). 0: error 2 or 3, the value is null.
    uint8_t GetTagData(const char* entry, IMAGETAG_INFO* record, const char* data, uint32_t length,
                       uint32_t* error);

    /// Appends a copy of the record, whose value it takes over, to a slot. 0: error 3 (the value stays the
    /// caller's), also for a slot beyond 7 and for one with 32767 records.
    uint8_t PushChain(const IMAGETAG_INFO* record, uint16_t slot, uint32_t* error);

    /// OWNED (ReleaseInfo): a copy of the first record with that tag; its value is BORROWED from the field
    /// until that is closed. Null: error 10 (no such tag) or 3.
    IMAGETAG_INFO* GetInfo(uint16_t slot, uint16_t tag, uint32_t* error);

    /// OWNED (ReleaseArray): a copy of a slot, `*size` bytes; values BORROWED as above. Null: error 10 (an
    /// empty slot) or 3.
    IMAGETAG_ARRAY* GetArray(uint16_t slot, uint32_t* size, uint32_t* error);

    /// Frees a copy; null is allowed.
    void ReleaseInfo(IMAGETAG_INFO* info);
    void ReleaseArray(IMAGETAG_ARRAY* array);

    /// Empties the slots from `from` to 7, all of them when it is negative.
    void ReleaseField(int32_t from);
    /// Empties all slots. The destructor does so, too.
    void CloseField();

    /// BORROWED: the reader that brings what lies beyond a caller's data; null for none. It must be open on
    /// the same file, and stays so.
    void RentMemCard(CMEMCARDFILE* reader);

    /// 1 when the last parse met a pointer to an Exif directory.
    [[nodiscard]] uint8_t HasExifIFD() const { return m_position.hasExifIFD; }

protected:
    CMEMCARDFILE* m_ownReader = nullptr;  ///< OWNED, while a file is parsed by its URL
    CMEMCARDFILE* m_reader = nullptr;     ///< BORROWED: the rented one, or the own
    IMAGETAG_FIELD m_fields[8] = {
        {0, 0, 0, nullptr}, {0, 0x8769, 0, nullptr}, {0, 0x8825, 0, nullptr}, {0, 0xA005, 0, nullptr},
        {1, 0, 0, nullptr}, {1, 0x8769, 0, nullptr}, {1, 0x8825, 0, nullptr}, {1, 0xA005, 0, nullptr},
    };
    IMAGETAG_POSITION m_position{};
};

/// The library's own reader, which the quick readers share. One thread at a time.
FI_EXPORT extern CIMAGETAG gImageTag;

}  // namespace fi
