// SPDX-License-Identifier: Apache-2.0
#include "ImageMetadata/TagParse.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstring>
#include <ostream>

#include "ImageMetadata/TagTypes.h"
#include "PlatformKit/Base/Faults.h"

namespace fi::test {

namespace {

int g_requestsToMeet = 0;

}  // namespace

Counts OpenTag::counts() const {
    Counts counts{};
    std::transform(std::begin(m_fields), std::end(m_fields), counts.begin(),
                   [](const IMAGETAG_FIELD& field) { return field.count; });
    return counts;
}

Tags OpenTag::tags(size_t slot) const {
    Tags tags;
    for (int i = 0; i < m_fields[slot].count; ++i)
        tags.push_back(m_fields[slot].records[i].tag);
    return tags;
}

const IMAGETAG_INFO& OpenTag::record(size_t slot, size_t index) const {
    static constexpr IMAGETAG_INFO kNone{};
    if (static_cast<int>(index) < m_fields[slot].count) return m_fields[slot].records[index];
    ADD_FAILURE() << "slot " << slot << " has no record " << index;
    return kNone;
}

Bytes bytesOf(const IMAGETAG_INFO& record) {
    if (record.value == nullptr) return {};
    const size_t size = static_cast<size_t>(record.count) * unitSizeOfType(record.type);
    const auto* first = reinterpret_cast<const uint8_t*>(record.value);
    return Bytes(first, first + size);
}

std::vector<uint64_t> numbersOf(const IMAGETAG_INFO& record) {
    const Bytes bytes = bytesOf(record);
    const uint32_t unit = unitSizeOfType(record.type);
    std::vector<uint64_t> numbers;
    if (unit == 0) return numbers;
    for (size_t at = 0; at + unit <= bytes.size(); at += unit) {
        uint64_t number = 0;
        std::memcpy(&number, bytes.data() + at, unit);
        numbers.push_back(number);
    }
    return numbers;
}

Parsed parsedOf(const IMAGETAG_INFO& record) {
    Parsed parsed{};
    std::copy(std::begin(record.parsed), std::end(record.parsed), parsed.begin());
    return parsed;
}

std::ostream& operator<<(std::ostream& out, const Answer& answer) {
    return out << "result " << answer.result << ", error " << answer.error;
}

Outcome parse(CIMAGETAG& tag, const Bytes& bytes, size_t size) {
    Outcome outcome;
    outcome.answer.result =
        tag.CreateField(nullptr, reinterpret_cast<const char*>(bytes.data()),
                        static_cast<uint32_t>(std::min(size, bytes.size())), &outcome.format,
                        &outcome.nextOffset, &outcome.nextSize, &outcome.answer.error);
    return outcome;
}

Outcome parse(CIMAGETAG& tag, const TagBytes& file) {
    return parse(tag, file.bytes());
}

Outcome parseFile(CIMAGETAG& tag, const std::string& path) {
    Outcome outcome;
    const Ref<const CFURL> url = CFURL::createFromPath(path);
    outcome.answer.result = tag.CreateField(url.get(), nullptr, 0, &outcome.format, &outcome.nextOffset,
                                            &outcome.nextSize, &outcome.answer.error);
    return outcome;
}

Outcome resume(CIMAGETAG& tag, const Bytes& file, uint32_t position, uint32_t length) {
    // A block of its own, so that a look in front of it or behind it is one at foreign memory.
    const size_t start = std::min<size_t>(position, file.size());
    const size_t end = std::min<size_t>(start + length, file.size());
    const Bytes block(file.begin() + static_cast<ptrdiff_t>(start),
                      file.begin() + static_cast<ptrdiff_t>(end));
    const Bytes before = block;
    Outcome outcome;
    outcome.answer.result =
        tag.PutExtraField(reinterpret_cast<const char*>(block.data()), static_cast<uint32_t>(block.size()),
                          position, &outcome.nextOffset, &outcome.nextSize, &outcome.answer.error);
    EXPECT_TRUE(block == before) << "the caller's bytes were changed";
    return outcome;
}

Card::Card(std::span<const uint8_t> bytes) {
    open(m_folder.write("photo", bytes));
}

Card::Card(const std::string& path) {
    open(path);
}

void Card::open(const std::string& path) {
    const Ref<const CFURL> url = CFURL::createFromPath(path);
    uint32_t error = kUntouched;
    if (OpenFile(url.get(), &error, nullptr) == 0) ADD_FAILURE() << "error " << error;
}

OneRefusal::OneRefusal(int nth) {
    g_requestsToMeet = nth;
    g_faultInjector = [](Fault fault, std::string_view) {
        return fault == Fault::Allocation && g_requestsToMeet-- == 0;
    };
}

OneRefusal::~OneRefusal() {
    g_faultInjector = nullptr;
}

bool OneRefusal::happened() {
    return g_requestsToMeet < 0;
}

DigitsInNewMemory::DigitsInNewMemory() {
    // glibc fills with the complement of the number given.
    mallopt(M_PERTURB, 0xFF ^ '7');
}

DigitsInNewMemory::~DigitsInNewMemory() {
    mallopt(M_PERTURB, 0);
}

}  // namespace fi::test
