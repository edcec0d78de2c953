// Counts every allocation of the process through operator new and delete. The size of a block
// is what the heap really reserved for it (malloc_usable_size), so the figures include the
// rounding of small blocks but not the heap's own bookkeeping word.
#include "AllocationCounter.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<int64_t> held{0};
std::atomic<int64_t> peak{0};

void* allocate(std::size_t size) {
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) throw std::bad_alloc();
    const auto bytes = static_cast<int64_t>(malloc_usable_size(block));
    const int64_t now = held.fetch_add(bytes, std::memory_order_relaxed) + bytes;
    int64_t top = peak.load(std::memory_order_relaxed);
    while (now > top && !peak.compare_exchange_weak(top, now, std::memory_order_relaxed)) {
    }
    return block;
}

void* allocateAligned(std::size_t size, std::align_val_t alignment) {
    const auto align = static_cast<std::size_t>(alignment);
    void* block = std::aligned_alloc(align, (size + align - 1) / align * align);
    if (block == nullptr) throw std::bad_alloc();
    const auto bytes = static_cast<int64_t>(malloc_usable_size(block));
    const int64_t now = held.fetch_add(bytes, std::memory_order_relaxed) + bytes;
    int64_t top = peak.load(std::memory_order_relaxed);
    while (now > top && !peak.compare_exchange_weak(top, now, std::memory_order_relaxed)) {
    }
    return block;
}

void release(void* block) noexcept {
    if (block == nullptr) return;
    held.fetch_sub(static_cast<int64_t>(malloc_usable_size(block)), std::memory_order_relaxed);
    std::free(block);
}

}  // namespace

namespace velmora::bench {

int64_t heldBytes() {
    return held.load(std::memory_order_relaxed);
}

int64_t peakHeldBytes() {
    return peak.load(std::memory_order_relaxed);
}

void resetPeak() {
    peak.store(held.load(std::memory_order_relaxed), std::memory_order_relaxed);
}

}  // namespace velmora::bench

void* operator new(std::size_t size) {
    return allocate(size);
}
void* operator new[](std::size_t size) {
    return allocate(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocateAligned(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
    return allocateAligned(size, alignment);
}

void operator delete(void* block) noexcept {
    release(block);
}
void operator delete[](void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    release(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    release(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    release(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    release(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    release(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
    release(block);
}
