#include "faults/allocation/Allocator.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace {

// 0 while nothing is to fail, else what is left of the count.
std::atomic<int> untilFailure{0};
std::atomic<bool> failsFromThereOn{false};
std::atomic<bool> hasHappened{false};
std::atomic<long> liveBlocks{0};

bool IsToFail()
{
    int const left = untilFailure.load();
    if (left == 0)
        return false;
    if (left > 1) {
        untilFailure.store(left - 1);
        return false;
    }
    hasHappened = true;
    if (!failsFromThereOn)
        untilFailure = 0;
    return true;
}

void* Allocate(std::size_t size)
{
    if (IsToFail())
        return nullptr;
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block != nullptr)
        ++liveBlocks;
    return block;
}

void* AllocateOrThrow(std::size_t size)
{
    void* const block = Allocate(size);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

void Release(void* block)
{
    if (block == nullptr)
        return;
    --liveBlocks;
    std::free(block);
}

} // namespace

// The aligned forms stay the runtime's: nothing here is over-aligned.
void* operator new(std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
void* operator new(std::size_t size, std::nothrow_t const&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, std::nothrow_t const&) noexcept { return Allocate(size); }
void operator delete(void* block) noexcept { Release(block); }
void operator delete[](void* block) noexcept { Release(block); }
void operator delete(void* block, std::size_t) noexcept { Release(block); }
void operator delete[](void* block, std::size_t) noexcept { Release(block); }
void operator delete(void* block, std::nothrow_t const&) noexcept { Release(block); }
void operator delete[](void* block, std::nothrow_t const&) noexcept { Release(block); }

namespace Faults {

Failure::Failure(int n, FailureMode mode)
{
    hasHappened = false;
    failsFromThereOn = mode == FailureMode::FromThereOn;
    untilFailure = n;
}

Failure::~Failure() { untilFailure = 0; }

bool Failure::HasHappened() { return hasHappened; }

long LiveBlocks() { return liveBlocks; }

CountedByUsAlone::CountedByUsAlone(bool doesApply) : applies(doesApply)
{
#ifdef __SANITIZE_ADDRESS__
    if (applies)
        __lsan_disable();
#endif
}

CountedByUsAlone::~CountedByUsAlone()
{
#ifdef __SANITIZE_ADDRESS__
    if (applies)
        __lsan_enable();
#endif
}

} // namespace Faults
