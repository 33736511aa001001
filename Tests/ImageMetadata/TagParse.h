// SPDX-License-Identifier: Apache-2.0
// A CIMAGETAG that shows what it holds, and the ways to make one parse.
#pragma once

#include <array>
#include <cstdint>
#include <iosfwd>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include "FileImporter/CIMAGETAG.h"
#include "ImageMetadata/TagBytes.h"
#include "Support/TemporaryFolder.h"

namespace fi::test {

inline constexpr std::array kBothOrders = {ByteOrder::Little, ByteOrder::Big};
/// What a caller's variable holds before a call.
inline constexpr uint32_t kUntouched = 0xA5A5A5A5;
/// Bytes that a parse asks for.
inline constexpr uint32_t kStep = 20480;

/// Records of the slots 0 to 7.
using Counts = std::array<int, 8>;
using Tags = std::vector<uint16_t>;
using Shorts = std::vector<uint16_t>;
using Parsed = std::array<uint16_t, 6>;

class OpenTag : public CIMAGETAG {
public:
    [[nodiscard]] Counts counts() const;
    [[nodiscard]] Tags tags(size_t slot) const;
    [[nodiscard]] const IMAGETAG_FIELD& field(size_t slot) const { return m_fields[slot]; }
    /// A record, which must be there.
    [[nodiscard]] const IMAGETAG_INFO& record(size_t slot, size_t index = 0) const;
    [[nodiscard]] IMAGETAG_POSITION& position() { return m_position; }
    [[nodiscard]] const CMEMCARDFILE* ownReader() const { return m_ownReader; }
    [[nodiscard]] const CMEMCARDFILE* reader() const { return m_reader; }
};

/// The bytes of a record's value, and its numbers.
[[nodiscard]] Bytes bytesOf(const IMAGETAG_INFO& record);
[[nodiscard]] std::vector<uint64_t> numbersOf(const IMAGETAG_INFO& record);
[[nodiscard]] Parsed parsedOf(const IMAGETAG_INFO& record);

/// What a call says.
struct Answer {
    int result;
    uint32_t error;
    bool operator==(const Answer&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Answer& answer);

inline constexpr Answer kDone = {1, kTagNoError};
inline constexpr Answer kMore = {1, kTagMoreNeeded};
inline constexpr Answer kBadData = {0, kTagBadData};
inline constexpr Answer kNoMemory = {0, kTagNoMemory};
inline constexpr Answer kNotAnImage = {0, kTagNotAnImage};
inline constexpr Answer kNotRecognised = {0, kTagNotRecognised};

struct Outcome {
    Answer answer{-1, kUntouched};
    int16_t format = -1;
    uint32_t nextOffset = kUntouched;
    uint32_t nextSize = kUntouched;
};

/// CreateField() on bytes; only the first `size` of them are announced.
Outcome parse(CIMAGETAG& tag, const Bytes& bytes, size_t size = std::numeric_limits<size_t>::max());
Outcome parse(CIMAGETAG& tag, const TagBytes& file);
/// CreateField() on a file.
Outcome parseFile(CIMAGETAG& tag, const std::string& path);
/// PutExtraField() with the bytes from `position` on, `length` of them at most.
Outcome resume(CIMAGETAG& tag, const Bytes& file, uint32_t position, uint32_t length = kStep);

/// A reader that is open on a file: one of its own with these bytes, or that at a path.
class Card : public CMEMCARDFILE {
public:
    explicit Card(std::span<const uint8_t> bytes);
    explicit Card(const std::string& path);
    ~Card() override { CloseFile(); }
    Card(const Card&) = delete;
    Card& operator=(const Card&) = delete;

private:
    void open(const std::string& path);

    TemporaryFolder m_folder;
};

/// Refuses one request for memory; those before it and after it are met.
class OneRefusal {
public:
    explicit OneRefusal(int nth);
    ~OneRefusal();
    OneRefusal(const OneRefusal&) = delete;
    OneRefusal& operator=(const OneRefusal&) = delete;

    /// True once the request was made.
    [[nodiscard]] static bool happened();
};

/// Fills new memory of the process with the digit 7, so that a text without an end shows.
class DigitsInNewMemory {
public:
    DigitsInNewMemory();
    ~DigitsInNewMemory();
    DigitsInNewMemory(const DigitsInNewMemory&) = delete;
    DigitsInNewMemory& operator=(const DigitsInNewMemory&) = delete;
};

}  // namespace fi::test
