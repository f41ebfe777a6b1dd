// SPDX-License-Identifier: Apache-2.0
//
// One operation called twice, in the library and in the oracle, and all that came of it compared.

#ifndef NMOS_INSTRUMENT_TESTS_ORACLE_CALLS_H
#define NMOS_INSTRUMENT_TESTS_ORACLE_CALLS_H

#include <ostream>
#include <span>
#include <stdexcept>
#include <string>

#include "nmos_instrument/node_state.h"
#include "oracle/random.h"

/// What a call came to: its text, or the text of the exception in its place.
struct Outcome
{
    enum class Kind
    {
        text,
        overflow_error,
        out_of_range
    };
    Kind kind;
    std::string text;
};

std::ostream& operator<<(std::ostream& out, Outcome::Kind kind);

template <class Call>
Outcome outcome_of(Call call)
{
    try {
        return {Outcome::Kind::text, call()};
    } catch (const std::overflow_error& error) {
        return {Outcome::Kind::overflow_error, error.what()};
    } catch (const std::out_of_range& error) {
        return {Outcome::Kind::out_of_range, error.what()};
    }
}

/// Texts and the (empty) text of an overflow must be the same. A refused index must be named by the
/// library together with the operation and the highest index that is allowed.
void expect_same(const Outcome& of_library, const Outcome& of_oracle, const char* operation,
                 int index);

/// Mostly below `capacity`, now and then outside.
int random_index(Random& random, int capacity);

/// Whatever an operation takes beside its record.
struct Arguments
{
    int index;
    int receiver_filter;
    int audio_group_filter;
    int sender_filter;
};

/// One operation on a node's record, by the library and by the oracle. `capacity` is that of its
/// index, 1 for an operation without index.
struct NodeOperation
{
    const char* name;
    int capacity;
    std::string (*of_library)(NMOS_IS04_ST&, const Arguments&);
    std::string (*of_oracle)(NMOS_IS04_ST&, const Arguments&);
};

/// The operation of that name in both, with the same arguments, given as members of `with`.
// clang-format takes the # for a directive.
// clang-format off
#define NODE_OPERATION(api, operation, capacity, ...)                                              \
    {                                                                                              \
        #operation, capacity,                                                                      \
        []([[maybe_unused]] auto& record, [[maybe_unused]] auto& with) {                           \
            return api().operation(&record __VA_OPT__(,) __VA_ARGS__);                             \
        },                                                                                         \
        []([[maybe_unused]] auto& record, [[maybe_unused]] auto& with) {                           \
            return oracle::operation(record __VA_OPT__(,) __VA_ARGS__);                            \
        }                                                                                          \
    }
// clang-format on

/// Puts this test's part of the run's records through a few of the operations each. Library and
/// oracle work on a record of their own; afterwards the two must be equal in every byte, so an
/// operation that only reads has changed nothing.
void compare_node_operations(unsigned percent_of_run, std::span<const NodeOperation> operations);

#endif
