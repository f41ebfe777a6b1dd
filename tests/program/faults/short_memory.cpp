// SPDX-License-Identifier: Apache-2.0
//
// Memory that runs short: preloaded, it makes one of N allocations fail, at random. N is a 32-bit
// number in the file that NMOS_SHORT_MEMORY names; 0 lets all succeed. It may change at any time.

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

// What lies under the C library's own names.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* old, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {

const volatile std::uint32_t* one_in = nullptr;
std::atomic<std::uint32_t> position{1};

[[gnu::constructor]] void open_control()
{
    const char* const name = std::getenv("NMOS_SHORT_MEMORY");
    const int file = name == nullptr ? -1 : open(name, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return;
    void* const shared = mmap(nullptr, sizeof *one_in, PROT_READ, MAP_SHARED, file, 0);
    close(file);
    if (shared != MAP_FAILED)
        one_in = static_cast<const volatile std::uint32_t*>(shared);
}

bool fails()
{
    const std::uint32_t chance = one_in == nullptr ? 0 : *one_in;
    if (chance == 0)
        return false;
    // A different well-mixed number each time (the finaliser of MurmurHash3).
    std::uint32_t mixed = position.fetch_add(0x9e3779b9, std::memory_order_relaxed);
    mixed = (mixed ^ (mixed >> 16)) * 0x85ebca6b;
    mixed = (mixed ^ (mixed >> 13)) * 0xc2b2ae35;
    mixed ^= mixed >> 16;
    if (mixed % chance != 0)
        return false;
    errno = ENOMEM;
    return true;
}

} // namespace

extern "C" {

void* malloc(std::size_t size)
{
    return fails() ? nullptr : __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size)
{
    return fails() ? nullptr : __libc_calloc(count, size);
}

void* realloc(void* old, std::size_t size)
{
    return fails() ? nullptr : __libc_realloc(old, size);
}

int posix_memalign(void** result, std::size_t alignment, std::size_t size)
{
    void* const memory = fails() ? nullptr : __libc_memalign(alignment, size);
    if (memory == nullptr)
        return ENOMEM;
    *result = memory;
    return 0;
}

void* aligned_alloc(std::size_t alignment, std::size_t size)
{
    return fails() ? nullptr : __libc_memalign(alignment, size);
}

} // extern "C"
