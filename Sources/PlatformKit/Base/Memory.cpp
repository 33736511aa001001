// SPDX-License-Identifier: Apache-2.0
#include "PlatformKit/Memory.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace fi {

namespace {

/// The master pointer stands first, so that a handle is the address of its block's record.
struct Master {
    char* block;
    size_t size;
};

constexpr short kNoMemory = -108;

}  // namespace

Handle NewHandle(size_t size) {
    auto* master = static_cast<Master*>(std::malloc(sizeof(Master)));
    if (master == nullptr) return nullptr;
    master->block = static_cast<char*>(std::malloc(size == 0 ? 1 : size));
    master->size = size;
    if (master->block == nullptr) {
        std::free(master);
        return nullptr;
    }
    return &master->block;
}

void DisposeHandle(Handle handle) {
    if (handle == nullptr) return;
    auto* master = reinterpret_cast<Master*>(handle);
    std::free(master->block);
    std::free(master);
}

size_t GetHandleSize(Handle handle) {
    return handle == nullptr ? 0 : reinterpret_cast<Master*>(handle)->size;
}

short PtrToHand(const void* bytes, Handle* out, size_t size) {
    *out = NewHandle(size);
    if (*out == nullptr) return kNoMemory;
    if (size > 0) std::memcpy(**out, bytes, size);
    return 0;
}

}  // namespace fi
