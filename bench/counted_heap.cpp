// SPDX-License-Identifier: Apache-2.0

#include "counted_heap.h"

#include <cstdlib>
#include <new>

namespace {

HeapCount count{}; // the benchmarks run in one thread

} // namespace

HeapCount heap_count() noexcept
{
    return count;
}

void* operator new(std::size_t size)
{
    ++count.allocations;
    count.bytes += size;
    void* const block = std::malloc(size);
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}
