// SPDX-License-Identifier: Apache-2.0

#include "connection/bulk_request.h"

#include <map>
#include <string_view>

#include <nlohmann/json.hpp>

#include "connection/json_place.h"
#include "text/uuid.h"

namespace nmos_instrument::host {
namespace {

using nlohmann::json;

void parse_entry(const JsonPlace& place, std::vector<BulkEntry>& entries)
{
    const json& value = place.value();
    if (!value.is_object()) {
        place.refuse("an object with id and params");
        return;
    }
    for (const char* const name : {"id", "params"}) {
        if (!value.contains(name))
            place.say(std::string("\"") + name + "\" is missing");
    }
    for (const auto& [key, member] : value.items()) {
        if (key == "id") {
            if (!member.is_string() || !is_uuid(member.get_ref<const std::string&>()))
                place.member(key, member).refuse("a UUID in lower case");
        } else if (key != "params") {
            place.member(key, member).say("unknown member, allowed: id, params");
        }
    }
    if (value.contains("id") && value.contains("params") && value.at("id").is_string())
        entries.push_back({value.at("id").get<std::string>(), &value.at("params")});
}

/// IS-05 v1.0 leaves open what a second entry for the same resource means. It is refused, because
/// a small request could otherwise ask for much work and a long answer.
void refuse_repeated_ids(const JsonPlace& place, const std::vector<BulkEntry>& entries)
{
    std::map<std::string_view, std::size_t> places;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const auto [first, is_new] = places.try_emplace(entries[i].id, i);
        if (!is_new)
            place.element(i).say("\"id\" is that of /" + std::to_string(first->second) +
                                 ", allowed: one entry for each id");
    }
}

} // namespace

std::vector<BulkEntry> parse_bulk_request(const json& document, std::size_t most,
                                          Findings& findings)
{
    std::vector<BulkEntry> entries;
    const JsonPlace place(document, findings);
    if (!document.is_array()) {
        place.refuse("an array of objects with id and params");
        return entries;
    }
    if (document.size() > most) {
        place.refuse("at most " + std::to_string(most) + " entries, one for each resource");
        return entries;
    }
    for (std::size_t i = 0; i < document.size(); ++i)
        parse_entry(place.element(i), entries);
    if (findings.empty()) // otherwise an entry may be missing
        refuse_repeated_ids(place, entries);
    return entries;
}

} // namespace nmos_instrument::host
