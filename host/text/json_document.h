// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_TEXT_JSON_DOCUMENT_H
#define NMOS_INSTRUMENT_HOST_TEXT_JSON_DOCUMENT_H

#include <utility>

#include <nlohmann/json.hpp>

namespace nmos_instrument::host {

/// A JSON value that can be destroyed when memory is short. nlohmann::json gathers what is in it
/// before it destroys that, and if there is no memory to gather it in, the program ends.
class JsonDocument
{
public:
    // What nlohmann::json could throw here is about values of another kind than there are.
    // NOLINTBEGIN(bugprone-exception-escape)
    JsonDocument() = default;
    ~JsonDocument() { dismantle(value_); }
    // NOLINTEND(bugprone-exception-escape)
    JsonDocument(const JsonDocument&) = delete;
    JsonDocument& operator=(const JsonDocument&) = delete;
    JsonDocument(JsonDocument&& other) noexcept : value_(std::move(other.value_)) {}
    JsonDocument& operator=(JsonDocument&&) = delete;

    nlohmann::json& value() { return value_; }
    const nlohmann::json& value() const { return value_; }

private:
    /// Empties what is in it, from the inside out. It recurses as deep as the value is nested,
    /// which parse_json limits.
    static void dismantle(nlohmann::json& value)
    {
        if (!value.is_structured())
            return;
        for (nlohmann::json& inner : value)
            dismantle(inner);
        value.clear();
    }

    nlohmann::json value_;
};

} // namespace nmos_instrument::host

#endif
