// SPDX-License-Identifier: Apache-2.0
#include "FileImporter/CMEMCARDFILE.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>

#include "Foundation/FileServices.h"
#include "PlatformKit/Base/Boundary.h"
#include "PlatformKit/Base/Faults.h"

namespace fi {

static_assert(sizeof(MEMCARDFILE_INFO) == 52 && offsetof(MEMCARDFILE_INFO, creationDate) == 4 &&
              offsetof(MEMCARDFILE_INFO, secondDate) == 18 &&
              offsetof(MEMCARDFILE_INFO, modificationDate) == 32 &&
              offsetof(MEMCARDFILE_INFO, trailing) == 48);

namespace {

constexpr size_t kPathBytes = 2048;  ///< with the NUL at the end
constexpr uint32_t kNoSize = 0xFFFFFFFF;

uint8_t answer(uint32_t* error, uint32_t code) {
    *error = code;
    return code == kTagNoError ? 1 : 0;
}

char* allocate(uint64_t size, std::string_view who) {
    if (faultHappens(Fault::Allocation, who)) return nullptr;
    return static_cast<char*>(std::malloc(std::max<uint64_t>(size, 1)));
}

/// The descriptor; -1 when the file cannot be opened so.
int16_t openForReadingAndWriting(const char* path) {
    // Neither a pipe nor a device may keep us waiting, or become our terminal.
    const int descriptor = open(path, O_RDWR | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
    if (descriptor > 0 && descriptor <= std::numeric_limits<int16_t>::max())
        return static_cast<int16_t>(descriptor);
    // 0 stands for "no file", and a number cut to 16 bits would be another file's.
    if (descriptor >= 0) close(descriptor);
    return descriptor == 0 ? 0 : -1;
}

ssize_t readOnce(int descriptor, char* buffer, uint64_t size) {
    ssize_t count = 0;
    do {
        count = read(descriptor, buffer, size);
    } while (count < 0 && errno == EINTR);
    return count;
}

/// A stretch of a file and the whole alignment units around it. 64 bits: nothing here can wrap.
struct WidenedStretch {
    WidenedStretch(uint32_t offset, uint32_t length, uint32_t unit)
        : lead(offset % unit),
          start(offset - lead),
          span(std::min((uint64_t{lead} + length + unit - 1) / unit * unit,
                        uint64_t{length} + 2 * uint64_t{unit})) {}

    uint32_t lead;   ///< bytes in front of the stretch
    uint32_t start;  ///< offset of the first unit
    uint64_t span;   ///< bytes of all units
};

/// As much of `span` as a read at `start` can fill: what the file has there, and a byte that tells of a
/// file that has grown. Whatever is no regular file has nothing.
uint64_t roomFor(int descriptor, uint32_t start, uint64_t span) {
    struct stat status {};
    const bool regular = descriptor > 0 && fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    const uint64_t size = regular ? static_cast<uint64_t>(status.st_size) : 0;
    return std::min(span, (size > start ? size - start : 0) + 1);
}

struct OpenedFile {
    int descriptor;
    uint32_t size;          ///< modulo 2^32
    uint32_t readPosition;  ///< sum of the sequential reads
};

struct ReadRequest {
    int64_t offset;  ///< negative: where the file stands
    uint64_t length;
    char* buffer;
    uint64_t room;  ///< of the buffer
};

/// Reads once and checks that all came that the file has there, which is counted modulo 2^32: behind the
/// end everything is expected and too little comes. Afterwards the file stands at the offset plus the read
/// position; that sum is the right place after a read at 0 alone, and callers know it so.
uint32_t readStretch(const OpenedFile& file, const ReadRequest& request, uint32_t* got) {
    const int64_t offset = request.offset;
    if (offset >= 0 && lseek(file.descriptor, offset, SEEK_SET) == -1) return kCardReadFailed;
    const uint32_t position = offset < 0 ? file.readPosition : static_cast<uint32_t>(offset);
    const uint64_t expected = std::min<uint64_t>(file.size - position, request.length);
    const ssize_t count = readOnce(file.descriptor, request.buffer, std::min(request.length, request.room));
    *got = static_cast<uint32_t>(count);
    if (count < 0 || static_cast<uint64_t>(count) != expected) return kCardReadFailed;
    const auto next = static_cast<int64_t>(static_cast<uint64_t>(offset) + file.readPosition);
    return lseek(file.descriptor, next, SEEK_SET) == -1 ? kCardReadFailed : kTagNoError;
}

}  // namespace

CMEMCARDFILE::~CMEMCARDFILE() = default;

uint8_t CMEMCARDFILE::OpenFile(CFURLRef url, uint32_t* error, int32_t* /*unused*/) {
    CloseFile();
    char path[kPathBytes];
    if (url == nullptr || !url->fileSystemRepresentation(path, sizeof path))
        return answer(error, kTagOpenFailed);
    m_descriptor = openForReadingAndWriting(path);
    if (m_descriptor == 0) return answer(error, kTagOpenFailed);
    m_info.fileSize = fileSizeAt(url);
    m_blockSize = m_info.fileSize;
    if (m_info.fileSize == kNoSize) return answer(error, kTagOpenFailed);
    if (GetFileTime(url, &m_info.creationDate, &m_info.secondDate, &m_info.modificationDate) != 0)
        return answer(error, kTagOpenFailed);
    m_block = allocate(m_blockSize, "OpenFile");
    return answer(error, m_block != nullptr ? kTagNoError : kCardNoMemory);
}

int16_t CMEMCARDFILE::GetFileTime(CFURLRef url, DateTimeRec* creation, DateTimeRec* /*second*/,
                                  DateTimeRec* modification) {
    if (faultHappens(Fault::FileTimes)) return kNotFoundErr;
    return guarded([&] { return fileTimes(url, creation, modification); }, kNotFoundErr);
}

void CMEMCARDFILE::CloseFile() {
    if (m_descriptor > 0) close(m_descriptor);
    m_descriptor = 0;
    std::free(m_block);
    m_block = nullptr;
}

uint8_t CMEMCARDFILE::GetMaxSizeofDataBlock(uint32_t* size, uint32_t* error) {
    if (m_descriptor == 0) return answer(error, kCardNotOpen);
    *size = m_blockSize;
    return answer(error, kTagNoError);
}

uint8_t CMEMCARDFILE::GetDataBlock(char* dest, uint32_t* length, uint32_t* more, uint32_t* error) {
    if (ReadImage1Block(error) == 0) return 0;
    if (m_bytesInBlock > 0) std::memcpy(dest, m_block, m_bytesInBlock);
    *length = m_bytesInBlock;
    *more = m_readPosition < m_info.fileSize ? 1 : 0;
    return 1;
}

uint8_t CMEMCARDFILE::ReadImage1Block(uint32_t* error) {
    if (m_descriptor == 0) return answer(error, kCardNotOpen);
    // Without a block (no memory at the opening) the system refuses to read.
    const uint32_t asked = std::min(m_info.fileSize - m_readPosition, m_blockSize);
    const ssize_t count = readOnce(m_descriptor, m_block, asked);
    m_bytesInBlock = static_cast<uint32_t>(count);
    if (count < 0 || m_bytesInBlock != asked) return answer(error, kCardReadFailed);
    m_readPosition += m_bytesInBlock;
    return answer(error, kTagNoError);
}

uint8_t CMEMCARDFILE::GetDataBlockSpecification(char* dest, uint32_t offset, uint32_t length, uint32_t* got,
                                                uint32_t* error) {
    if (m_descriptor == 0) return answer(error, kCardNotOpen);
    const WidenedStretch stretch(offset, length, m_alignmentUnit);
    const uint64_t room = roomFor(m_descriptor, stretch.start, stretch.span);
    const std::unique_ptr<char, decltype(&std::free)> block(allocate(room, "GetDataBlockSpecification"),
                                                            &std::free);
    if (!block) return answer(error, kCardNoMemory);
    uint32_t count = 0;
    const uint32_t code = readStretch({m_descriptor, m_info.fileSize, m_readPosition},
                                      {stretch.start, stretch.span, block.get(), room}, &count);
    if (code != kTagNoError) return answer(error, code);
    // The file ends inside the lead, or nothing was to be read: the offset may lie behind its end.
    if (count < stretch.lead || (count == 0 && offset > m_info.fileSize))
        return answer(error, kCardReadFailed);
    *got = std::min(count - stretch.lead, length);
    if (*got > 0) std::memcpy(dest, block.get() + stretch.lead, *got);
    return answer(error, kTagNoError);
}

uint32_t CMEMCARDFILE::CalcExtendSize(int64_t* offset, int64_t* lead, uint32_t* length, uint32_t limit) {
    const WidenedStretch stretch(static_cast<uint32_t>(*offset), *length, m_alignmentUnit);
    *offset = stretch.start;
    *lead = stretch.lead;
    *length = static_cast<uint32_t>(std::min<uint64_t>(stretch.span, limit));
    return static_cast<uint32_t>(stretch.span / m_alignmentUnit);
}

uint8_t CMEMCARDFILE::ReadImageExtend(char* buf, uint32_t len, int64_t offset, uint32_t* got,
                                      uint32_t* error) {
    if (m_descriptor == 0) return answer(error, kCardNotOpen);
    return answer(
        error, readStretch({m_descriptor, m_info.fileSize, m_readPosition}, {offset, len, buf, len}, got));
}

uint8_t CMEMCARDFILE::GetFileInfo(MEMCARDFILE_INFO* info, uint32_t* error) {
    if (m_descriptor == 0) return answer(error, kCardNotOpen);
    *info = m_info;
    return answer(error, kTagNoError);
}

}  // namespace fi
