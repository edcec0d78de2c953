// The tool counts the bytes it holds on the heap, so a batch can say how much memory its files in
// flight took at most (the summary's peakHeapBytes). Every allocation of the program through new
// goes through here, the nothrow ones too, so that blocks and their deletes always pair: a size
// header in front of the block. Each thread sums its own allocations and frees and adds them to
// the shared count once they reach 64 KiB either way, so that threads don't contend for one
// counter on every allocation; the peak is therefore exact to 64 KiB a thread. Aligned new keeps
// its own pair.
#include "Batch.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<int64_t> live{0};
std::atomic<int64_t> peak{0};
thread_local int64_t pending = 0;
constexpr int64_t kGrain = 64 * 1024;
constexpr std::size_t kHeader = alignof(std::max_align_t);

void account(int64_t bytes) noexcept {
    pending += bytes;
    if (pending < kGrain && pending > -kGrain) return;
    const int64_t now = live.fetch_add(pending, std::memory_order_relaxed) + pending;
    pending = 0;
    int64_t highest = peak.load(std::memory_order_relaxed);
    while (now > highest && !peak.compare_exchange_weak(highest, now, std::memory_order_relaxed)) {
    }
}

void* counted(std::size_t size) {
    void* block = std::malloc(size + kHeader);
    if (block == nullptr) throw std::bad_alloc();
    *static_cast<std::size_t*>(block) = size;
    account(static_cast<int64_t>(size));
    return static_cast<char*>(block) + kHeader;
}

void release(void* pointer) noexcept {
    if (pointer == nullptr) return;
    void* block = static_cast<char*>(pointer) - kHeader;
    account(-static_cast<int64_t>(*static_cast<std::size_t*>(block)));
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
