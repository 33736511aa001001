// SPDX-License-Identifier: Apache-2.0
#include "FileImporter/DcfNames.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "PlatformKit/Text/PascalText.h"

namespace fi {

namespace {

constexpr std::string_view kRoot = "DCIM:";
constexpr std::string_view kPseudoFolder = "XXXX:XXXXXXXX:";
constexpr size_t kFolderStart = 5;   // of a path's folder name
constexpr size_t kFolderLength = 8;  // three digits and five free characters
constexpr size_t kFolderDigits = 3;
constexpr size_t kNameStart = kFolderStart + kFolderLength + 1;
constexpr size_t kShortestPath = 19;
constexpr unsigned char kNameLength = 12;  // of a DCF file name
constexpr size_t kNumberStart = 5;         // 1-based, four digits

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool hasSomeOfTheRoot(std::string_view path) {
    // One character in its place is enough.
    for (size_t i = 0; i < kRoot.size(); ++i) {
        if (path[i] == kRoot[i]) return true;
    }
    return false;
}

using Name = unsigned char[256];

void copyName(const unsigned char* from, Name& to) {
    std::memcpy(to, from, size_t{from[0]} + 1);
}

enum class Pass : uint8_t { First, Later };

/// The order of two names by the positions of their first digit runs, which differ.
int16_t compareDifferentPositions(int16_t a, int16_t b, Pass pass) {
    if (pass == Pass::First && a == -1) return 1;  // a name without digits goes after one with
    if (pass == Pass::First && b == -1) return -1;
    return a < b ? -1 : 1;
}

/// The order of two digit runs: by number, then the shorter first; 0 for the same digits.
int16_t compareRuns(const Name& a, const Name& b) {
    const int32_t numberA = numberFromDigits(pascalView(a));
    const int32_t numberB = numberFromDigits(pascalView(b));
    if (numberA != numberB) return numberA < numberB ? -1 : 1;
    if (a[0] != b[0]) return a[0] < b[0] ? -1 : 1;
    return 0;
}

/// Two names without DCF form, compared run by run.
int16_t compareByRuns(const unsigned char* a, const unsigned char* b) {
    Name restA;
    Name restB;
    copyName(a, restA);
    copyName(b, restB);
    for (Pass pass = Pass::First;; pass = Pass::Later) {
        Name runA{};
        Name runB{};
        const int16_t positionA = GetFirstDigitPos(restA, runA);
        const int16_t positionB = GetFirstDigitPos(restB, runB);
        if (positionA != positionB) return compareDifferentPositions(positionA, positionB, pass);
        if (positionA == -1) break;
        if (const int16_t order = compareRuns(runA, runB); order != 0) return order;
        const auto used = static_cast<unsigned char>(positionA + runA[0]);
        Remove(1, used, restA);
        Remove(1, used, restB);
    }
    return static_cast<int16_t>(compareBytes(pascalView(a), pascalView(b)));
}

}  // namespace

bool IsDCIMFile(const char* path) {
    const std::string_view text = path;
    if (text.size() < kShortestPath || !hasSomeOfTheRoot(text)) return false;
    const std::string_view fromFolder = text.substr(kFolderStart);
    if (std::min(fromFolder.find(':'), fromFolder.size()) != kFolderLength) return false;
    if (fromFolder[0] < '1' || fromFolder[0] > '9' || !isDigit(fromFolder[1]) || !isDigit(fromFolder[2])) {
        return false;
    }
    return text.find(':', kNameStart) == std::string_view::npos;
}

void MakeComparePath(const char* path, char* out) {
    const std::string_view text = path;
    const auto append = [&out](std::string_view part) { out = std::copy(part.begin(), part.end(), out); };
    if (IsDCIMFile(path)) {
        append(text.substr(0, kFolderStart));
        append(text.substr(kFolderStart + kFolderDigits, kFolderLength - kFolderDigits));
        append(text.substr(kFolderStart, kFolderDigits));
        append(":");
        append(text.substr(kNameStart));
    } else {
        const size_t colon = text.rfind(':');
        append(kPseudoFolder);
        append(colon == std::string_view::npos ? text : text.substr(colon + 1));
    }
    *out = '\0';
}

bool CheckDCFFile(const unsigned char* name) {
    return name[0] == kNameLength &&
           CheckDigitString(reinterpret_cast<const char*>(name) + kNumberStart, 4);
}

int16_t CheckDCFFilesCompare(const unsigned char* a, const unsigned char* b) {
    if (CheckDCFFile(b)) return CheckDCFFile(a) ? 0 : 1;
    if (CheckDCFFile(a)) return -1;
    return compareByRuns(a, b);
}

int16_t GetFirstDigitPos(const unsigned char* s, unsigned char (&run)[256]) {
    const std::string_view text = pascalView(s);
    const auto first = std::find_if(text.begin(), text.end(), isDigit);
    if (first == text.end()) return -1;
    const auto end = std::find_if_not(first, text.end(), isDigit);
    for (auto digit = first; digit != end && run[0] < 255; ++digit)
        run[++run[0]] = static_cast<unsigned char>(*digit);
    return static_cast<int16_t>(first - text.begin());
}

void Remove(unsigned char start, unsigned char count, unsigned char (&s)[256]) {
    const size_t length = s[0];
    if (length < start) return;
    const size_t from = start == 0 ? 1 : start;
    const size_t cut = std::min<size_t>(count, length + 1 - from);
    if (from + cut <= length) std::memmove(s + from, s + from + cut, length + 1 - (from + cut));
    s[0] = static_cast<unsigned char>(length - cut);
}

bool CheckDigitString(const char* s, int16_t n) {
    return n < 1 || std::all_of(s, s + n, isDigit);
}

bool FileExistSameFolder(CFURLRef a, CFURLRef b) {
    if (a == nullptr || b == nullptr) return false;
    const auto parentA = a->createWithoutLastPathComponent();
    const auto parentB = b->createWithoutLastPathComponent();
    // A URL that is no file URL has no folder, and two without a folder do not share one.
    return parentA && parentA == parentB;
}

}  // namespace fi
