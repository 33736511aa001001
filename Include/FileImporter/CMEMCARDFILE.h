// SPDX-License-Identifier: Apache-2.0
// Reads one file of a memory card in blocks: in sequence, and at any offset.
#pragma once

#include <cstdint>

#include "PlatformKit/DateTime.h"
#include "PlatformKit/URL.h"

namespace fi {

/// What is known of an open file.
struct MEMCARDFILE_INFO {
    uint32_t fileSize;  ///< bytes modulo 2^32; of a symbolic link itself
    DateTimeRec creationDate;
    DateTimeRec secondDate;  ///< never filled: all zero
    DateTimeRec modificationDate;
    uint32_t trailing;  ///< never filled: 0
};

/// Error codes that CMEMCARDFILE and CIMAGETAG report. Beside them every operation answers 1 for success
/// and 0 for failure.
inline constexpr uint32_t kTagNoError = 0;
inline constexpr uint32_t kTagOpenFailed = 1;  ///< the file could not be opened, sized or dated
inline constexpr uint32_t kTagBadData = 2;  ///< CIMAGETAG: an entry that cannot be; CMEMCARDFILE: no memory
inline constexpr uint32_t kTagNoMemory = 3;    ///< CIMAGETAG: no memory; CMEMCARDFILE: reading failed
inline constexpr uint32_t kTagNotAnImage = 4;  ///< CIMAGETAG: neither JPEG nor TIFF; CMEMCARDFILE: not open
inline constexpr uint32_t kTagNotRecognised =
    5;                                          ///< not recognised, too short, or a block that did not come
inline constexpr uint32_t kTagMoreNeeded = 10;  ///< more data are needed, or the tag is not there

/// The same numbers by the names that fit a reader of cards.
inline constexpr uint32_t kCardNoMemory = 2;
inline constexpr uint32_t kCardReadFailed = 3;
inline constexpr uint32_t kCardNotOpen = 4;

/// One thread at a time. Nothing is thrown. The destructor does not close: call CloseFile() in any case,
/// after a failed OpenFile() too. Pointers must not be null unless an operation says so. Nothing waits for
/// a pipe or a device: what is no regular file has no bytes.
class FI_EXPORT CMEMCARDFILE {
public:
    CMEMCARDFILE() = default;
    virtual ~CMEMCARDFILE();
    CMEMCARDFILE(const CMEMCARDFILE&) = delete;
    CMEMCARDFILE& operator=(const CMEMCARDFILE&) = delete;

    /// Opens a file for reading and writing, links followed; one that was open is closed first, and the
    /// read position stays. A file that does NOT EXIST IS CREATED; the bytes of one that exists are left
    /// alone. One that cannot be opened so (a folder, a file on a locked card) looks open all the same, and
    /// each read of it fails with 3. 1 and error 0; else 0 and 1 (no path, a path of 2048 bytes and more, a
    /// size of 0xFFFFFFFF, no dates, or 0 as the descriptor, which stands for none) or 2 (no memory for a
    /// block as large as the file); what a failed call did set stays. `unused` is never touched and may be
    /// null.
    uint8_t OpenFile(CFURLRef url, uint32_t* error, int32_t* unused);

    /// Dates of a file, which need not be open; see CMF_GetFileTime for them, for the result and for null
    /// pointers. `second` is never touched.
    int16_t GetFileTime(CFURLRef url, DateTimeRec* creation, DateTimeRec* second,
                        DateTimeRec* modification);

    /// Closes what is open and frees the block. Any number of times.
    void CloseFile();

    /// Bytes that GetDataBlock() may bring: the file's size, of a link its own. Error 4 when no file is
    /// open.
    uint8_t GetMaxSizeofDataBlock(uint32_t* size, uint32_t* error);

    /// Copies the next block of the sequence to `dest` (of the largest block's size), its bytes to
    /// `*length`, and to `*more` 1 when some of the file follows. Errors 3 and 4.
    uint8_t GetDataBlock(char* dest, uint32_t* length, uint32_t* more, uint32_t* error);

    /// Reads the next block of the sequence into the reader's own block. Errors 3 (also when fewer bytes
    /// came than the file has; the read position stays) and 4.
    uint8_t ReadImage1Block(uint32_t* error);

    /// Reads `length` bytes at `offset` into `dest`; `*got` are those that exist (0 at the very end).
    /// Errors 2, 3 (an offset beyond the end, too; nothing is copied) and 4. The read position stays.
    uint8_t GetDataBlockSpecification(char* dest, uint32_t offset, uint32_t length, uint32_t* got,
                                      uint32_t* error);

    /// Widens a stretch to whole alignment units: `*offset` is cut down, `*lead` is what was cut off it,
    /// `*length` becomes the span, `limit` at most. Returns the units of the span without that limit. Works
    /// on the low 32 bits of the offset. Needs no open file.
    uint32_t CalcExtendSize(int64_t* offset, int64_t* lead, uint32_t* length, uint32_t limit);

    /// Reads `len` bytes at `offset`, or where the file stands when it is negative, into `buf`. Afterwards
    /// the file stands at the offset plus the read position, which is where the next block begins only
    /// after a read at 0. `*got` are the bytes that came, all ones when reading failed, and untouched when
    /// seeking did. Errors 3 (also when fewer or more bytes came than the file had there when it was
    /// opened, or any less than `len` behind its end) and 4.
    uint8_t ReadImageExtend(char* buf, uint32_t len, int64_t offset, uint32_t* got, uint32_t* error);

    /// Copies what is known of the file. Error 4.
    uint8_t GetFileInfo(MEMCARDFILE_INFO* info, uint32_t* error);

protected:
    int16_t m_descriptor = 0;  ///< 0: no file
    char* m_block = nullptr;   ///< OWNED
    uint32_t m_blockSize = 0;
    uint32_t m_bytesInBlock = 0;
    uint32_t m_readPosition = 0;  ///< sum of the sequential reads
    MEMCARDFILE_INFO m_info{};
    uint32_t m_alignmentUnit = 512;  ///< one sector; never 0
};

}  // namespace fi
