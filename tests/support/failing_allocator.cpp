// SPDX-License-Identifier: Apache-2.0

#include "support/failing_allocator.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace failing_allocator {

thread_local bool counting = false;
thread_local long allocations_left = 0;
thread_local long blocks_alive = 0;

namespace {

void* allocate(std::size_t size)
{
    if (counting && allocations_left-- == 0)
        throw std::bad_alloc();
    void* const block = std::malloc(size != 0 ? size : 1);
    if (block == nullptr)
        throw std::bad_alloc();
    if (counting)
        ++blocks_alive;
    return block;
}

void release(void* block) noexcept
{
    if (counting && block != nullptr)
        --blocks_alive;
    std::free(block);
}

} // namespace
} // namespace failing_allocator

void* operator new(std::size_t size)
{
    return failing_allocator::allocate(size);
}
void* operator new[](std::size_t size)
{
    return failing_allocator::allocate(size);
}
void operator delete(void* block) noexcept
{
    failing_allocator::release(block);
}
void operator delete[](void* block) noexcept
{
    failing_allocator::release(block);
}
void operator delete(void* block, std::size_t) noexcept
{
    failing_allocator::release(block);
}
void operator delete[](void* block, std::size_t) noexcept
{
    failing_allocator::release(block);
}
