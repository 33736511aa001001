// SPDX-License-Identifier: Apache-2.0
#include "Support/FailingAllocations.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local bool t_counting = false;
thread_local bool t_refused = false;
thread_local int t_successesLeft = 0;

bool mayAllocate() {
    if (!t_counting) return true;
    if (t_successesLeft > 0) {
        --t_successesLeft;
        return true;
    }
    t_refused = true;
    return false;
}

void* allocate(std::size_t size) noexcept {
    return mayAllocate() ? std::malloc(size == 0 ? 1 : size) : nullptr;
}

void* allocateOrThrow(std::size_t size) {
    void* block = allocate(size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

// All of them, so that no block goes from one family to the other.
void* operator new(std::size_t size) {
    return allocateOrThrow(size);
}
void* operator new[](std::size_t size) {
    return allocateOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}

namespace fi::test {

FailingAllocations::FailingAllocations(int successes) {
    t_refused = false;
    t_successesLeft = successes;
    t_counting = true;
}

FailingAllocations::~FailingAllocations() {
    t_counting = false;
}

bool FailingAllocations::happened() const {
    return t_refused;
}

}  // namespace fi::test
