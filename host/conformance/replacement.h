// SPDX-License-Identifier: Apache-2.0
//
// Corrections of the library's JSON without a tree of its values: a tree costs ten times as much as
// the text itself, and memory in which to be destroyed.
//
// The texts are known byte for byte: compact, with keys in ascending order. What is searched for
// begins with a key, `"format":...`. That cannot be found inside a string, whatever a label says: a
// quote in a string has a backslash in front, and a quote with a colon behind it ends a key.

#ifndef NMOS_INSTRUMENT_HOST_CONFORMANCE_REPLACEMENT_H
#define NMOS_INSTRUMENT_HOST_CONFORMANCE_REPLACEMENT_H

#include <span>
#include <string>

namespace nmos_instrument::host {

/// Puts one thing right, wherever it is in a text.
struct Replacement
{
    std::string found; ///< begins with a key
    std::string right; ///< what stands there instead
    std::string
        up_to; ///< a key: everything from `found` to there is replaced; empty: `found` alone
};

/// `text` with all corrections made, one after the other.
std::string corrected(std::string text, std::span<const Replacement> corrections);

} // namespace nmos_instrument::host

#endif
