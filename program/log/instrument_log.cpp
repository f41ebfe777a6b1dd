// SPDX-License-Identifier: Apache-2.0

#include "log/instrument_log.h"

#include <spdlog/spdlog.h>

namespace nmos_instrument::program {
namespace {

using nmos_instrument_host::LogLevel;

struct LevelName
{
    LogLevel level;
    const char* name; ///< spdlog knows it by the same
};

constexpr LevelName level_names[] = {
    {LogLevel::debug, "debug"}, {LogLevel::info, "info"}, {LogLevel::warning, "warning"},
    {LogLevel::error, "error"}, {LogLevel::off, "off"},
};

} // namespace

LogLevel level_of(const std::string& name)
{
    for (const LevelName& one : level_names) {
        if (name == one.name)
            return one.level;
    }
    return LogLevel::info;
}

void write_log(LogLevel level, std::string_view line)
{
    for (const LevelName& one : level_names) {
        if (level == one.level)
            spdlog::log(spdlog::level::from_str(one.name), line);
    }
}

} // namespace nmos_instrument::program
