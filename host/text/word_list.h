// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_TEXT_WORD_LIST_H
#define NMOS_INSTRUMENT_HOST_TEXT_WORD_LIST_H

#include <functional>
#include <string>

namespace nmos_instrument::host {

/// "a, b, c" for a message: what `word_of` makes of each entry.
template <class Entries, class WordOf = std::identity>
std::string word_list(const Entries& entries, WordOf word_of = {})
{
    std::string list;
    for (const auto& entry : entries) {
        if (!list.empty())
            list += ", ";
        list += std::invoke(word_of, entry);
    }
    return list;
}

} // namespace nmos_instrument::host

#endif
