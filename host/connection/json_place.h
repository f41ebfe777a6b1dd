// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_CONNECTION_JSON_PLACE_H
#define NMOS_INSTRUMENT_HOST_CONNECTION_JSON_PLACE_H

#include <string>
#include <string_view>

#include <nlohmann/json_fwd.hpp>

#include "connection/findings.h"
#include "text/json_pointer.h"

namespace nmos_instrument::host {

/// A value of a request, with its path, and with the findings to which it adds what is wrong.
class JsonPlace
{
public:
    JsonPlace(const nlohmann::json& document, Findings& findings)
        : value_(document), findings_(findings)
    {}

    const nlohmann::json& value() const { return value_; }

    JsonPlace member(const std::string& key, const nlohmann::json& value) const
    {
        return {value, path_ + '/' + json_pointer_token(key), findings_};
    }
    JsonPlace element(std::size_t index) const;

    /// Refuses the value: says what was found and what is allowed, the latter in these words.
    void refuse(std::string_view allowed) const;

    /// Refuses the value with this whole message.
    void say(std::string_view what) const { findings_.add(path_, what); }

private:
    JsonPlace(const nlohmann::json& value, std::string path, Findings& findings)
        : value_(value), path_(std::move(path)), findings_(findings)
    {}

    const nlohmann::json& value_;
    std::string path_;
    Findings& findings_;
};

/// A short text for a value; of arrays and objects it says only the kind.
std::string describe(const nlohmann::json& value);

} // namespace nmos_instrument::host

#endif
