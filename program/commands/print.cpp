// SPDX-License-Identifier: Apache-2.0

#include "commands/print.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "commands/configuration_options.h"
#include "commands/indent_json.h"
#include "commands/option_rules.h"
#include "commands/texts.h"
#include "records/addresses.h"
#include "records/fill_records.h"

namespace nmos_instrument::program {
namespace {

struct PrintOptions
{
    std::string text;
    std::string index;
    bool list = false;
    bool pretty = false;
    std::optional<int> receiver_filter;
    std::optional<int> audio_group_filter;
    std::optional<int> sender_filter;
    ConfigurationOptions configuration;
};

/// 2025-01-01 00:00:00 UTC. Printed texts never depend on the clock, so that they can be compared.
constexpr host::TaiTime fixed_instant = {1735689637, 0};

constexpr std::string_view hint = "; nmos-instrument print --list shows all texts";

std::string range_of(std::size_t count)
{
    if (count == 0)
        return "none";
    return count == 1 ? "0" : "0 to " + std::to_string(count - 1);
}

void list_texts(const host::Records& records, std::ostream& out)
{
    constexpr std::size_t column = 44;
    for (const Text& text : all_texts()) {
        std::string line(text.name);
        if (text.count != nullptr)
            line += " INDEX (" + range_of(text.count(records)) + ')';
        line.resize(std::max(column, line.size() + 2), ' ');
        out << line << text.description << '\n';
    }
}

/// The index that `word` spells, if it is below `count`.
std::optional<int> parse_index(const std::string& word, std::size_t count)
{
    const std::optional<long long> index = parse_number(word);
    if (!index || *index < 0 || static_cast<std::size_t>(*index) >= count)
        return std::nullopt;
    return static_cast<int>(*index);
}

/// The index that the options ask for, 0 for a text that takes none; nothing when it cannot be, which
/// has been said.
std::optional<int> index_for(const Text& text, const std::string& word, const TextInput& input)
{
    if (text.count == nullptr) {
        if (word.empty())
            return 0;
        std::cerr << "print " << text.name << ": takes no INDEX, found \"" << word << '"' << hint
                  << '\n';
        return std::nullopt;
    }
    const std::size_t count = text.count(input.records);
    const std::optional<int> index = parse_index(word, count);
    if (!index)
        std::cerr << "print " << text.name << ": INDEX "
                  << (word.empty() ? "is missing" : "cannot be \"" + word + '"') << " ("
                  << range_of(count) << ")\n";
    return index;
}

ExitStatus print_text(const PrintOptions& options, const TextInput& input)
{
    // A second word is either part of the name or an index.
    const Text* text = find_text(options.text + ' ' + options.index);
    const std::string index_word = text != nullptr ? "" : options.index;
    if (text == nullptr)
        text = find_text(options.text);
    if (text == nullptr) {
        std::cerr << "print: no text \"" << options.text << '"' << hint << '\n';
        return wrong_use;
    }
    const std::optional<int> index = index_for(*text, index_word, input);
    if (!index)
        return wrong_use;
    const std::string made = text->make(input, *index);
    std::cout << (options.pretty && text->form == TextForm::json ? indent_json(made) : made);
    return done;
}

ExitStatus print(const PrintOptions& options)
{
    if (options.text.empty() && !options.list &&
        !options.configuration.asks_about_configuration()) {
        std::cerr << "print: TEXT is missing" << hint << '\n';
        return wrong_use;
    }
    ExitStatus status = done;
    const std::optional<host::Configuration> configuration =
        load(options.configuration, std::cerr, status);
    if (!configuration)
        return status;
    if (options.configuration.asks_about_configuration()) {
        answer_about(*configuration, options.configuration, std::cout);
        return done;
    }

    const std::unique_ptr<host::Records> records = host::make_records(
        *configuration, host::configured_address(configuration->server), fixed_instant);
    host::StreamSelection& selection = records->selection;
    selection.receiver_filter = options.receiver_filter.value_or(selection.receiver_filter);
    selection.audio_group_filter =
        options.audio_group_filter.value_or(selection.audio_group_filter);
    selection.sender_filter = options.sender_filter.value_or(selection.sender_filter);

    if (options.list) {
        list_texts(*records, std::cout);
        return done;
    }
    return print_text(options, {*configuration, *records});
}

} // namespace

void add_print_command(CLI::App& program, ExitStatus& status)
{
    const auto options = std::make_shared<PrintOptions>();
    CLI::App* const command = program.add_subcommand(
        "print", "Prints a text of the library, unchanged, for an example instrument");
    command->add_option("TEXT", options->text, "name of the text, see --list")->type_name("");
    command
        ->add_option("INDEX", options->index,
                     "which source, flow, device, sender or receiver; with root, which path")
        ->type_name("");
    command->add_flag("--list", options->list, "list every text");
    command->add_flag(
        "--pretty", options->pretty,
        "indent JSON for people to read; without it the bytes are those of the library");
    const auto add_filter = [command](const char* name, std::optional<int>& filter,
                                      const char* values) {
        command->add_option(name, filter, values)
            ->check(whole_number(std::numeric_limits<int>::min(), std::numeric_limits<int>::max(),
                                 values))
            ->type_name("N");
    };
    add_filter("--receiver-filter", options->receiver_filter,
               "0 (all kinds of receivers) or another number (video only)");
    add_filter("--audio-group-filter", options->audio_group_filter,
               "0 (group G1), 1 (G1 and G2) or another number (all four)");
    add_filter("--sender-filter", options->sender_filter,
               "0 (without the video senders of streams 2 to 4) or another number (all)");
    options->configuration.add_to(*command);
    command->callback([options, &status] { status = print(*options); });
}

} // namespace nmos_instrument::program
