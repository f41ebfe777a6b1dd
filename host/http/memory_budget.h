// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_HTTP_MEMORY_BUDGET_H
#define NMOS_INSTRUMENT_HOST_HTTP_MEMORY_BUDGET_H

#include <atomic>
#include <cstddef>

namespace nmos_instrument::host {

/// Memory that is spent together, by many threads. Whoever takes bytes gives them back.
class MemoryBudget
{
public:
    /// False, and nothing is taken, if more than `limit` would be taken then.
    bool take(std::size_t bytes, std::size_t limit)
    {
        if (taken_.fetch_add(bytes) + bytes <= limit)
            return true;
        taken_ -= bytes;
        return false;
    }

    void give_back(std::size_t bytes) { taken_ -= bytes; }

private:
    std::atomic<std::size_t> taken_{0};
};

} // namespace nmos_instrument::host

#endif
