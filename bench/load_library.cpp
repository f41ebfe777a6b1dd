// SPDX-License-Identifier: Apache-2.0
//
// What loading the library costs before anything is called: time, and heap for its label tables.
// Usage: load_library FILE

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

#include <dlfcn.h>

#include "counted_heap.h"

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: load_library FILE\n");
        return 3;
    }
    HeapCount at_load{};
    std::vector<double> microseconds;
    for (int i = 0; i < 201; ++i) {
        const HeapCount before = heap_count();
        const auto begin = std::chrono::steady_clock::now();
        void* const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
        const auto end = std::chrono::steady_clock::now();
        if (library == nullptr) {
            std::fprintf(stderr, "load_library: %s\n", dlerror());
            return 2;
        }
        const HeapCount after = heap_count();
        at_load = {after.allocations - before.allocations, after.bytes - before.bytes};
        microseconds.push_back(std::chrono::duration<double, std::micro>(end - begin).count());
        dlclose(library);
    }
    std::nth_element(microseconds.begin(), microseconds.begin() + 100, microseconds.end());
    std::printf("loaded in %.0f us (median of 201), heap at load: %zu allocations, %zu bytes\n",
                microseconds[100], at_load.allocations, at_load.bytes);
    return 0;
}
