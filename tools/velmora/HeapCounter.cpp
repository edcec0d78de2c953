// The tool counts the bytes it holds on the heap, so a batch can say how much memory its files in
// flight took at most (the summary's peakHeapBytes). Every allocation of the program through new
// goes through here, the nothrow ones too, so that blocks and their deletes always pair: a size
// header in front of the block, two atomic additions. Aligned new keeps its own pair.
#include "Batch.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<int64_t> live{0};
std::atomic<int64_t> peak{0};
constexpr std::size_t kHeader = alignof(std::max_align_t);

void* counted(std::size_t size) {
    void* block = std::malloc(size + kHeader);
    if (block == nullptr) throw std::bad_alloc();
    *static_cast<std::size_t*>(block) = size;
    const int64_t now = live.fetch_add(static_cast<int64_t>(size)) + static_cast<int64_t>(size);
    int64_t highest = peak.load();
    while (now > highest && !peak.compare_exchange_weak(highest, now)) {
    }
    return static_cast<char*>(block) + kHeader;
}

void release(void* pointer) noexcept {
    if (pointer == nullptr) return;
    void* block = static_cast<char*>(pointer) - kHeader;
    live.fetch_sub(static_cast<int64_t>(*static_cast<std::size_t*>(block)));
    std::free(block);
}

}  // namespace

void* operator new(std::size_t size) {
    return counted(size);
}
void* operator new[](std::size_t size) {
    return counted(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return counted(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return counted(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void operator delete(void* pointer, const std::nothrow_t&) noexcept {
    release(pointer);
}
void operator delete[](void* pointer, const std::nothrow_t&) noexcept {
    release(pointer);
}
void operator delete(void* pointer) noexcept {
    release(pointer);
}
void operator delete[](void* pointer) noexcept {
    release(pointer);
}
void operator delete(void* pointer, std::size_t) noexcept {
    release(pointer);
}
void operator delete[](void* pointer, std::size_t) noexcept {
    release(pointer);
}

namespace tool {

int64_t peakHeapBytes() {
    return peak.load();
}

}  // namespace tool
