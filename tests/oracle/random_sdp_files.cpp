// SPDX-License-Identifier: Apache-2.0

#include "oracle/random_sdp_files.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "oracle/sdp_vocabulary.h"

using namespace sdp_vocabulary;

namespace {

std::size_t place_in(Random& random, const std::string& text)
{
    return random.below(static_cast<std::uint32_t>(text.size() + 1));
}

void insert(Random& random, std::string& text, const std::string& insertion)
{
    text.insert(place_in(random, text), insertion);
}

char any_byte(Random& random)
{
    return static_cast<char>(random.below(256));
}

/// From the vocabulary, or thrown together from the characters of numbers and addresses.
std::string random_value(Random& random)
{
    switch (random.below(8)) {
    case 0:
    case 1:
        return std::string(random.pick(addresses));
    case 2:
    case 3:
        return std::string(random.pick(numbers));
    case 4: {
        constexpr std::string_view characters = "0012345678999..../xXaAfF +-\t;"sv;
        std::string value(random.below(16), ' ');
        for (char& character : value)
            character = random.pick(characters);
        return value;
    }
    case 5: { // messages have a limit of 256 bytes
        const auto size = static_cast<std::size_t>(random.between(200, 270));
        return std::string(size, random.pick("x7. "sv));
    }
    default:
        return std::string(random.pick(format_values));
    }
}

std::string random_token(Random& random)
{
    switch (random.below(8)) {
    case 0:
    case 1:
        return std::string(random.pick(keys));
    case 2:
        return std::string(random.pick(openings));
    case 3:
        return std::string(random.pick(whole_parameters));
    case 4:
    case 5:
        return std::string(random.pick(terminators));
    default:
        return random_value(random);
    }
}

std::string random_line(Random& random)
{
    std::string line(random.one_in(4) ? ""sv : random.pick(openings));
    for (int tokens = random.between(0, 5); tokens > 0; --tokens)
        line += random_token(random);
    return line;
}

void replace_a_value(Random& random, std::string& line)
{
    std::string_view key;
    std::size_t found = std::string::npos;
    for (int tries = 0; tries < 20 && found == std::string::npos; ++tries) {
        key = random.pick(keys);
        found = line.find(key);
    }
    if (found == std::string::npos)
        return;
    const std::size_t start = found + key.size();
    const std::size_t end = std::min(line.find_first_of(" ;/", start), line.size());
    line.replace(start, end - start, random_value(random));
}

void remove_a_terminator(Random& random, std::string& line)
{
    const std::size_t found = line.find_first_of(" ;/", place_in(random, line));
    if (found != std::string::npos)
        line.erase(found, 1);
}

void edit_a_line(Random& random, std::string& line)
{
    switch (random.below(8)) {
    case 0:
    case 1:
    case 2:
        replace_a_value(random, line);
        break;
    case 3:
        remove_a_terminator(random, line);
        break;
    case 4:
        insert(random, line, random_token(random));
        break;
    case 5:
        line.resize(place_in(random, line));
        break;
    case 6: {
        const auto size = static_cast<std::size_t>(random.between(1, 300));
        insert(random, line, std::string(size, any_byte(random)));
        break;
    }
    default:
        if (!line.empty())
            line[random.below(static_cast<std::uint32_t>(line.size()))] = any_byte(random);
    }
}

void edit_the_order(Random& random, Lines& lines)
{
    const auto any_line = [&] { return random.below(static_cast<std::uint32_t>(lines.size())); };
    const auto at = [&](std::size_t line) {
        return lines.begin() + static_cast<std::ptrdiff_t>(line);
    };
    if (lines.empty()) {
        lines.push_back(random_line(random));
        return;
    }
    switch (random.below(6)) {
    case 0:
        std::swap(lines[any_line()], lines[any_line()]);
        break;
    case 1: {
        const std::string doubled = lines[any_line()];
        lines.insert(at(any_line()), doubled);
        break;
    }
    case 2:
        lines.erase(at(any_line()));
        break;
    case 3: {
        const std::string line = random_line(random);
        lines.insert(at(any_line()), line);
        break;
    }
    case 4: {
        const std::string line = random.pick(*random.pick(real_files));
        lines.insert(at(any_line()), line);
        break;
    }
    default:
        // So long that lines are pushed over the hundred that are examined.
        if (random.one_in(4)) {
            const auto longer = static_cast<std::size_t>(random.between(70, 100));
            const std::string filler = random.one_in(2) ? "" : "b=AS:1";
            lines.insert(at(any_line()), longer, filler);
        }
    }
}

void shuffle(Random& random, Lines& lines)
{
    for (std::size_t i = lines.size(); i > 1; --i)
        std::swap(lines[i - 1], lines[random.below(static_cast<std::uint32_t>(i))]);
}

std::string joined(Random& random, const Lines& lines)
{
    constexpr std::string_view line_ends[] = {"\r\n"sv, "\n"sv, "\r"sv, "\n\r"sv};
    const std::string_view usual_end = random.pick(line_ends);
    const bool mixed = random.one_in(5);
    std::string text;
    for (const std::string& line : lines) {
        text += line;
        text += mixed ? random.pick(line_ends) : usual_end;
    }
    return text;
}

void edit_the_text(Random& random, std::string& text)
{
    switch (random.below(6)) {
    case 0:
        text.resize(place_in(random, text));
        break;
    case 1: // the last line without its end
        while (!text.empty() && (text.back() == '\r' || text.back() == '\n'))
            text.pop_back();
        break;
    case 2:
        text += random_value(random);
        break;
    case 3:
        insert(random, text, std::string(1, '\0'));
        break;
    case 4:
        insert(random, text, random_token(random));
        break;
    default:
        if (!text.empty())
            text[random.below(static_cast<std::uint32_t>(text.size()))] = any_byte(random);
    }
}

} // namespace

std::string edited_sdp_file(Random& random)
{
    Lines lines = *random.pick(real_files);
    if (random.one_in(10))
        shuffle(random, lines);
    for (int edits = random.between(0, 5); edits > 0; --edits) {
        if (random.one_in(3))
            edit_the_order(random, lines);
        else if (!lines.empty())
            edit_a_line(random, lines[random.below(static_cast<std::uint32_t>(lines.size()))]);
    }
    std::string text = joined(random, lines);
    while (random.one_in(4))
        edit_the_text(random, text);
    return text;
}

std::string sdp_token_heap(Random& random)
{
    std::string text;
    for (int tokens = random.between(0, 40); tokens > 0; --tokens) {
        if (random.one_in(4)) {
            text += '\n';
            text += random.pick(openings);
            text += random_value(random);
            text += ' ';
            text += random_value(random);
            text += '\n';
        }
        text += random_token(random);
    }
    if (!random.one_in(4))
        text += '\n';
    return text;
}
