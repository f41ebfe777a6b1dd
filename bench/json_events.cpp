// SPDX-License-Identifier: Apache-2.0

#include "json_events.h"

#include <cstdint>
#include <picojson.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <nlohmann/json.hpp>

namespace {

using Kind = JsonEvent::Kind;
using Events = std::vector<JsonEvent>;

class EventReader : public nlohmann::json_sax<nlohmann::json>
{
public:
    Events events;

    bool null() override { return add({Kind::null, {}}); }
    bool boolean(bool value) override { return add({Kind::boolean, {}, value ? 1.0 : 0.0}); }
    bool number_integer(number_integer_t value) override
    {
        return add({Kind::number, {}, static_cast<double>(value)});
    }
    bool number_unsigned(number_unsigned_t value) override
    {
        return add({Kind::number, {}, static_cast<double>(value)});
    }
    bool number_float(number_float_t value, const string_t&) override
    {
        return add({Kind::number, {}, value});
    }
    bool string(string_t& value) override { return add({Kind::string, value}); }
    bool binary(binary_t&) override { return false; }
    bool start_object(std::size_t) override { return add({Kind::begin_object, {}}); }
    bool key(string_t& value) override { return add({Kind::key, value}); }
    bool end_object() override { return add({Kind::end_object, {}}); }
    bool start_array(std::size_t) override { return add({Kind::begin_array, {}}); }
    bool end_array() override { return add({Kind::end_array, {}}); }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override
    {
        return false;
    }

private:
    bool add(JsonEvent event)
    {
        events.push_back(std::move(event));
        return true;
    }
};

bool is_integer(double number)
{
    return number == static_cast<double>(static_cast<std::int64_t>(number));
}

/// Builds the value that begins at the event and leaves the event behind it; moves, never copies.
picojson::value picojson_value(const JsonEvent*& event)
{
    switch (event->kind) {
    case Kind::begin_object: {
        picojson::object object;
        for (++event; event->kind != Kind::end_object;) {
            std::string key(event->text.c_str());
            ++event;
            object.emplace(std::move(key), picojson_value(event));
        }
        ++event;
        return picojson::value(std::move(object));
    }
    case Kind::begin_array: {
        picojson::array array;
        for (++event; event->kind != Kind::end_array;)
            array.push_back(picojson_value(event));
        ++event;
        return picojson::value(std::move(array));
    }
    case Kind::string:
        return picojson::value(std::string((event++)->text.c_str()));
    case Kind::number:
        return picojson::value((event++)->number);
    case Kind::boolean:
        return picojson::value((event++)->number != 0);
    default:
        ++event;
        return picojson::value();
    }
}

nlohmann::json nlohmann_value(const JsonEvent*& event)
{
    switch (event->kind) {
    case Kind::begin_object: {
        nlohmann::json object = nlohmann::json::object();
        for (++event; event->kind != Kind::end_object;) {
            std::string key(event->text.c_str());
            ++event;
            object.emplace(std::move(key), nlohmann_value(event));
        }
        ++event;
        return object;
    }
    case Kind::begin_array: {
        nlohmann::json array = nlohmann::json::array();
        for (++event; event->kind != Kind::end_array;)
            array.push_back(nlohmann_value(event));
        ++event;
        return array;
    }
    case Kind::string:
        return std::string((event++)->text.c_str());
    case Kind::number: {
        const double number = (event++)->number;
        if (is_integer(number))
            return static_cast<std::int64_t>(number);
        return number;
    }
    case Kind::boolean:
        return (event++)->number != 0;
    default:
        ++event;
        return nullptr;
    }
}

} // namespace

std::vector<JsonEvent> events_of(const std::string& json)
{
    EventReader reader;
    nlohmann::json::sax_parse(json, &reader);
    return std::move(reader.events);
}

std::string by_picojson(const std::vector<JsonEvent>& events)
{
    const JsonEvent* event = events.data();
    return picojson_value(event).serialize();
}

std::string by_nlohmann(const std::vector<JsonEvent>& events)
{
    const JsonEvent* event = events.data();
    return nlohmann_value(event).dump();
}

std::string by_rapidjson(const std::vector<JsonEvent>& events)
{
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    for (const JsonEvent& event : events) {
        switch (event.kind) {
        case Kind::begin_object:
            writer.StartObject();
            break;
        case Kind::end_object:
            writer.EndObject();
            break;
        case Kind::begin_array:
            writer.StartArray();
            break;
        case Kind::end_array:
            writer.EndArray();
            break;
        case Kind::key:
            writer.Key(event.text.c_str());
            break;
        case Kind::string:
            writer.String(event.text.c_str());
            break;
        case Kind::number:
            if (is_integer(event.number))
                writer.Int64(static_cast<std::int64_t>(event.number));
            else
                writer.Double(event.number);
            break;
        case Kind::boolean:
            writer.Bool(event.number != 0);
            break;
        case Kind::null:
            writer.Null();
            break;
        }
    }
    return {buffer.GetString(), buffer.GetSize()};
}
