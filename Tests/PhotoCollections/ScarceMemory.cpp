// SPDX-License-Identifier: Apache-2.0
#include "PhotoCollections/ScarceMemory.h"

#include <cstdlib>
#include <new>

namespace fi::test {

namespace {

constexpr long kPlenty = -1;
thread_local long t_left = kPlenty;
thread_local bool t_ranOut = false;

void* allocated(std::size_t size) {
    if (t_left == 0) {
        t_ranOut = true;
        throw std::bad_alloc();
    }
    if (t_left > 0) --t_left;
    if (void* block = std::malloc(size > 0 ? size : 1)) return block;
    throw std::bad_alloc();
}

}  // namespace

ScarceMemory::ScarceMemory(long allocations) {
    t_ranOut = false;
    t_left = allocations;
}

ScarceMemory::~ScarceMemory() {
    t_left = kPlenty;
}

bool ScarceMemory::ranOut() const {
    return t_ranOut;
}

}  // namespace fi::test

// The whole program allocates through these.
void* operator new(std::size_t size) {
    return fi::test::allocated(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
    std::free(block);
}
