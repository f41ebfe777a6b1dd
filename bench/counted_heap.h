// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_BENCH_COUNTED_HEAP_H
#define NMOS_INSTRUMENT_BENCH_COUNTED_HEAP_H

#include <cstddef>

/// What operator new was asked for since the process began.
struct HeapCount
{
    std::size_t allocations;
    std::size_t bytes;
};

HeapCount heap_count() noexcept;

#endif
