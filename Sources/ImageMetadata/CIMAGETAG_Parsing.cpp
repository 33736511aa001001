// SPDX-License-Identifier: Apache-2.0
// Parsing with CIMAGETAG: of a file, of a caller's data, and going on with more of them.
#include <cstdlib>
#include <memory>
#include <optional>
#include <utility>

#include "FileImporter/CIMAGETAG.h"
#include "ImageMetadata/TagMemory.h"
#include "ImageMetadata/TagValue.h"
#include "ImageMetadata/TagWalk.h"

namespace fi {

namespace {

const uint8_t* bytesOf(const char* data) {
    return reinterpret_cast<const uint8_t*>(data);
}

/// Puts what a walk finds into the slots.
class FieldSink final : public TagSink {
public:
    explicit FieldSink(CIMAGETAG& field) : m_field(field) {}

    uint32_t take(uint16_t slot, const FoundTag& tag) override {
        IMAGETAG_INFO record;
        uint32_t code = makeRecord(tag, record);
        if (code != kTagNoError) return code;
        if (m_field.PushChain(&record, slot, &code) == 0) std::free(record.value);
        return code;
    }

    void release(int32_t from) override { m_field.ReleaseField(from); }

private:
    CIMAGETAG& m_field;
};

/// A reader and the memory for one block of it.
class Blocks {
public:
    /// False without memory, and for a reader that has no file.
    bool prepare(CMEMCARDFILE& reader) {
        uint32_t error = kTagNoError;
        if (reader.GetMaxSizeofDataBlock(&m_size, &error) == 0) return false;
        m_buffer.reset(static_cast<char*>(allocateTagMemory(m_size, "CreateField")));
        m_reader = &reader;
        return m_buffer != nullptr;
    }

    bool readFirst(uint32_t& got) {
        uint32_t more = 0;
        uint32_t error = kTagNoError;
        return m_reader->GetDataBlock(m_buffer.get(), &got, &more, &error) != 0;
    }

    /// False when nothing came.
    bool fetch(uint32_t offset, uint32_t& got) {
        uint32_t error = kTagNoError;
        return m_reader->GetDataBlockSpecification(m_buffer.get(), offset, m_size, &got, &error) != 0 &&
               got > 0;
    }

    [[nodiscard]] const char* data() const { return m_buffer.get(); }
    [[nodiscard]] CMEMCARDFILE* reader() const { return m_reader; }

private:
    struct Free {
        void operator()(char* block) const { std::free(block); }
    };
    std::unique_ptr<char, Free> m_buffer;
    uint32_t m_size = 0;
    CMEMCARDFILE* m_reader = nullptr;  ///< BORROWED; null for none
};

/// A file opened for one parse.
class OwnReader {
public:
    OwnReader() = default;
    ~OwnReader() { m_file.CloseFile(); }
    OwnReader(const OwnReader&) = delete;
    OwnReader& operator=(const OwnReader&) = delete;

    CMEMCARDFILE& file() { return m_file; }

private:
    CMEMCARDFILE m_file;
};

uint32_t walkInto(CIMAGETAG& field, IMAGETAG_POSITION& position, CMEMCARDFILE* reader, TagData& data,
                  uint64_t directory) {
    FieldSink sink(field);
    return walkDirectories(position, data, reader, sink, directory);
}

/// Goes on block by block. A block that was walked and did not do is not fetched again.
uint32_t goOn(CIMAGETAG& field, IMAGETAG_POSITION& position, Blocks& blocks) {
    std::optional<std::pair<uint32_t, uint32_t>> tried;
    for (;;) {
        const std::pair<uint32_t, uint32_t> wanted(position.nextIFDPosition, position.currentMainIFD);
        uint32_t got = 0;
        if (tried == wanted || !blocks.fetch(wanted.first, got)) return kTagNotRecognised;
        tried = wanted;
        position.bufferStart = wanted.first;
        TagData block(bytesOf(blocks.data()), got, wanted.first);
        const uint32_t code = walkInto(field, position, blocks.reader(), block, wanted.first);
        if (code != kTagMoreNeeded) return code;
    }
}

/// From the file's first bytes, whose position is that of a new parse.
uint32_t parseFromStart(CIMAGETAG& field, IMAGETAG_POSITION& position, TagData& data, Blocks& blocks,
                        int16_t* format) {
    uint32_t code = recogniseFile(position, data);
    if (code != kTagNoError) return code;
    *format = static_cast<int16_t>(position.format);
    if (isPlainJfif(position)) {
        // Walked as if IFD0 stood at its first byte, where no directory ever fits.
        position.nextIFDPosition = 0;
        return walkInto(field, position, blocks.reader(), data, 0);
    }
    code = searchFirstIFD(position, data);
    if (code == kTagNoError)
        code = walkInto(field, position, blocks.reader(), data, position.nextIFDPosition);
    return code == kTagMoreNeeded && blocks.reader() != nullptr ? goOn(field, position, blocks) : code;
}

uint32_t parseFile(CIMAGETAG& field, IMAGETAG_POSITION& position, CMEMCARDFILE& file, CFURLRef url,
                   int16_t* format) {
    uint32_t error = kTagNoError;
    if (file.OpenFile(url, &error, nullptr) == 0) return kTagOpenFailed;
    Blocks blocks;
    uint32_t length = 0;
    if (!blocks.prepare(file) || !blocks.readFirst(length)) return kTagNoMemory;
    TagData data(bytesOf(blocks.data()), length);
    return parseFromStart(field, position, data, blocks, format);
}

uint32_t parseHead(CIMAGETAG& field, IMAGETAG_POSITION& position, CMEMCARDFILE* reader, TagData& data,
                   int16_t* format) {
    Blocks blocks;
    if (reader != nullptr && !blocks.prepare(*reader)) return kTagNoMemory;
    return parseFromStart(field, position, data, blocks, format);
}

uint8_t answer(uint32_t code, const IMAGETAG_POSITION& position, uint32_t* nextOffset, uint32_t* nextSize,
               uint32_t* error) {
    *error = code;
    if (code == kTagMoreNeeded) {
        *nextOffset = position.nextIFDPosition;
        *nextSize = kStretchWanted;
    }
    return code == kTagNoError || code == kTagMoreNeeded ? 1 : 0;
}

}  // namespace

uint8_t CIMAGETAG::CreateField(CFURLRef url, const char* data, uint32_t size, int16_t* format,
                               uint32_t* nextOffset, uint32_t* nextSize, uint32_t* error) {
    m_position.currentMainIFD = 0;
    m_position.hasExifIFD = 0;
    m_position.bufferStart = 0;
    CMEMCARDFILE* const rented = m_reader;
    OwnReader own;
    if (url != nullptr) m_reader = m_ownReader = &own.file();
    TagData head(bytesOf(data), size);
    const uint32_t code = url != nullptr ? parseFile(*this, m_position, *m_ownReader, url, format)
                                         : parseHead(*this, m_position, m_reader, head, format);
    m_ownReader = nullptr;
    m_reader = rented;
    return answer(code, m_position, nextOffset, nextSize, error);
}

uint8_t CIMAGETAG::PutExtraField(const char* data, uint32_t length, uint32_t position, uint32_t* nextOffset,
                                 uint32_t* nextSize, uint32_t* error) {
    m_position.bufferStart = position;
    TagData inHand(bytesOf(data), length, position);
    const uint32_t code = walkInto(*this, m_position, m_reader, inHand, position);
    return answer(code, m_position, nextOffset, nextSize, error);
}

uint8_t CIMAGETAG::SetTiffInfo(const char* data, uint32_t length, uint32_t* nextOffset, uint32_t* nextSize,
                               uint32_t* error) {
    TagData inHand(bytesOf(data), length, m_position.bufferStart);
    const uint32_t code = walkInto(*this, m_position, m_reader, inHand, m_position.nextIFDPosition);
    return answer(code, m_position, nextOffset, nextSize, error);
}

void CIMAGETAG::RentMemCard(CMEMCARDFILE* reader) {
    m_reader = reader;
}

}  // namespace fi
