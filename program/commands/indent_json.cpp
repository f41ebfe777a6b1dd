// SPDX-License-Identifier: Apache-2.0

#include "commands/indent_json.h"

#include <nlohmann/json.hpp>

namespace nmos_instrument::program {
namespace {

bool is_white_space(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// Walks a text that is known to be JSON.
class Indenter
{
public:
    explicit Indenter(std::string_view json) : rest_(json) {}

    std::string run()
    {
        for (skip_white_space(); !rest_.empty(); skip_white_space())
            take_token();
        text_ += '\n';
        return text_;
    }

private:
    void take_token()
    {
        const char c = rest_.front();
        switch (c) {
        case '{':
        case '[':
            take(1);
            skip_white_space();
            if (rest_.front() == '}' || rest_.front() == ']') {
                take(1);
            } else {
                ++depth_;
                begin_line();
            }
            break;
        case '}':
        case ']':
            --depth_;
            begin_line();
            take(1);
            break;
        case ',':
            take(1);
            begin_line();
            break;
        case ':':
            take(1);
            text_ += ' ';
            break;
        case '"':
            take(string_size());
            break;
        default:
            take(1);
        }
    }

    std::size_t string_size() const
    {
        std::size_t end = 1;
        while (rest_[end] != '"')
            end += rest_[end] == '\\' ? 2 : 1;
        return end + 1;
    }

    void take(std::size_t size)
    {
        text_ += rest_.substr(0, size);
        rest_.remove_prefix(size);
    }

    void skip_white_space()
    {
        while (!rest_.empty() && is_white_space(rest_.front()))
            rest_.remove_prefix(1);
    }

    void begin_line()
    {
        text_ += '\n';
        text_.append(4 * depth_, ' ');
    }

    std::string_view rest_;
    std::string text_;
    std::size_t depth_ = 0;
};

} // namespace

std::string indent_json(std::string_view text)
{
    return nlohmann::json::accept(text) ? Indenter(text).run() : std::string(text);
}

} // namespace nmos_instrument::program
