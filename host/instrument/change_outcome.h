// SPDX-License-Identifier: Apache-2.0

#ifndef NMOS_INSTRUMENT_HOST_INSTRUMENT_CHANGE_OUTCOME_H
#define NMOS_INSTRUMENT_HOST_INSTRUMENT_CHANGE_OUTCOME_H

#include <string>
#include <utility>
#include <vector>

namespace nmos_instrument::host {

enum class ChangeResult
{
    done,     ///< staged, cancelled, or activated at once as requested
    accepted, ///< requested for a time: scheduled, or activated if that time has passed
    invalid,  ///< the parameters cannot be used
    locked,   ///< an activation is scheduled or under way
    unknown,  ///< there is no such sender or receiver
    failed    ///< the hardware could not do it
};

/// How a change of a connection ended. A refusal has changed nothing.
struct ChangeOutcome
{
    ChangeResult result = ChangeResult::done;
    std::string body;  ///< done and accepted: all staged parameters
    std::string error; ///< otherwise: what is wrong
    std::string debug; ///< otherwise: where, what was found, and what is allowed

    /// What was done, for the log. Whoever knows the client writes it.
    std::vector<std::string> log{};

    bool is_refusal() const
    {
        return result != ChangeResult::done && result != ChangeResult::accepted;
    }
};

/// The lines of ChangeOutcome::log as they are collected.
struct ChangeLog
{
    std::vector<std::string> lines{};
    std::string warnings{}; ///< on the same line as what was done: a client can only cause so many

    void done(const std::string& line)
    {
        lines.push_back(warnings.empty() ? line : line + "; warning: " + warnings);
    }
};

inline ChangeOutcome invalid_parameters(std::string findings)
{
    return {ChangeResult::invalid, "", "The parameters cannot be used", std::move(findings)};
}

} // namespace nmos_instrument::host

#endif
