// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_TESTS_SUPPORT_VARIED_H
#define NMOS_INSTRUMENT_TESTS_SUPPORT_VARIED_H

#include <cstddef>
#include <initializer_list>
#include <stdexcept>
#include <string>

struct Change
{
    std::string from;
    std::string to;
};

/// `text` with each change made wherever `from` stands. One that stands nowhere is a mistake of the
/// test.
inline std::string varied(std::string text, std::initializer_list<Change> changes)
{
    for (const Change& change : changes) {
        std::size_t at = text.find(change.from);
        if (at == text.npos)
            throw std::invalid_argument("not in the text: " + change.from);
        for (; at != text.npos; at = text.find(change.from, at + change.to.size()))
            text.replace(at, change.from.size(), change.to);
    }
    return text;
}

#endif
