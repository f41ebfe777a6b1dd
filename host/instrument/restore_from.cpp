// SPDX-License-Identifier: Apache-2.0

#include "instrument/restore_from.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>

#include "instrument/saved_state.h"
#include "text/quoted_text.h"
#include "text/whole_file.h"
#include "time/tai_clock.h"

namespace nmos_instrument::host {
namespace {

/// More than any state needs: a larger file is something else.
constexpr std::size_t size_limit = 16UL * 1024 * 1024;

/// More than any finding needs; a message about broken JSON may quote all of the file.
constexpr std::size_t longest_reason = 400;

constexpr const char* previous = ".previous";

void set_aside(const ReplacedFile& file, const std::string& reason, const Log& log)
{
    const std::string why =
        printable(reason.substr(0, longest_reason)) + (reason.size() > longest_reason ? "..." : "");
    const std::string ending = ".damaged-" + std::to_string(tai_now().seconds);
    file.rename_beside(ending);
    log.error("state file {} is damaged: {}; it is now {}; starting with the configuration",
              file.name(), why, file.beside(ending));
}

[[noreturn]] void refuse_other_instrument(std::size_t saved)
{
    throw std::runtime_error("it has the parameters of " + std::to_string(saved) +
                             " senders and receivers, and none of them is in the configuration: "
                             "use the configuration that it belongs to (serial_number), another "
                             "file, or let it start afresh (serve --state-reset)");
}

void restore(const ReplacedFile& file, const std::string& text, Instrument& instrument,
             const Log& log)
{
    const SavedState saved = parse_saved_state(text);
    const std::size_t known = instrument.count_known(saved);
    if (known == 0 && saved.connections() != 0)
        refuse_other_instrument(saved.connections());
    for (const std::string& message : instrument.restore(saved))
        log.warning("state file {}: {}", file.name(), message);
    if (known < saved.connections()) {
        file.write_beside(previous, text);
        log.warning("state file {}: {} keeps the file as it was", file.name(),
                    file.beside(previous));
    }
    log.info("state restored from {}", file.name());
}

void restore_or_reset(const ReplacedFile& file, Instrument& instrument, StateReset reset,
                      const Log& log)
{
    const std::optional<std::string> text = file.read(size_limit);
    if (!text) {
        log.info("no {} yet: starting with the configuration", file.name());
        return;
    }
    if (reset == StateReset::yes) {
        file.rename_beside(previous);
        log.warning("state file {} is now {}; starting with the configuration", file.name(),
                    file.beside(previous));
        return;
    }
    try {
        restore(file, *text, instrument, log);
    } catch (const DamagedState& error) {
        set_aside(file, error.what(), log);
    }
}

} // namespace

void restore_from(const ReplacedFile& file, Instrument& instrument, StateReset reset,
                  const Log& log)
{
    try {
        restore_or_reset(file, instrument, reset, log);
    } catch (const std::runtime_error& error) {
        throw std::runtime_error("state file " + file.name() + ": " + error.what());
    }
}

} // namespace nmos_instrument::host
