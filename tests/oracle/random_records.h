// SPDX-License-Identifier: Apache-2.0
//
// Random records: everything that a host's memory may hold, in every field that is read and in
// every byte that is not.

#ifndef NMOS_INSTRUMENT_TESTS_ORACLE_RANDOM_RECORDS_H
#define NMOS_INSTRUMENT_TESTS_ORACLE_RANDOM_RECORDS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "nmos_instrument/nmos_instrument.h"
#include "oracle/random.h"

/// Texts with every byte from 0x01 to 0xFF, "null" and what looks like it, junk behind the NUL, no
/// NUL at all. Bytes that the text does not need stay as they are.
void randomise_text(Random& random, char* field, std::size_t width);

/// Integral and broken numbers, both sides of 2^53, huge, denormal, -0; seldom NaN or infinite,
/// since one such number hides the rest of a body.
double random_number(Random& random);

/// Below zero, within the capacity, and far above it.
std::int32_t random_count(Random& random, int capacity);

/// A record that is filled at random from its first to its last byte.
void randomise(Random& random, NMOS_IS04_ST& record);
void randomise(Random& random, SENDER_IS04_ST& sender);
void randomise(Random& random, st_param_sys& parameters);

/// An IS-05 record whose number of receivers is the host's choice and not the declared one. It ends
/// exactly behind its last receiver, so that a memory checker sees any step past it.
class ConnectionState
{
public:
    explicit ConnectionState(Random& random);

    int receivers() const { return receivers_; }
    NMOS_IS05_ST& record() { return *reinterpret_cast<NMOS_IS05_ST*>(memory_.data()); }

    bool operator==(const ConnectionState&) const = default;

private:
    int receivers_;
    std::vector<std::uint64_t> memory_; // aligned as the record's doubles want it
};

/// The connection of one receiver, wherever the declared array ends.
CONNECTION_IS05_ST& receiver_of(NMOS_IS05_ST& record, int index);

#endif
