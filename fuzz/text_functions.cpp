// SPDX-License-Identifier: Apache-2.0
//
// convertCRLF, split_string and replaceAll over any text: nothing is written behind the table of
// parts, and the pieces put together are the text again.

#include "fuzz_input.h"
#include "nmos_instrument/ConnectionApi.h"
#include "nmos_instrument/Nmos.h"

namespace {

std::string without_line_breaks(std::string text)
{
    std::erase_if(text, [](char c) { return c == '\r' || c == '\n'; });
    return text;
}

/// Of a text whose line breaks are lone LF.
std::string with_newline(const std::string& text, const std::string& newline)
{
    std::string result;
    for (const char c : text) {
        if (c == '\n')
            result += newline;
        else
            result += c;
    }
    return result;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzInput input(data, size);
    const int max_parts = input.byte() % 12 - 1;
    const char* const newlines[] = {"\n", "\r\n", "", "<br>"};
    const std::string newline = newlines[input.byte() % 4];
    std::string delimiter(input.byte() % 3, static_cast<char>(input.byte()));
    if (delimiter == "\r\r")
        delimiter = "\r\n";
    const std::string text = input.rest();

    const std::string unified = ConnectionApi::convertCRLF(text, "\n");
    REQUIRE(unified.find('\r') == std::string::npos);
    REQUIRE(ConnectionApi::convertCRLF(unified, "\n") == unified);
    REQUIRE(without_line_breaks(unified) == without_line_breaks(text));
    REQUIRE(ConnectionApi::convertCRLF(text, newline) == with_newline(unified, newline));

    constexpr int table_size = 16;
    std::string parts[table_size];
    for (std::string& part : parts)
        part = "untouched";
    int count = -1;
    REQUIRE(ConnectionApi::split_string(text, delimiter, parts, max_parts, &count) == 0);
    REQUIRE(count >= 0 && count <= std::max(max_parts, 0));
    std::string together;
    for (int i = 0; i < count; ++i)
        together += parts[i] + delimiter;
    REQUIRE(text.compare(0, together.size(), together) == 0);
    for (int i = std::max(max_parts, 0); i < table_size; ++i)
        REQUIRE(parts[i] == "untouched");

    std::string replaced = text;
    REQUIRE(Nmos().replaceAll(replaced, "\\/", "/") == replaced);
    REQUIRE(replaced.size() <= text.size());
    return 0;
}
