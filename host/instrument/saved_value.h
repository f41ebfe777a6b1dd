// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_SAVED_VALUE_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_SAVED_VALUE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "records/record_text.h"
#include "time/tai_time.h"

namespace nmos_instrument::host {

/// A value of a saved state, with its path. All readers throw DamagedState, which says where the
/// value is, what was found, and what is allowed.
class SavedValue
{
public:
    explicit SavedValue(const nlohmann::json& document) : value_(document) {}

    const nlohmann::json& json() const { return value_; }

    SavedValue member(const std::string& key) const;

    /// Calls `visit` with the key and the value of every member; at most `most` are allowed.
    template <class Visit>
    void for_each_member(std::size_t most, Visit&& visit) const
    {
        for (const std::string& key : keys(most))
            visit(key, member(key));
    }

    /// An element of an array that has exactly `size` of them.
    SavedValue element(std::size_t index, std::size_t size) const;

    std::uint64_t whole_number(std::uint64_t least, std::uint64_t most) const;
    bool flag() const;

    /// At most `most` bytes, none of them NUL: a field ends there.
    const std::string& text(std::size_t most) const;

    template <std::size_t N>
    void copy_to(char (&field)[N]) const
    {
        set_text(field, text(N - 1));
    }

    TaiTime version() const;

    [[noreturn]] void refuse(const std::string& allowed) const;

private:
    SavedValue(const nlohmann::json& value, std::string path)
        : value_(value), path_(std::move(path))
    {}
    std::string path_of(const std::string& key) const;
    std::vector<std::string> keys(std::size_t most) const;

    const nlohmann::json& value_;
    std::string path_;
};

} // namespace nmos_instrument::host

#endif
