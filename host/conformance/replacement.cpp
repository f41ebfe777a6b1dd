// SPDX-License-Identifier: Apache-2.0

#include "conformance/replacement.h"

#include <cstddef>
#include <cstring>

namespace nmos_instrument::host {
namespace {

/// As std::string::find, which is far slower: it stops at every quote.
std::size_t find(const std::string& text, const std::string& part, std::size_t from)
{
    const void* const place =
        ::memmem(text.data() + from, text.size() - from, part.data(), part.size());
    return place == nullptr
               ? std::string::npos
               : static_cast<std::size_t>(static_cast<const char*>(place) - text.data());
}

/// The end of what is replaced at `begin`; npos if it has none.
std::size_t end_of(const Replacement& correction, const std::string& text, std::size_t begin)
{
    const std::size_t end = begin + correction.found.size();
    return correction.up_to.empty() ? end : find(text, correction.up_to, end);
}

void make(const Replacement& correction, std::string& text)
{
    std::size_t begin = 0;
    while ((begin = find(text, correction.found, begin)) != std::string::npos) {
        const std::size_t end = end_of(correction, text, begin);
        if (end == std::string::npos)
            return;
        text.replace(begin, end - begin, correction.right);
        begin += correction.right.size();
    }
}

} // namespace

std::string corrected(std::string text, std::span<const Replacement> corrections)
{
    for (const Replacement& correction : corrections)
        make(correction, text);
    return text;
}

} // namespace nmos_instrument::host
