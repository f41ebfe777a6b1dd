// SPDX-License-Identifier: Apache-2.0
//
// Replaces the allocator of the whole process: one allocation can be made to fail, and blocks are
// counted.

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_FAILING_ALLOCATOR_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_FAILING_ALLOCATOR_H

namespace failing_allocator {

// Of one thread, and only while it is counting.
extern thread_local bool counting;
extern thread_local long allocations_left; ///< before one throws std::bad_alloc
extern thread_local long blocks_alive;     ///< less those that were freed

} // namespace failing_allocator

#endif
