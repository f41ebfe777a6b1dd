// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONNECTION_FINDINGS_H
#define NMOS_INSTRUMENT_HOST_CONNECTION_FINDINGS_H

#include <cstddef>
#include <string>
#include <string_view>

namespace nmos_instrument::host {

/// What is wrong with a request. One finding is enough to refuse all of it.
class Findings
{
public:
    /// `path`: JSON pointer (RFC 6901) of the value, "" for the whole document.
    void add(std::string_view path, std::string_view what)
    {
        // Nobody reads more than this.
        constexpr std::size_t most = 20;
        if (++count_ > most)
            return;
        if (!text_.empty())
            text_ += '\n';
        text_ += path.empty() ? std::string_view("the document") : path;
        text_ += ": ";
        text_ += what;
    }

    bool empty() const { return count_ == 0; }

    /// The findings, one line each.
    const std::string& text() const { return text_; }

    /// Notes something that refuses nothing. It goes to the log.
    void warn(std::string_view what)
    {
        if (++warning_count_ > most_warnings)
            return;
        if (!warnings_.empty())
            warnings_ += " | ";
        warnings_ += what;
    }

    /// One line; empty if there are none.
    std::string warnings() const
    {
        if (warning_count_ <= most_warnings)
            return warnings_;
        return warnings_ + " | and " + std::to_string(warning_count_ - most_warnings) + " more";
    }

private:
    std::size_t count_ = 0;
    std::string text_;
    static constexpr std::size_t most_warnings = 20;
    std::size_t warning_count_ = 0;
    std::string warnings_;
};

} // namespace nmos_instrument::host

#endif
