// SPDX-License-Identifier: Apache-2.0
#include "Foundation/HeadRead.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "Foundation/FileTypes.h"
#include "PlatformKit/Base/Faults.h"
#include "PlatformKit/Files/FileSource.h"
#include "PlatformKit/Files/FileSystem.h"

namespace fi {

HeadRead readHead(CFStringRef path, ReadLimit limit) {
    HeadRead result;
    if (path == nullptr || isQALFile(path)) return result;
    const auto facts = fileFacts(path->c_str(), Links::Follow);
    const uint32_t size = facts ? static_cast<uint32_t>(facts->size) : 0;
    if (size == 0) return result;
    const uint32_t wanted = limit == ReadLimit::Head ? std::min(size, kHeadBytes) : size;
    result.readSize = wanted;

    if (facts->isFolder) {
        // One that may be opened refuses to be read then.
        if (faccessat(AT_FDCWD, path->c_str(), R_OK, AT_EACCESS) == 0) result.code = kMemFullErr;
        return result;
    }
    const auto source = openFileSource(path->c_str());
    if (!source) return result;
    std::vector<uint8_t> bytes(wanted);
    size_t count = source->read(0, bytes);
    if (source->failed()) {
        result.code = kMemFullErr;
        return result;
    }
    if (faultHappens(Fault::ShortRead, path->view())) count /= 2;
    bytes.resize(count);
    result = {kNoErr, CFData::adopting(std::move(bytes)), wanted};
    return result;
}

void* readFileBlock(CFURLRef url, uint32_t* size, ReadLimit limit) {
    if (url == nullptr || url->path() == nullptr) return nullptr;
    HeadRead head = readHead(url->path(), limit);
    if (head.code != kNoErr) return nullptr;
    if (head.data->length() < head.readSize) {
        if (faultHappens(Fault::WholeRead, url->path()->view())) return nullptr;
        head.data = contentsOfFile(url->path()->c_str());
        if (!head.data) return nullptr;
        head.readSize = static_cast<uint32_t>(head.data->length());
    }
    const size_t length = head.data->length();
    void* block =
        faultHappens(Fault::Allocation, "readFileBlock") ? nullptr : std::malloc(length == 0 ? 1 : length);
    if (block != nullptr && length > 0) std::memcpy(block, head.data->bytes().data(), length);
    if (size != nullptr) *size = head.readSize;
    return block;
}

}  // namespace fi
