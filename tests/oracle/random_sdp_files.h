// SPDX-License-Identifier: Apache-2.0
//
// Random SDP files: real ones with mistakes, and heaps of everything that the parser looks for.

#ifndef NMOS_INSTRUMENT_TESTS_ORACLE_RANDOM_SDP_FILES_H
#define NMOS_INSTRUMENT_TESTS_ORACLE_RANDOM_SDP_FILES_H

#include <string>

#include "oracle/random.h"

/// A real file of a video, audio, ancillary data or ST 2022-6 sender after a few random edits:
/// lines shuffled, doubled or lost, keys inserted, values replaced or stretched, terminators
/// removed, bytes flipped, NUL bytes, the end cut off, line ends of every kind.
std::string edited_sdp_file(Random& random);

/// Keys, terminators and values in any order.
std::string sdp_token_heap(Random& random);

#endif
